#include "common/runtime/impersonation.h"

namespace win {

namespace {

class token_calls_win32_t : public token_calls_t {
public:
    HANDLE duplicate_token(HANDLE token) override {
        HANDLE duplicate = nullptr;
        return ::DuplicateToken(token, SecurityImpersonation, &duplicate) ? duplicate : nullptr;
    }
    bool impersonate_logged_on_user(HANDLE token) override {
        return ::ImpersonateLoggedOnUser(token) != FALSE;
    }
    bool revert_to_self() override { return ::RevertToSelf() != FALSE; }
};

} // namespace

std::shared_ptr<token_calls_t> platform_token_calls() {
    return std::make_shared<token_calls_win32_t>();
}

} // namespace win
