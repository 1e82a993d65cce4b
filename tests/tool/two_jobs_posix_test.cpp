// POSIX only: both tools run on one simulated host made by mirrack-lab.
// What the tool meets on a host that keeps the VSS contract: two mirrack processes on one
// simulated host, each driven through its pipe. One shadow-copy creation runs at a time,
// a set holds at most 64 volumes, and a cluster shared volume's backup state is the
// volume's, shared by every job on it.
#include "tool_job.h"

#include "client/invoke_client.h"
#include "common/exc/convert.h"
#include "lab/host_state_report.h"
#include "lab/sample_host.h"
#include "tests/snapshot/hyperv_test_host.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <thread>

using namespace snapshot_test;
using client::CRequestArguments;
using client::CResponse;

namespace {

namespace fs = std::filesystem;

using test_support::contains;

// A job of its own, with its verdict, that must end with the tool serving.
class Job : public ToolJob {
public:
    using ToolJob::ToolJob;
    void Begin(const std::string& spec) {
        const CResponse begin = ToolJob::Begin(spec);
        ASSERT_TRUE(begin.IsSuccess()) << to_ansi(begin.Frame());
    }
    void Begin(const std::vector<spec_vm_t>& vms) { Begin(spec_xml(vms, usual_providers)); }
    // The error description of a task that must fail.
    std::string Failure() {
        const CResponse status = WaitForVerdict();
        EXPECT_EQ(status.Value(L"IsSucceeded"), L"false");
        return to_ansi(status.Value(L"ErrDescription"));
    }
};

// The journal lines of one op, each with the calling process's id first.
std::vector<std::string> JournalOf(const hyperv_host_t& host, const std::string& op) {
    std::vector<std::string> lines;
    for (const auto& line : host.state_lines("journal.txt"))
        if (contains(line, "\t" + op + "\t") || line.ends_with("\t" + op))
            lines.push_back(line);
    return lines;
}

} // namespace

TEST(TwoJobs, ASecondCreationWhileTheFirstRunsFailsAndLeavesTheFirstUntouched) {
    // The first job's snapshot takes a while, long enough for the second to reach StartSnapshotSet.
    hyperv_host_t host(R"(<Fault op="DoSnapshotSet" delayMs="3000"/>)");
    const std::vector<spec_vm_t> vms{{local_vm}, {csv_vm}};
    Job first(host.dir());
    Job second(host.dir());
    first.Begin(vms);
    while (host.count("DoSnapshotSet") == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const std::string csvStateOfTheFirst = read_file(host.dir() / "state" / "csv.txt");

    second.Begin(vms);
    const std::string description = second.Failure();
    EXPECT_TRUE(contains(description,
                         "Failed to create VSS snapshot set.\nAnother shadow copy creation is "
                         "already in progress. Wait a few moments and try again.\n--tr:Failed to "
                         "perform pre-backup tasks."))
        << description;
    EXPECT_EQ(host.count("StartSnapshotSet"), 2u);
    EXPECT_EQ(host.count("AddToSnapshotSet"), 2u) << "only the first job's volumes";
    EXPECT_EQ(read_file(host.dir() / "state" / "csv.txt"), csvStateOfTheFirst);
    second.Close();

    ASSERT_TRUE(first.Succeeds());
    first.Close();
    EXPECT_TRUE(host.is_clean());
    EXPECT_EQ(host.state_lines("backups.txt").size(), 3u) << "the first job's backup and its two VMs";

    host.write("host.xml", hyperv_host_xml());
    Job again(host.dir());
    again.Begin(vms);
    EXPECT_TRUE(again.Succeeds());
    again.Close();
    EXPECT_TRUE(host.is_clean());
}

TEST(TwoJobs, ASetOf65VolumesFailsWithTheDocumentedTextAndLeavesNothing) {
    test_support::host_folder_t folder("mirrack-volumes");
    const fs::path dir = folder.dir();
    lab::sample_options_t options;
    options.vms_on_c = 63;
    options.local_volumes = 63;
    options.files_per_vm = 3;
    options.file_size = 1024;
    lab::create_sample_host(dir, options); // 63 local volumes, a cluster shared volume and a share

    Job job(dir);
    job.Begin(read_file(dir / "spec.xml"));
    const std::string description = job.Failure();
    EXPECT_TRUE(contains(description, "] to the VSS snapshot set\nThe maximum number of volumes for this "
                                      "operation has been reached.\n"))
        << description;
    job.Close();
    for (const char* state : {"shadows.txt", "csv.txt", "creation.txt"})
        EXPECT_EQ(read_file(dir / "state" / state), "") << state;
}

TEST(TwoJobs, AFailedSecondJobOnAClusterSharedVolumeClearsItsBackupStateUnderTheFirst) {
    hyperv_host_t host;
    const std::vector<spec_vm_t> vms{{csv_vm}};
    Job first(host.dir());
    first.Begin(vms);
    ASSERT_TRUE(first.Succeeds());
    const auto prepared = host.state_lines("csv.txt");
    ASSERT_EQ(prepared.size(), 1u) << "the first job holds its snapshot, the volume stays in backup";
    const std::string firstSet = prepared[0].substr(prepared[0].find('\t') + 1, 38);

    host.write("host.xml", hyperv_host_xml(R"(<Fault op="DoSnapshotSet" status="0x80042306"/>)"));
    {
        Job second(host.dir());
        second.Begin(vms);
        second.Failure();
        second.Close();
    }
    const auto cleared = JournalOf(host, "CsvBackupStateCleared");
    ASSERT_EQ(cleared.size(), 1u);
    EXPECT_TRUE(contains(cleared[0], std::string(csv_volume) + "\t" + firstSet + ";")) << cleared[0];
    const std::string state = lab::host_state_report(host.dir());
    EXPECT_TRUE(contains(state, "Cluster shared volumes in backup: 0\n")) << state;
    EXPECT_TRUE(contains(state, "Live shadow copies: 1\n")) << state;
    EXPECT_EQ(host.state_lines("shadows.txt").size(), 1u) << "the first job's snapshot stands";

    first.Close();
    EXPECT_TRUE(host.is_clean());
    EXPECT_EQ(host.state_lines("backups.txt").size(), 2u) << "the first job completed";
}
