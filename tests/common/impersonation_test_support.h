// Impersonation scopes over a fake token source, with a token for one share, and the process
// log in a file of its own.
#pragma once

#include "common/runtime/common_lib_ctx.h"
#include "common/runtime/impersonation.h"
#include "common/win/last_error.h"
#include "common/win/sync_os.h"
#include "log_test_support.h"
#include "wine_error_texts.h"

#include <atomic>
#include <memory>
#include <string>

namespace log_test {

// Counts the calls; tokens it hands out are real handles, so that closing them is checked too.
class fake_token_calls_t : public win::token_calls_t {
public:
    HANDLE duplicate_token(HANDLE) override {
        ++duplicates;
        if (fail_duplicate)
            return nullptr;
        return win::detail::os_create_manual_reset_event();
    }
    bool impersonate_logged_on_user(HANDLE) override {
        ++impersonations;
        if (fail_impersonation)
            win::set_last_error(ERROR_ACCESS_DENIED);
        return !fail_impersonation;
    }
    bool revert_to_self() override {
        ++reverts;
        return true;
    }

    std::atomic<int> duplicates{0};
    std::atomic<int> impersonations{0};
    std::atomic<int> reverts{0};
    bool fail_duplicate = false;
    bool fail_impersonation = false;
};

inline const std::wstring share = L"\\\\fs01\\vms";

class impersonation_test : public log_test::log_file_test {
protected:
    void SetUp() override {
        log_file_test::SetUp();
        previous_ = win::set_token_calls(calls_);
        tokens()->add(share,
                      std::make_shared<win::win_handle_t>(win::detail::os_create_manual_reset_event()));
    }
    void TearDown() override {
        tokens()->remove(share);
        win::set_token_calls(previous_);
        log_file_test::TearDown();
    }

    static const std::shared_ptr<win::WinImpersonationTokensMap>& tokens() {
        return CCommonLibCtx::get()->impersonation_tokens();
    }
    bool log_has(const std::string& text) const {
        return wine_texts::as_windows(log_test::read_file(log_path_)).find(text) != std::string::npos;
    }

    std::shared_ptr<fake_token_calls_t> calls_ = std::make_shared<fake_token_calls_t>();
    std::shared_ptr<win::token_calls_t> previous_;
};

} // namespace log_test
