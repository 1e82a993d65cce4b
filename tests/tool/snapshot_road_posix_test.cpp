// POSIX only: the road runs on a simulated host made by mirrack-lab.
// The road of a snapshot through the real tool on a simulated Hyper-V host: from
// BeginSnapshotCreation to the close, as the backup server drives it, and the
// failures on the way, a worker killed by a signal and a second tool on the host among them.
// Whatever happens, the tool goes on serving and the host is left without shadow copies.
#include "tool_expectations.h"
#include "tool_job.h"

#include "client/invoke_client.h"
#include "common/exc/convert.h"
#include "common/format/format.h"
#include "documents/files_list.h"
#include "lab/host_state_report.h"
#include "tests/snapshot/hyperv_test_host.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <utility>

#include <sys/syscall.h>
#include <unistd.h>

using namespace snapshot_test;
using client::CRequestArguments;
using client::CResponse;

namespace {

using test_support::contains;

GUID VmId(const char* id) {
    return string_to_guid(std::string(id));
}

// The host comes first, so that it outlives the tool that runs on it.
struct HostOfItsOwn {
    HostOfItsOwn(const std::string& extra, const std::string& systemProvider) : host(extra, systemProvider) {}
    hyperv_host_t host;
};

// A job through the tool on a simulated host of its own.
class Road : public HostOfItsOwn, public ToolJob {
public:
    explicit Road(const std::string& hostExtra = "", const std::string& systemProvider = "")
        : HostOfItsOwn(hostExtra, systemProvider), ToolJob(host.dir()) {}

