// POSIX only: the share lives on the simulated host.
// A file on a share with a token holds its impersonation scope for as long as it is open.
#include "common/runtime/common_lib_ctx.h"
#include "common/runtime/impersonation.h"
#include "common/win/file.h"
#include "common/win/sync_os.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

using namespace win;

namespace {

class counting_token_calls_t : public token_calls_t {
public:
    HANDLE duplicate_token(HANDLE) override { return detail::os_create_manual_reset_event(); }
    bool impersonate_logged_on_user(HANDLE) override { return ++impersonations > 0; }
    bool revert_to_self() override { return ++reverts > 0; }
    int impersonations = 0;
    int reverts = 0;
};

class share_file_test : public ::testing::Test {
protected:
    void SetUp() override {
        host_.tree().add_folder("shares/fs01-vms");
        previous_ = set_token_calls(calls_);
        CCommonLibCtx::get()->impersonation_tokens()->add(
            L"\\\\fs01\\vms", std::make_shared<win_handle_t>(detail::os_create_manual_reset_event()));
    }
    void TearDown() override {
        CCommonLibCtx::get()->impersonation_tokens()->remove(L"\\\\fs01\\vms");
        set_token_calls(previous_);
    }

    win_test::selected_host_t host_{
        R"(<Host name="T"><Share unc="\\fs01\vms\" root="\\fs01\vms\" dir="shares/fs01-vms"/></Host>)"};
    std::shared_ptr<counting_token_calls_t> calls_ = std::make_shared<counting_token_calls_t>();
    std::shared_ptr<token_calls_t> previous_;
};

} // namespace

TEST_F(share_file_test, AnOpenFileKeepsTheScopeUntilItIsReleasedAndAFailedOpenEndsItAtOnce) {
    shared_file_t file = file_open(L"\\\\fs01\\vms\\vm1.vhdx");
    ASSERT_NE(file->impersonation, nullptr);
    EXPECT_EQ(calls_->impersonations, 1);
    EXPECT_EQ(file_write(*file, "abc", 3), 3u);
    EXPECT_EQ(calls_->reverts, 0);
    file.reset();
    EXPECT_EQ(calls_->reverts, 1);
    EXPECT_TRUE(std::filesystem::exists(host_.root() / "shares" / "fs01-vms" / "vm1.vhdx"));
    // A failed open ends its scope at once.
    EXPECT_ANY_THROW(file_open(L"\\\\fs01\\vms\\missing\\vm1.vhdx"));
    EXPECT_EQ(calls_->impersonations, 2);
    EXPECT_EQ(calls_->reverts, 2);
}
