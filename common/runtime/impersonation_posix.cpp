#include "common/runtime/impersonation.h"
#include "common/win/last_error.h"

namespace win {

namespace {

constexpr DWORD call_not_implemented = 120; // ERROR_CALL_NOT_IMPLEMENTED

// No tokens here: a scope never impersonates, and nothing is to be reverted.
class no_token_calls_t : public token_calls_t {
public:
    HANDLE duplicate_token(HANDLE) override {
        set_last_error(call_not_implemented);
        return nullptr;
    }
    bool impersonate_logged_on_user(HANDLE) override {
        set_last_error(call_not_implemented);
        return false;
    }
    bool revert_to_self() override { return true; }
};

} // namespace

std::shared_ptr<token_calls_t> platform_token_calls() {
    return std::make_shared<no_token_calls_t>();
}

} // namespace win
