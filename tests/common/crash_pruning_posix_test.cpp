// POSIX only: the refusal to delete is a fault of the simulated host.
// Old dumps that the system refuses to delete: no new dump, and the reason in the log.
#include "common/crash/crash_filter.h"
#include "crash_test_support.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

class undeletable_dumps_test : public crash_test::dump_folder_test {
protected:
    void SetUp() override {
        dump_folder_test::SetUp();
        host_ = log_test::fresh_folder("host");
        std::ofstream(host_ / "host.xml") << R"(<Host name="T"><Fault op="DeleteFileW" err="5"/></Host>)";
        ::setenv("MIRRACK_HOST", host_.c_str(), 1);
    }
    void TearDown() override {
        ::unsetenv("MIRRACK_HOST");
        std::filesystem::remove_all(host_);
        dump_folder_test::TearDown();
    }

    std::filesystem::path host_;
};

} // namespace

TEST_F(undeletable_dumps_test, TwentyDumpsThatCannotGoMeanNoNewDump) {
    for (int id = 0; id < 20; ++id)
        add_old_dump("RZ_crash_" + std::to_string(id) + ".txt", 30 - id);
    EXPECT_EQ(crash::crash_filter(nullptr, false), crash::execute_handler);
    EXPECT_EQ(dump_names().size(), 20u);
    EXPECT_EQ(log_count("Old dump cannot be removed. Dump path: ["), 20u);
    EXPECT_TRUE(log_has("Access is denied."));
    EXPECT_TRUE(
        log_has("Cannot cleanup out of date dumps. There are [20] dumps stored. Maximum allowed dumps "
                "number: [20]."));
    EXPECT_TRUE(log_has("Cannot generate crash dump."));
    EXPECT_TRUE(log_has("Crash handlers were successfully executed."));
}

TEST_F(undeletable_dumps_test, NineteenDumpsNeedNoDeletion) {
    for (int id = 0; id < 19; ++id)
        add_old_dump("RZ_crash_" + std::to_string(id) + ".txt", 30 - id);
    crash::crash_filter(nullptr, false);
    EXPECT_EQ(dump_names().size(), 20u);
    EXPECT_TRUE(std::filesystem::exists(dumps_ / "RZ_crash_19.txt"));
    EXPECT_FALSE(log_has("Old dump cannot be removed."));
}
