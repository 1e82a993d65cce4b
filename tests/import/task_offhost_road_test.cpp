// The off-host road through two real tools: mirrack on the Hyper-V host makes a
// transportable snapshot, mirrack on the proxy imports it from the host's documents and
// converts the host's paths; driven step by step, and as mirrack-client offhost does it.
#include "import_test_support.h"
#include "tool_run.h"

#include "client/offhost_road.h"
#include "client/subcommand.h"
#include "common/exc/convert.h"
#include "common/format/format.h"
#include "documents/snapshot_ids.h"
#include "hostsim/host_access.h"
#include "lab/host_state_report.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

using namespace import_test;
using client::CRequestArguments;

namespace {

namespace fs = std::filesystem;

// Both tools, each in one pipe folder that this process is pointed at: the host's pipe is
// "host", the proxy's "proxy". The proxy is this process's host.
struct offhost_tools_t {
    explicit offhost_tools_t(const std::string& proxyExtra = "")
        : hosts(proxyExtra), pipes(hosts.host.dir() / "pipes"),
          hostRun({"-p", "-n", "host", "-o", "LOG"}, pipes, hosts.host.dir()),
          proxyRun({"-p", "-n", "proxy", "-o", "LOG"}, pipes, hosts.proxy.dir()) {
        ::setenv("MIRRACK_PIPE_DIR", pipes.c_str(), 1);
        hosts.proxy.select();
    }

    host_and_proxy_t hosts;
    fs::path pipes;
    ToolRun hostRun, proxyRun;
};

const client::backup_job_t job{L"Nightly", L"Console", ""};

struct OffhostRoad : offhost_tools_t {
    explicit OffhostRoad(const std::string& proxyExtra = "")
        : offhost_tools_t(proxyExtra), host(client::CInvokeClient::Connect(L"host")),
          proxy(client::CInvokeClient::Connect(L"proxy")) {
        client::BeginSnapshot(*host, {job.jobName, job.backupConsole, hosts.OffhostSpec()});
        client::WaitForCompletion(*host, nullptr, std::chrono::milliseconds(20));
        documents = client::GetSnapshotDocuments(*host);
    }

    // The proxy's verdict on an import of the host's snapshot with this list of ids.
    client::operation_status_t Import(const std::wstring& idsList) {
        client::BeginSnapshotImport(*proxy, {documents.backupDoc, L"", idsList}, job);
        try {
            return client::WaitForCompletion(*proxy, nullptr, std::chrono::milliseconds(20));
        } catch (const client::server_failure_exc_t&) {
            return client::QueryOperationStatus(*proxy);
        }
    }

    // Closes both tasks, the proxy's first, and ends both sessions; the proxy's log.
    std::string CloseBoth() {
        client::CloseSnapshotTask(*proxy);
        client::CloseSnapshotTask(*host);
        proxy->Disconnect();
        host->Disconnect();
        EXPECT_EQ(proxyRun.WaitForExit(), 0);
        EXPECT_EQ(hostRun.WaitForExit(), 0);
        return proxyRun.LogText();
    }

    std::unique_ptr<client::CInvokeClient> host, proxy;
    client::snapshot_documents_t documents;
};

const std::wstring notImported = L"\\\\?\\Volume{99999999-0000-4000-8000-000000000009}\\VMs\\x.vhdx";

struct client_run_t {
    int status;
    std::string out;
    std::string err;
};

// mirrack-client's subcommand against both tools, for the specification in the host's folder.
// Whatever the subcommand's outcome, both tools end normally and neither host keeps a shadow copy.
client_run_t RunBoth(offhost_tools_t& tools, const std::string& subcommand, const char* spec,
                     const std::vector<std::string>& more) {
    std::vector<std::string> line{subcommand, "--host-pipe", "host", "--proxy-pipe", "proxy", "--spec"};
    line.push_back((tools.hosts.host.dir() / spec).string());
    line.insert(line.end(), more.begin(), more.end());
    std::ostringstream out, err;
    const int status = client::RunClient(line, out, err);
    EXPECT_EQ(tools.proxyRun.WaitForExit(), 0);
    EXPECT_EQ(tools.hostRun.WaitForExit(), 0);
    EXPECT_TRUE(tools.hosts.host.state_lines("shadows.txt").empty());
    EXPECT_TRUE(tools.hosts.proxy.state_lines("shadows.txt").empty());
    return {status, out.str(), err.str()};
}

} // namespace

