// POSIX only: the refusal to delete is a fault of the simulated host.
// Old dumps that the system refuses to delete: no new dump, and the reason in the log.
#include "common/crash/crash_filter.h"
#include "crash_test_support.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

namespace {

class undeletable_dumps_test : public crash_test::dump_folder_test {
protected:
    win_test::selected_host_t host_{R"(<Host name="T"><Fault op="DeleteFileW" err="5"/></Host>)"};
};

} // namespace

TEST_F(undeletable_dumps_test, TwentyDumpsThatCannotGoMeanNoNewDump) {
    for (int id = 0; id < 19; ++id)
        add_old_dump("RZ_crash_" + std::to_string(id) + ".txt", 30 - id);
    // Nineteen leave room for one more without a deletion.
    crash::crash_filter(nullptr, false);
    EXPECT_EQ(dump_names().size(), 20u);
    EXPECT_TRUE(std::filesystem::exists(dumps_ / "RZ_crash_19.txt"));
    EXPECT_FALSE(log_has("Old dump cannot be removed."));
    EXPECT_FALSE(log_has("Cannot generate crash dump."));

    EXPECT_EQ(crash::crash_filter(nullptr, false), crash::execute_handler);
    EXPECT_EQ(dump_names().size(), 20u);
    EXPECT_EQ(log_count("Old dump cannot be removed. Dump path: ["), 20u);
    EXPECT_TRUE(log_has("Access is denied."));
    EXPECT_TRUE(
        log_has("Cannot cleanup out of date dumps. There are [20] dumps stored. Maximum allowed dumps "
                "number: [20]."));
    EXPECT_TRUE(log_has("Cannot generate crash dump."));
    EXPECT_EQ(log_count("Crash handlers were successfully executed."), 2u);
}
