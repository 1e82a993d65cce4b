// POSIX only: both tools run on one simulated host made by mirrack-lab.
// What the tool meets on a host that keeps the VSS contract: two mirrack processes on one
// simulated host, each driven through its pipe: one shadow-copy creation runs at a time.
#include "tool_job.h"

#include "client/invoke_client.h"
#include "common/exc/convert.h"
#include "common/format/format.h"
#include "lab/host_state_report.h"
#include "lab/sample_host.h"
#include "tests/snapshot/hyperv_test_host.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace snapshot_test;
using client::CRequestArguments;
using client::CResponse;

namespace {

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