TEST(OffhostRoad, HostsItemsLeadToTheSnapshotsFilesOnTheProxyAndBothHostsEndClean) {
    OffhostRoad road;
    ItemsList items;
    for (const std::string& vm : road.hosts.OffhostVms()) {
        const ItemsList ofVm = client::GetVmItems(*road.host, string_to_guid(vm));
        items.insert(items.end(), ofVm.begin(), ofVm.end());
    }
    ASSERT_FALSE(items.empty());
    std::vector<std::string> before;
    road.hosts.host.select();
    for (const CFilesListItem& item : items) {
        EXPECT_TRUE(item.fullPath.starts_with(L"\\\\?\\Volume{")) << to_ansi(item.fullPath);
        before.push_back(read_through(item.fullPath));
        std::ofstream(*hostsim::map_path(item.fullPath), std::ios::binary) << "written after the snapshot";
    }
    road.hosts.proxy.select();
    items.push_back(CFilesListItem(L"D:\\VMs\\", L"x.vhdx", 0, L"x.vhdx", notImported));

    const client::operation_status_t imported = road.Import(road.documents.snapshotsXml);
    ASSERT_TRUE(imported.isSucceeded) << to_ansi(imported.errDescription);
    EXPECT_EQ(imported.errDescription, L"");
    EXPECT_NE(imported.completedTime, 0);
    const ItemsList onProxy = client::ConvertOffhostPaths(*road.proxy, items);
    ASSERT_EQ(onProxy.size(), items.size());
    for (std::size_t i = 0; i + 1 < items.size(); ++i) {
        EXPECT_TRUE(onProxy[i].fullPath.starts_with(L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy"));
        EXPECT_EQ(read_through(onProxy[i].fullPath), before[i]) << to_ansi(onProxy[i].fullPath);
    }
    EXPECT_EQ(onProxy.back().fullPath, notImported) << "a volume that wasn't imported stays as it came";

    EXPECT_FALSE(road.hosts.proxy.state_lines("shadows.txt").empty()) << "held while the task stands";
    const std::string proxyLog = road.CloseBoth();
    EXPECT_TRUE(road.hosts.host.state_lines("shadows.txt").empty());
    EXPECT_TRUE(road.hosts.proxy.state_lines("shadows.txt").empty());
    for (const char* line : {"Starting snapshot import ( task '{", "', job 'Nightly').",
                             "Entering in snapshot import procedure.", "Paths were successfully converted.",
                             "Waiting for backup completion", "Leaving snapshot import procedure."})
        EXPECT_TRUE(contains(proxyLog, line)) << line << "\n" << proxyLog;
}

// A failed import takes nothing onto the proxy, whose paths are then refused. Transportable copies
// outlive the job that made them: what an import that never ran leaves waits on the storage, and
// the host's state lists it apart.
TEST(OffhostRoad, AnImportThatFailsImportsNothingRefusesPathsAndTheHostsCopiesWaitForAnImport) {
    for (const bool unknownSnapshot : {false, true}) {
        SCOPED_TRACE(unknownSnapshot ? "a snapshot the host never made" : "cancelled by VSS");
        OffhostRoad road(unknownSnapshot ? "" : R"(<Fault op="ImportSnapshots" status="0x0004230B"/>)");
        SnapshotIdList ids;
        DeserializeSnapshotIds(road.documents.snapshotsXml, ids);
        if (unknownSnapshot)
            ids.push_back(string_to_guid(std::string("{0badbad0-0000-4000-8000-000000000001}")));
        const client::operation_status_t status = road.Import(SerializeSnapshotIds(ids));
        EXPECT_FALSE(status.isSucceeded);
        EXPECT_TRUE(contains(to_ansi(status.errDescription),
                             unknownSnapshot ? "Failed to enumerate mount points for imported snapshots."
                                             : "Import snapshot task has been cancelled."))
            << to_ansi(status.errDescription);
        EXPECT_EQ(
            road.proxy
                ->Call(L"ConvertOffhostPaths", CRequestArguments().AddEncoded(L"InPathsXML", L"<FilesList/>"))
                .Frame(),
            L"err:There is no successfully imported snapshot.\n--tr:Failed to convert source paths to "
            L"off-host shadow paths. Given specification: '<FilesList/>'.");
        road.CloseBoth();
        EXPECT_TRUE(road.hosts.proxy.state_lines("shadows.txt").empty()) << "nothing was imported";

        const auto waiting = road.hosts.host.state_lines("shadows.txt");
        EXPECT_EQ(waiting.empty(), unknownSnapshot) << "an import takes the copies, though it fails after";
        const std::string state = lab::host_state_report(road.hosts.host.dir());
        EXPECT_TRUE(contains(state, "Live shadow copies: 0\nShadow copies waiting for import: " +
                                        std::to_string(waiting.size()) + "\n"))
            << state;
        for (const std::string& shadow : waiting) { // its number, then its snapshot's id and its set's
            const std::size_t tab = shadow.find('\t');
            EXPECT_TRUE(contains(state, "HarddiskVolumeShadowCopy" + shadow.substr(0, tab) + "  set " +
                                            shadow.substr(tab + 40, 38) + "\n"))
                << state;
        }
        EXPECT_EQ(contains(state, "Age\n"), !unknownSnapshot) << state;
    }
}

TEST(OffhostClient, CopiesTheSnapshotOnTheProxyReportsEachVmOnTheHostAndLeavesBothClean) {
    offhost_tools_t tools;
    const std::vector<std::string> vms = tools.hosts.OffhostVms();
    ASSERT_GE(vms.size(), 2u);

    const std::string backup = (tools.hosts.host.dir() / "backup").string();
    const client_run_t run =
        RunBoth(tools, "offhost", "spec-offhost.xml", {"--to", backup, "--fail-vm", vms[1]});
    EXPECT_EQ(run.status, client::exit_success) << run.out << run.err;
    EXPECT_TRUE(contains(run.out, "Import task completed")) << run.out;
    EXPECT_TRUE(contains(run.out, "Import and snapshot closed.")) << run.out;

    // The sample files are each filled with their own name, so a file read from
    // the wrong place shows; nothing changed on the host meanwhile.
    std::size_t received = 0;
    for (const auto& entry : fs::recursive_directory_iterator(tools.hosts.host.dir() / "backup")) {
        if (!entry.is_regular_file())
            continue;
        const std::string fileName = entry.path().filename().string();
        EXPECT_EQ(read_file(entry.path()).substr(0, fileName.size() + 1), fileName + "\n") << entry.path();
        ++received;
    }
    EXPECT_GT(received, 0u);
    EXPECT_TRUE(std::regex_search(run.out, std::regex("\nTotal +" + std::to_string(received) + " ")))
        << run.out;
    // The set's line, then each VM's verdict in no set order: the writer knows the VM by its id as the
    // specification writes it.
    auto results = tools.hosts.host.state_lines("backups.txt");
    results.at(0).resize(8);
    std::sort(results.begin() + 1, results.end());
    std::vector<std::string> expected{"backup\t{"};
    for (const std::string& vm : vms)
        expected.push_back("component\t" + vm + (vm == vms[1] ? "\tfailed" : "\tsucceeded"));
    std::sort(expected.begin() + 1, expected.end());
    EXPECT_EQ(results, expected);
    EXPECT_TRUE(fs::is_empty(tools.hosts.host.dir() / "state" / "shadows"));
}

TEST(OffhostClient, AnOnHostSpecificationEndsTheRoadBeforeTheProxyIsAsked) {
    offhost_tools_t tools;
    const client_run_t run =
        RunBoth(tools, "offhost", "spec.xml", {"--to", (tools.hosts.host.dir() / "backup").string()});
    EXPECT_EQ(run.status, client::exit_error_response) << run.out << run.err;
    EXPECT_TRUE(contains(run.out, "The host made no transportable snapshot")) << run.out;
    EXPECT_FALSE(contains(tools.proxyRun.LogText(), "Starting import of the off-host snapshot."));
}

TEST(OffhostClient, AFieldCheckReadsSamplesOnTheProxyAndReportsBothToolsSteps) {
    offhost_tools_t tools;
    const fs::path report = tools.hosts.host.dir() / "report.txt";
    const client_run_t run = RunBoth(tools, "check", "spec-offhost.xml", {"--report", report.string()});
    EXPECT_EQ(run.status, client::exit_success) << run.out << run.err;
    const std::string text = read_file(report);
    for (const char* part : {"Result: passed\n", "\nImport on the proxy ", "\nSnapshot creation on the host ",
                             "proxy <- cmd:ConvertOffhostPaths", "host <- cmd:SetVmBackupStatus",
                             "versions unknown: give the check --tool-log"})
        EXPECT_TRUE(contains(text, part)) << part << "\n" << text;
    EXPECT_FALSE(contains(read_file(tools.hosts.host.dir() / "state" / "backups.txt"), "\tsucceeded"));
}
