// POSIX only: the share lives on the simulated host.
// A file on a share with a token holds its impersonation scope for as long as it is open.
#include "common/win/file.h"
#include "impersonation_test_support.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

using log_test::impersonation_test;
using log_test::share;

TEST_F(impersonation_test, AnOpenFileKeepsTheScopeUntilItIsReleasedAndAFailedOpenEndsItAtOnce) {
    const win_test::selected_host_t host(
        R"(<Host name="T"><Share unc="\\fs01\vms\" root="\\fs01\vms\" dir="shares/fs01-vms"/></Host>)");
    host.tree().add_folder("shares/fs01-vms");
    win::shared_file_t file = win::file_open(share + L"\\vm1.vhdx");
    ASSERT_NE(file->impersonation, nullptr);
    EXPECT_EQ(calls_->impersonations.load(), 1);
    EXPECT_EQ(win::file_write(*file, "abc", 3), 3u);
    EXPECT_EQ(calls_->reverts.load(), 0);
    file.reset();
    EXPECT_EQ(calls_->reverts.load(), 1);
    EXPECT_TRUE(std::filesystem::exists(host.root() / "shares" / "fs01-vms" / "vm1.vhdx"));
    // A failed open ends its scope at once.
    EXPECT_ANY_THROW(win::file_open(share + L"\\missing\\vm1.vhdx"));
    EXPECT_EQ(calls_->impersonations.load(), 2);
    EXPECT_EQ(calls_->reverts.load(), 2);
}
