// Impersonation scopes over a fake token source, with a token for one share: which paths get one,
// nesting per thread, the failures that leave the thread under its own identity, and a file on the
// share that holds its scope while it is open.
#include "common/runtime/common_lib_ctx.h"
#include "common/runtime/impersonation.h"
#include "common/runtime/win_thread.h"
#include "common/win/file.h"
#include "common/win/last_error.h"
#include "common/win/sync_os.h"
#include "log_test_support.h"
#include "wine_error_texts.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>

using namespace win;

namespace {

// Counts the calls; tokens it hands out are real handles, so that closing them is checked too.
class fake_token_calls_t : public token_calls_t {
public:
    HANDLE duplicate_token(HANDLE) override {
        ++duplicates;
        if (fail_duplicate)
            return nullptr;
        return detail::os_create_manual_reset_event();
    }
    bool impersonate_logged_on_user(HANDLE) override {
        ++impersonations;
        if (fail_impersonation)
            set_last_error(ERROR_ACCESS_DENIED);
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

const std::wstring share = L"\\\\fs01\\vms";

class impersonation_test : public log_test::log_file_test {
protected:
    void SetUp() override {
        log_file_test::SetUp();
        previous_ = set_token_calls(calls_);
        tokens()->add(share, std::make_shared<win_handle_t>(detail::os_create_manual_reset_event()));
    }
    void TearDown() override {
        tokens()->remove(share);
        set_token_calls(previous_);
        log_file_test::TearDown();
    }

    static const std::shared_ptr<WinImpersonationTokensMap>& tokens() {
        return CCommonLibCtx::get()->impersonation_tokens();
    }
    bool log_has(const std::string& text) const {
        return wine_texts::as_windows(log_test::read_file(log_path_)).find(text) != std::string::npos;
    }

    std::shared_ptr<fake_token_calls_t> calls_ = std::make_shared<fake_token_calls_t>();
    std::shared_ptr<token_calls_t> previous_;
};

} // namespace

TEST_F(impersonation_test, LocalPathsAndSharesWithoutTokenGetNoScopeAndAnInvalidTokenOneWithoutEffect) {
    // The key is the server and share of a UNC path only.
    EXPECT_EQ(impersonation_share_key(L"\\\\fs01\\vms\\vm1\\disk.vhdx"), L"\\\\fs01\\vms");
    EXPECT_EQ(impersonation_share_key(L"\\\\fs01\\vms"), L"\\\\fs01\\vms");
    EXPECT_EQ(impersonation_share_key(L"\\\\fs01"), L"");
    EXPECT_EQ(impersonation_share_key(L"C:\\VMs\\vm1"), L"");
    EXPECT_EQ(impersonation_share_key(L"\\VMs\\vm1"), L"");
    EXPECT_EQ(impersonate_for(L"C:\\VMs\\vm1\\disk.vhdx"), nullptr);
    EXPECT_EQ(impersonate_for(L"\\\\fs02\\vms\\disk.vhdx"), nullptr);
    EXPECT_EQ(impersonate_for(std::string("/var/lib/vm1")), nullptr);
    EXPECT_FALSE(log_has("impersonation"));
    // An invalid token in the map gives a scope without effect.
    tokens()->add(share, std::make_shared<win_handle_t>(invalid_handle()));
    auto scope = impersonate_for(share + L"\\a");
    ASSERT_NE(scope, nullptr);
    EXPECT_FALSE(scope->impersonated());
    EXPECT_EQ(calls_->duplicates.load(), 0);
}

TEST_F(impersonation_test,
       ShareWithTokenIsImpersonatedUntilTheScopeEndsAndNestedScopesRevertOnceAtTheEndOfTheOuter) {
    {
        // The share key compares without regard to case; narrow paths come the same way.
        auto scope = impersonate_for(std::string("\\\\FS01\\Vms\\vm1\\disk.vhdx"));
        ASSERT_NE(scope, nullptr);
        EXPECT_TRUE(scope->impersonated());
        EXPECT_EQ(calls_->reverts.load(), 0);
    }
    EXPECT_EQ(calls_->impersonations.load(), 1);
    EXPECT_EQ(calls_->reverts.load(), 1);
    EXPECT_TRUE(log_has("Found impersonation token for share [\\\\FS01\\Vms]."));
    EXPECT_TRUE(log_has("File operations for path '\\\\FS01\\Vms\\vm1\\disk.vhdx' will be performed under "
                        "impersonation context."));
    // Nested scopes revert once at the end of the outer, and threads count their scopes apart.
    auto outer = impersonate_for(share + L"\\a");
    {
        auto inner = impersonate_for(share + L"\\b");
        auto innermost = impersonate_for(share + L"\\c");
        EXPECT_TRUE(inner->impersonated());
    }
    EXPECT_EQ(calls_->reverts.load(), 1);
    win_thread_t worker(
        [](void*) -> DWORD {
            impersonate_for(share + L"\\worker").reset();
            return 0;
        },
        nullptr, "Impersonating");
    worker.stop_wait();
    // The worker's own scope ended its own impersonation, while the main thread's stays.
    EXPECT_EQ(calls_->reverts.load(), 2);
    outer.reset();
    EXPECT_EQ(calls_->reverts.load(), 3);
    // A new scope afterwards starts a new count.
    impersonate_for(share + L"\\d").reset();
    EXPECT_EQ(calls_->reverts.load(), 4);
}

// Either failure leaves the thread under its own identity; only the impersonation's is logged.
TEST_F(impersonation_test, AFailedDuplicateOrImpersonationGivesAScopeWithoutEffectNeverReverted) {
    for (bool* failure : {&calls_->fail_duplicate, &calls_->fail_impersonation}) {
        *failure = true;
        auto scope = impersonate_for(share + L"\\a");
        ASSERT_NE(scope, nullptr);
        EXPECT_FALSE(scope->impersonated());
        scope.reset();
        *failure = false;
    }
    EXPECT_EQ(calls_->impersonations.load(), 1) << "after a failed duplicate";
    EXPECT_EQ(calls_->reverts.load(), 0);
    EXPECT_EQ(log_count("Failed to impersonate thread."), 1u);
    EXPECT_TRUE(log_has("Access is denied."));
}

#ifndef _WIN32
// The share lives on the simulated host.
TEST_F(impersonation_test, AnOpenFileKeepsTheScopeUntilItIsReleasedAndAFailedOpenEndsItAtOnce) {
    const win_test::selected_host_t host(
        R"(<Host name="T"><Share unc="\\fs01\vms\" root="\\fs01\vms\" dir="shares/fs01-vms"/></Host>)");
    host.tree().add_folder("shares/fs01-vms");
    shared_file_t file = file_open(share + L"\\vm1.vhdx");
    ASSERT_NE(file->impersonation, nullptr);
    EXPECT_EQ(calls_->impersonations.load(), 1);
    EXPECT_EQ(file_write(*file, "abc", 3), 3u);
    EXPECT_EQ(calls_->reverts.load(), 0);
    file.reset();
    EXPECT_EQ(calls_->reverts.load(), 1);
    EXPECT_TRUE(std::filesystem::exists(host.root() / "shares" / "fs01-vms" / "vm1.vhdx"));
    // A failed open ends its scope at once.
    EXPECT_ANY_THROW(file_open(share + L"\\missing\\vm1.vhdx"));
    EXPECT_EQ(calls_->impersonations.load(), 2);
    EXPECT_EQ(calls_->reverts.load(), 2);
}
#else
// The process's own token is one that any Windows process may impersonate: the thread holds a
// token of its own while impersonating, and none once reverted.
TEST(PlatformTokenCalls, TheProcessTokenIsDuplicatedImpersonatedAndReverted) {
    HANDLE own = nullptr;
    ASSERT_TRUE(::OpenProcessToken(::GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &own));
    const win_handle_t process_token(own);
    const std::shared_ptr<token_calls_t> calls = platform_token_calls();
    const win_handle_t duplicate(calls->duplicate_token(process_token.get()));
    ASSERT_TRUE(duplicate.valid());
    ASSERT_TRUE(calls->impersonate_logged_on_user(duplicate.get()));
    HANDLE thread_token = nullptr;
    EXPECT_TRUE(::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, &thread_token));
    const win_handle_t held(thread_token);
    EXPECT_TRUE(calls->revert_to_self());
    EXPECT_FALSE(::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, &thread_token));
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_NO_TOKEN));
}
#endif