    CResponse Begin(const std::vector<spec_vm_t>& vms) {
        return ToolJob::Begin(spec_xml(vms, usual_providers));
    }
    ItemsList FilesOf(const char* vm) {
        ItemsList items;
        DeserializeItemsList(
            Call(L"GetVMFilesList", CRequestArguments().AddGuid(L"VmId", VmId(vm))).Decoded(L"FilesList"),
            items);
        return items;
    }
    void Report(const char* vm, bool succeeded) {
        EXPECT_TRUE(Call(L"SetVmBackupStatus",
                         CRequestArguments().AddGuid(L"VmId", VmId(vm)).AddBool(L"BackupStatus", succeeded))
                        .IsSuccess());
    }
    void WaitForCall(const std::string& op) {
        while (host.count(op) == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
};

// The kernel's id of the worker with this role, read from its "Thread started" line, or 0.
long WorkerThreadId(const std::string& log, const std::string& role) {
    const std::string marker = "Thread id: ";
    const std::size_t line = log.find("role: " + role);
    const std::size_t start = line == std::string::npos ? line : log.rfind("Thread started.", line);
    const std::size_t id = start == std::string::npos ? start : log.find(marker, start);
    return id == std::string::npos ? 0 : std::strtol(log.c_str() + id + marker.size(), nullptr, 10);
}

const std::vector<spec_vm_t> twoVms{{local_vm}, {csv_vm}};

// What the host holds once the next caller has swept what dead ones left, as mirrack-lab shows it
// without the host's folder.
std::string HoldingsOf(const hyperv_host_t& host) {
    const std::string report = lab::host_state_report(host.dir());
    return report.substr(report.find('\n') + 1);
}

const std::string nothingHeld = "Shadow-copy creation: none in progress\nLive shadow copies: 0\n"
                                "Shadow copies waiting for import: 0\nCluster shared volumes in backup: 0\n"
                                "Backups completed: 0\n";

// A host whose faults are gone serves the next backup of the two VMs, and is left clean after it.
void ExpectTheNextBackupSucceeds(const hyperv_host_t& host) {
    host.write("host.xml", hyperv_host_xml());
    ToolJob next(host.dir());
    ASSERT_TRUE(next.Begin(spec_xml(twoVms, usual_providers)).IsSuccess());
    EXPECT_TRUE(next.Succeeds());
    next.Close();
    EXPECT_TRUE(host.is_clean());
}

} // namespace

TEST(SnapshotRoad, HealthyBackupGivesShadowPathsHoldsThePointInTimeAndHandsTheVerdictsToTheWriter) {
    Road road;
    const CResponse begin = road.Begin({{local_vm}, {csv_vm}, {smb_vm}, {idle_vm, true}});
    ASSERT_TRUE(begin.IsSuccess()) << to_ansi(begin.Frame());
    const CResponse status = road.WaitForVerdict();
    ASSERT_EQ(status.Value(L"IsSucceeded"), L"true") << to_ansi(status.Frame());
    EXPECT_EQ(status.Value(L"ErrDescription"), L"");
    EXPECT_EQ(status.Value(L"SnapshotId"), begin.Value(L"SnapshotId"));

    const CResponse info = road.Call(L"GetSnapshotInfo");
    EXPECT_FALSE(info.Decoded(L"BackupDoc").empty());
    EXPECT_FALSE(info.Decoded(L"WriterDoc").empty());
    EXPECT_EQ(info.Value(L"SnapshotsXML"), L"");
    EXPECT_EQ(
        road.Call(L"ConvertOffhostPaths", CRequestArguments().AddEncoded(L"InPathsXML", L"<FilesList/>"))
            .Frame(),
        tool_expect::ConversionWithoutTask(L"<FilesList/>"))
        << "an import's command";

    road.host.write("volumes/c/VMs/local/local.vhdx", "local disk, after");
    road.host.write("volumes/csv1/csv/csv.vhdx", "csv disk, after");
    road.host.write("shares/fs01-vms/smb/smb.vhdx", "smb disk, after");
    const ItemsList local = road.FilesOf(local_vm);
    ASSERT_EQ(local.size(), 6u);
    EXPECT_EQ(read_through(local[0].fullPath), "local disk, before");
    for (const char* vm : {csv_vm, smb_vm}) {
        const ItemsList items = road.FilesOf(vm);
        ASSERT_FALSE(items.empty());
        EXPECT_TRUE(read_through(items[0].fullPath).ends_with("disk, before")) << to_ansi(items[0].fullPath);
    }

    // Out of id order, one VM twice: the writer hears each once at the close, in id order, the last
    // report winning; the crash-consistent VM has no component to hear of.
    road.Report(csv_vm, false);
    road.Report(local_vm, false);
    road.Report(local_vm, true);
    road.Report(idle_vm, true);
    EXPECT_EQ(road.host.count("SetBackupSucceeded"), 0u) << "nothing reaches the writer before the close";
    const std::string log = road.Close();
    EXPECT_EQ(road.host.calls("SetBackupSucceeded"),
              (std::vector<std::string>{std::string("SetBackupSucceeded\t") + local_vm + "\ttrue",
                                        std::string("SetBackupSucceeded\t") + csv_vm + "\tfalse"}));
    EXPECT_EQ(road.host.state_lines("backups.txt"),
              (std::vector<std::string>{road.host.state_lines("backups.txt").front(),
                                        std::string("component\t") + local_vm + "\tsucceeded",
                                        std::string("component\t") + csv_vm + "\tfailed",
                                        std::string("component\t") + smb_vm + "\tnot-reported"}));
    EXPECT_TRUE(road.host.is_clean());
    EXPECT_EQ(road.host.calls().at(road.host.first_call("PrepareForBackup") - 1).rfind("SetBackupState", 0),
              0u);
    EXPECT_EQ(road.host.count("SetContext"), 0u);
    EXPECT_TRUE(contains(log, "Leaving snapshot creation procedure.")) << log;
}

namespace {

struct road_failure_t {
    const char* name;
    std::string hostExtra{};
    std::string systemProvider{};
    // Closes the task as soon as the host sees this call, before any verdict.
    std::string closeAt{};
    // Pieces of the error description, or of the log when the task was closed before its verdict.
    std::vector<std::string> expected{};
    std::string neverCalled{};
    // The writers were prepared: they must be left stable, and the next backup must succeed.
    bool afterPrepare = false;
};

class SnapshotRoadFailure : public ::testing::TestWithParam<road_failure_t> {};

const char* const createFailed =
    "--tr:Failed to create VSS snapshot.\n--tr:Failed to perform pre-backup tasks.";

const road_failure_t failures[] = {
    {.name = "ProviderRefusesTwice",
     .systemProvider = R"(refuse="2")",
     .expected =
         {R"(Provider [{b5946137-7b9f-4925-af80-51abd60b20d5}] does not support shadow copies of volume )"
          R"([\\?\Volume{6a1b0c3e-0000-0000-0000-000000000001}\].)"
          "\n--tr:Failed to add volumes to the snapshot set.\n--tr:Failed to perform pre-backup tasks."},
     .neverCalled = "PrepareForBackup"},
    {.name = "WriterFailedAfterPrepare",
     .hostExtra =
         R"(<WriterFault writer="{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}" at="prepare" state="7" hr="0x800423f4"/>)",
     .expected = {"Writer 'Microsoft Hyper-V VSS Writer' is failed at 'VSS_WS_FAILED_AT_PREPARE_BACKUP'.",
                  std::string("--tr:Failed to verify writers state.\n") + createFailed},
     .neverCalled = "DoSnapshotSet",
     .afterPrepare = true},
    {.name = "WriterFailedAfterSnapshot",
     .hostExtra =
         R"(<WriterFault writer="{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}" at="snapshot" state="9" hr="0x800423f4"/>)",
     .expected = {"Writer 'Microsoft Hyper-V VSS Writer' is failed at 'VSS_WS_FAILED_AT_FREEZE'.",
                  createFailed},
     .neverCalled = "GetSnapshotProperties"},
    // Cancelled by VSS itself: the operation ends without its effect. Without the writers'
    // metadata the walk's next call is refused.
    {.name = "GatherCancelledByVss",
     .hostExtra = R"(<Fault op="GatherWriterMetadata" status="0x0004230B"/>)",
     .expected = {"Failed to get number of items in VSS metadata collection.\nA function call was made when "
                  "the object was in an incorrect state for that function.\n--tr:Failed to collect Hyper-V "
                  "writer metadata.\n--tr:Failed to initialize VSS backup."},
     .neverCalled = "StartSnapshotSet"},
    {.name = "CloseDuringPrepare",
     .hostExtra = R"(<Fault op="PrepareForBackup" delayMs="600000"/>)",
     .closeAt = "PrepareForBackup",
     .expected = {"Prepare VMs for snapshot task has been cancelled."},
     .neverCalled = "DoSnapshotSet",
     .afterPrepare = true},
    {.name = "CloseDuringSnapshot",
     .hostExtra = R"(<Fault op="DoSnapshotSet" delayMs="600000"/>)",
     .closeAt = "DoSnapshotSet",
     .expected = {"Snapshot task has been cancelled."},
     .neverCalled = "GetSnapshotProperties"},
};

} // namespace

TEST_P(SnapshotRoadFailure, EndsTheTaskAndLeavesTheHostCleanAndTheToolServing) {
    const road_failure_t& c = GetParam();
    Road road(c.hostExtra, c.systemProvider);
    const CResponse begin = road.Begin(twoVms);
    ASSERT_TRUE(begin.IsSuccess());
    std::string seen;
    if (!c.closeAt.empty()) {
        // While it creates, the task answers at once, and has no result yet.
        road.WaitForCall(c.closeAt);
        const CResponse running = road.Call(L"GetAsyncOpStatus");
        EXPECT_EQ(running.Value(L"IsCompleted"), L"false");
        EXPECT_EQ(running.Value(L"IsSucceeded"), L"true");
        EXPECT_EQ(running.Value(L"SnapshotId"), begin.Value(L"SnapshotId"));
        EXPECT_EQ(road.Call(L"GetVMFilesList", CRequestArguments().AddGuid(L"VmId", VmId(local_vm))).Frame(),
                  L"err:Failed to create snapshot.\n--tr:Failed to get file list of vm.");
    } else {
        const CResponse status = road.WaitForVerdict();
        EXPECT_EQ(status.Value(L"IsSucceeded"), L"false");
        seen = to_ansi(status.Value(L"ErrDescription"));
    }
    EXPECT_EQ(road.Call(L"GetSnapshotInfo").Frame(),
              L"err:Failed to create snapshot.\n--tr:Failed to get snapshot info.");
    const std::string log = road.Close();
    if (!c.closeAt.empty())
        seen = log;
    for (const std::string& piece : c.expected)
        EXPECT_TRUE(contains(seen, piece)) << piece << "\nnot in:\n" << seen;
    EXPECT_EQ(road.host.count(c.neverCalled), 0u);
    EXPECT_TRUE(road.host.is_clean());
    if (!c.afterPrepare)
        return;
    EXPECT_EQ(road.host.count("AbortBackup"), 0u) << "the tool lets go of the object instead";
    EXPECT_EQ(road.host.count("ImplicitAbort"), 1u);
    EXPECT_TRUE(road.host.state_lines("creation.txt").empty());

    ExpectTheNextBackupSucceeds(road.host);
    EXPECT_EQ(road.host.count("ImplicitAbort"), 1u);
}

INSTANTIATE_TEST_SUITE_P(Cases, SnapshotRoadFailure, ::testing::ValuesIn(failures),
                         [](const auto& instance) { return std::string(instance.param.name); });

// One shadow-copy creation runs at a time on a host: a second tool's fails and leaves the first's alone.
TEST(SnapshotRoad, ASecondCreationWhileTheFirstRunsFailsAndLeavesTheFirstUntouched) {
    // The first job's snapshot takes a while, long enough for the second to reach StartSnapshotSet.
    Road first(R"(<Fault op="DoSnapshotSet" delayMs="3000"/>)");
    ToolJob second(first.host.dir());
    ASSERT_TRUE(first.Begin(twoVms).IsSuccess());
    first.WaitForCall("DoSnapshotSet");
    const std::string csvStateOfTheFirst = read_file(first.host.dir() / "state" / "csv.txt");

    ASSERT_TRUE(second.Begin(spec_xml(twoVms, usual_providers)).IsSuccess());
    const CResponse status = second.WaitForVerdict();
    EXPECT_EQ(status.Value(L"IsSucceeded"), L"false");
    EXPECT_EQ(
        to_ansi(status.Value(L"ErrDescription")),
        "Failed to create VSS snapshot set.\nAnother shadow copy creation is already in progress. Wait a "
        "few moments and try again.\n--tr:Failed to perform pre-backup tasks.");
    EXPECT_EQ(first.host.count("StartSnapshotSet"), 2u);
    EXPECT_EQ(first.host.count("AddToSnapshotSet"), 2u) << "only the first job's volumes";
    EXPECT_EQ(read_file(first.host.dir() / "state" / "csv.txt"), csvStateOfTheFirst);
    second.Close();

    ASSERT_TRUE(first.Succeeds());
    first.Close();
    EXPECT_TRUE(first.host.is_clean());
    EXPECT_EQ(first.host.state_lines("backups.txt").size(), 3u) << "the first job's backup and its two VMs";
    ExpectTheNextBackupSucceeds(first.host);
}

// The report is taken at its word; only the writer, at the close, can't be told about it.
TEST(SnapshotRoad, AVerdictForAVmOutsideTheTaskFailsTheWorkerAtTheCloseBeforeTheBackupCompletes) {
    Road road;
    ASSERT_TRUE(road.Begin({{local_vm}}).IsSuccess());
    ASSERT_EQ(road.WaitForVerdict().Value(L"IsSucceeded"), L"true");
    road.Report("B0000000-0000-4000-8000-00000000000B", true);
    const std::string log = road.Close();
    EXPECT_TRUE(contains(log, "Cannot find VM with ID: [b0000000-0000-4000-8000-00000000000b]")) << log;
    EXPECT_EQ(road.host.count("BackupComplete"), 0u);
    EXPECT_TRUE(road.host.is_clean());
}

TEST(SnapshotRoad, ASignalToTheWorkerDuringTheHoldLeavesTheToolServingAndNoShadowCopyBehind) {
    // What the abandoned worker held is never freed, by design: a leak check of the tool's
    // exit would report it.
    const char* sanitizerOptions = std::getenv("ASAN_OPTIONS");
    const std::string withoutLeakCheck =
        (sanitizerOptions != nullptr ? std::string(sanitizerOptions) + ":" : std::string()) +
        "detect_leaks=0";
    ::setenv("ASAN_OPTIONS", withoutLeakCheck.c_str(), 1);
    Road road;
    ASSERT_TRUE(road.Begin(twoVms).IsSuccess());
    ASSERT_TRUE(road.Succeeds());
    ASSERT_FALSE(road.host.state_lines("shadows.txt").empty());

    const std::string finished = "Thread finished. Role: 'VssSnapshotThread'";
    const long worker = WorkerThreadId(road.run.LogText(), "VssSnapshotThread");
    ASSERT_NE(worker, 0) << road.run.LogText();
    ASSERT_EQ(::syscall(SYS_tgkill, road.run.Pid(), worker, SIGSEGV), 0);
    for (int i = 0; i < 500 && !contains(road.run.LogText(), finished); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));

