// The soak's own pieces: draws that replay, and invariants that see what they must.
#include "lab/soak_draw.h"
#include "lab/soak_invariants.h"

#include "hostsim/state_store.h"
#include "tests/support/host_folder.h"
#include "tests/support/text_file.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>

namespace fs = std::filesystem;
using test_support::contains;

namespace {

const lab::draw_limits_t limits{4, true};

TEST(SoakDraw, AJobIsDrawnFromTheSeedAndItsNumberAloneAndTheDrawsCoverEveryAction) {
    EXPECT_EQ(lab::describe(lab::draw_job(7, 41, limits)), lab::describe(lab::draw_job(7, 41, limits)));
    std::set<std::string> actions, descriptions;
    std::set<std::size_t> fault_counts;
    for (std::uint64_t index = 0; index < 300; ++index) {
        const auto job = lab::draw_job(7, index, limits);
        actions.insert(lab::action_name(job.action));
        fault_counts.insert(job.faults.size());
        descriptions.insert(lab::describe(job));
        EXPECT_EQ(job.verdicts.size(), job.vms.size());
        const unsigned side_by_side = lab::draw_concurrency(7, index, 3);
        EXPECT_TRUE(side_by_side >= 1 && side_by_side <= 3);
    }
    EXPECT_EQ(actions.size(), 5u);
    EXPECT_EQ(fault_counts, (std::set<std::size_t>{0, 1, 2}));
    EXPECT_GT(descriptions.size(), 250u);
    for (std::uint64_t index = 0; index < 100; ++index)
        EXPECT_NE(lab::draw_job(7, index, {4, false}).action, lab::server_action::offhost);
}

class SoakInvariants : public ::testing::Test {
protected:
    void SetUp() override {
        hosts = lab::make_soak_hosts(dir / "soak", false);
        fs::create_directories(hosts.host / "state");
        write(tool.output, "LOG: Initializing log file ...\n");
        write(tool.log,
              "[1] <  1> Mirrack| Process will be finished normally.\n[1] <  1> Clearing collection.\n");
        job.tools.push_back(tool);
    }

    static void write(const fs::path& file, const std::string& text, bool append = false) {
        std::ofstream(file, append ? std::ios::app : std::ios::trunc) << text;
    }
    void journal(const std::string& lines) { write(hosts.host / "state" / "journal.txt", lines, true); }
    std::string host_broken() { return lab::check_host(hosts, {job}, audit).broken; }

    const test_support::host_folder_t folder{"mirrack-soak-test"};
    const fs::path dir = folder.dir();
    lab::soak_hosts_t hosts;
    lab::tool_end_t tool{
        .role = "host", .pid = 4242, .status = 0, .log = dir / "tool.log", .output = dir / "output.txt"};
    lab::job_record_t job;
    lab::host_audit_t audit;
};

TEST_F(SoakInvariants, AnswersMustBeFramesWithWordsAndAToolNotKilledMustEndNormally) {
    job.frames = {L"xml:<OutputArguments/>",
                  L"err:Snapshot is not initialized.\n--tr:Failed to get operation info."};
    EXPECT_EQ(lab::check_job(job), "");
    job.frames.push_back(L"err:\n--tr:");
    EXPECT_TRUE(contains(lab::check_job(job), "without words"));
    job.frames.back() = L"ok:done";
    EXPECT_TRUE(contains(lab::check_job(job), "no frame"));
    job.frames.pop_back();
    job.task_failures = {L" "};
    EXPECT_TRUE(contains(lab::check_job(job), "without a description"));
    job.task_failures.clear();

    write(tool.log, "[1] <  1> Mirrack| Process will be finished normally.\n[2] <  1> Mirrack| Releasing.\n");
    EXPECT_TRUE(contains(lab::check_job(job), "doesn't end with"));
    job.tools.front().killed = true;
    EXPECT_EQ(lab::check_job(job), "") << "a killed tool ends as it can";
    job.tools.front().killed = false;
    job.tools.front().status = 254;
    EXPECT_TRUE(contains(lab::check_job(job), "exited with 254"));
    job.hung = true;
    EXPECT_TRUE(contains(lab::check_job(job), "hung"));
}

TEST_F(SoakInvariants, EveryPreparedBackupEndsItsResultsAreTheVerdictsSentAndNoVolumeStaysInBackup) {
    journal("4242\tPrepareForBackup\n4243\tPrepareForBackup\n");
    EXPECT_TRUE(contains(host_broken(), "neither BackupComplete nor an abort"));
    journal("4242\tImplicitAbort\t{1}\n4242\tPrepareForBackup\n4242\tBackupComplete\t{5e7}\n");
    write(hosts.host / "state" / "backups.txt",
          "backup\t{5e7}\ncomponent\tVM-A\tsucceeded\ncomponent\tVM-B\tnot-reported\n");
    job.verdicts = {{L"vm-a", true}};
    EXPECT_EQ(host_broken(), "") << "each prepared backup ended, and the results are the verdicts";
    journal("4242\tPrepareForBackup\n4242\tBackupComplete\t{5e7}\n");
    job.verdicts = {{L"vm-a", true}, {L"vm-b", false}};
    EXPECT_TRUE(contains(host_broken(), "VM-B not-reported, the job reported failed"));

    journal("4242\tClusterPrepareSharedVolumeForBackup\tC:\\ClusterStorage\\Volume1\\a\n");
    EXPECT_TRUE(contains(host_broken(), "made no snapshot and cleared it 0 time(s)"));
    journal("4242\tClusterPrepareSharedVolumeForBackup\tC:\\ClusterStorage\\Volume1\\a\n"
            "4242\tClusterClearBackupStateForSharedVolume\tC:\\ClusterStorage\\Volume1\\a\n");
    EXPECT_EQ(host_broken(), "") << "a failed creation that undid its preparation";
    journal("4242\tClusterPrepareSharedVolumeForBackup\tC:"
            "\\ClusterStorage\\Volume1\\a\n4242\tDoSnapshotSet\t{5}\n");
    EXPECT_EQ(host_broken(), "") << "the snapshot keeps the volume in backup";
    hostsim::state_store_t state(hosts.host);
    {
        auto lock = state.lock();
        // A live owner keeps a volume in backup: the sweep leaves it, and the soak must not.
        state.save_csv_volumes({{L"\\\\?\\Volume{6a1b0c3e-5d2f-4e11-9a70-000000c5f001}\\",
                                 {{GUID_NULL, hostsim::this_process(), L"C:\\x"}}}});
    }
    EXPECT_TRUE(contains(host_broken(), "in backup after the sweep"));
}

} // namespace