    EXPECT_TRUE(road.Call(L"GetAsyncOpStatus").IsSuccess());
    const std::string log = road.Close();
    EXPECT_TRUE(contains(log, finished)) << log;
    // The abandoned worker never released its snapshot: the shadow copies and the cluster
    // shared volume's backup state end with the process, and the host's next caller sweeps them.
    EXPECT_EQ(HoldingsOf(road.host), nothingHeld);
    EXPECT_TRUE(road.host.is_clean());
}

// Killed or stopped by a signal it does not handle, the tool leaves on the host what a dead
// requester leaves: nothing, once the next caller has swept.
TEST(SnapshotRoad, AToolEndedByASignalWhileCreatingHoldingOrClosingLeavesNothingHeldOnTheHost) {
    enum class Stage { creating, holding, closing };
    const std::pair<Stage, const char*> stages[] = {
        {Stage::creating, R"(<Fault op="DoSnapshotSet" delayMs="600000"/>)"},
        {Stage::holding, ""},
        {Stage::closing, R"(<Fault op="BackupComplete" delayMs="600000"/>)"}};
    for (const auto& [stage, fault] : stages) {
        for (const int signal : {SIGKILL, SIGTERM, SIGINT, SIGHUP}) {
            SCOPED_TRACE("stage " + std::to_string(static_cast<int>(stage)) + ", signal " +
                         std::to_string(signal));
            Road road(fault);
            ASSERT_TRUE(road.Begin(twoVms).IsSuccess());
            std::thread closer;
            if (stage == Stage::creating) {
                road.WaitForCall("DoSnapshotSet");
            } else {
                ASSERT_TRUE(road.Succeeds());
                ASSERT_EQ(road.host.state_lines("csv.txt").size(), 1u);
            }
            if (stage == Stage::closing) {
                // The close waits for the backup's completion, which the signal cuts short.
                closer = std::thread([&road] {
                    try {
                        road.Call(L"CloseSnapshot");
                    } catch (...) {
                    }
                });
                road.WaitForCall("BackupComplete");
            }
            ASSERT_EQ(::kill(road.run.Pid(), signal), 0);
            EXPECT_EQ(road.run.WaitForExit(), 128 + signal);
            if (closer.joinable())
                closer.join();

            EXPECT_EQ(HoldingsOf(road.host), nothingHeld);
            EXPECT_EQ(road.host.count("RemoveAbandonedCsvBackupState"), 1u);
        }
    }
}
