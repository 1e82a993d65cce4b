// The import itself, on the test's thread: a transportable snapshot taken on the host
// comes over to the proxy from the backup document, shows the host's point in time
// through the proxy's devices, and goes when its owner goes; or the import fails whole.
#include "import/imported_volumes.h"
#include "import/vss_import_snapshot.h"
#include "import_test_support.h"

#include "common/format/format.h"
#include "common/win/event.h"
#include "invoke/snapshot_ids.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace import_test;

namespace {

std::shared_ptr<hv::CImportSnapshotContext> ContextOf(const host_snapshot_t& taken) {
    return std::make_shared<hv::CImportSnapshotContext>(taken.backupDoc, taken.snapshotsXml);
}

std::unique_ptr<hv::CVssImportSnapshot> Import(const std::shared_ptr<hv::CImportSnapshotContext>& context,
                                               bool closed = false) {
    auto closeEvent = std::make_shared<win::win_manual_reset_event_t>();
    if (closed)
        closeEvent->set();
    return std::make_unique<hv::CVssImportSnapshot>(context, closeEvent);
}

std::size_t FirstCall(const std::vector<std::string>& calls, const std::string& call) {
    const auto at =
        std::find_if(calls.begin(), calls.end(), [&](const std::string& c) { return c.rfind(call, 0) == 0; });
    return static_cast<std::size_t>(at - calls.begin());
}

std::string LastLine(const std::vector<std::string>& lines) {
    return lines.empty() ? std::string() : lines.back();
}

} // namespace

TEST(SnapshotImport, ProxyShowsTheHostsPointInTimeUntilTheImportIsReleased) {
    host_and_proxy_t hosts;
    const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
    const ItemsList hostItems = AllItems(taken);
    ASSERT_FALSE(hostItems.empty());
    for (const CFilesListItem& item : hostItems)
        EXPECT_TRUE(item.fullPath.starts_with(L"\\\\?\\Volume{")) << to_ansi(item.fullPath);
    std::vector<std::string> before;
    for (const CFilesListItem& item : hostItems) {
        hosts.SelectHost();
        before.push_back(ReadThrough(item.fullPath));
        hosts.Overwrite(item.fullPath, "changed after the snapshot");
    }
    hosts.SelectProxy();

    log_capture_t log;
    auto imported = Import(ContextOf(taken));
    SnapshotIdList ids;
    DeserializeSnapshotIds(taken.snapshotsXml, ids);
    const auto& snapshots = imported->GetResult()->Snapshots();
    ASSERT_EQ(snapshots.size(), 2u) << "the sample VMs lie on C: and on the cluster shared volume";
    for (std::size_t i = 0; i < ids.size(); ++i) {
        EXPECT_EQ(snapshots[i].snapshotId, ids[i]) << "in the list's order";
        EXPECT_TRUE(snapshots[i].oldVolume.starts_with(L"\\\\?\\Volume{")) << to_ansi(snapshots[i].oldVolume);
        EXPECT_TRUE(
            snapshots[i].newVolume.starts_with(L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy"));
        EXPECT_TRUE(log.has("Mount point for volume [" + to_ansi(snapshots[i].oldVolume) + "] is [" +
                            to_ansi(snapshots[i].newVolume) + "]."))
            << log.text();
    }

    ItemsList converted;
    DeserializeItemsList(imported->GetResult()->ConvertOffhostPaths(SerializeItemsList(hostItems)),
                         converted);
    ASSERT_EQ(converted.size(), hostItems.size());
    for (std::size_t i = 0; i < converted.size(); ++i)
        EXPECT_EQ(ReadThrough(converted[i].fullPath), before[i]) << to_ansi(converted[i].fullPath);
    EXPECT_EQ(hosts.Shadows(hosts.ProxyDir()).size(), 2u);
    EXPECT_TRUE(hosts.Shadows(hosts.HostDir()).empty()) << "the copies moved to the proxy";

    imported.reset();
    EXPECT_TRUE(hosts.Shadows(hosts.ProxyDir()).empty());
    EXPECT_EQ(ReadThrough(converted[0].fullPath), "") << "released with its owner";
}

TEST(SnapshotImport, ImportTakesEverySnapshotWithHyperVWriterAndChecksWritersWhileItRuns) {
    host_and_proxy_t hosts;
    const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
    log_capture_t log;
    Import(ContextOf(taken));

    const auto calls = hosts.Calls(hosts.ProxyDir());
    EXPECT_LT(FirstCall(calls, "InitializeForBackup\tdocument"), calls.size());
    EXPECT_LT(FirstCall(calls, "SetContext\t4294967295"), calls.size());
    EXPECT_LT(FirstCall(calls, "EnableWriterClasses\t{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}"), calls.size());
    const std::size_t import = FirstCall(calls, "ImportSnapshots");
    const std::size_t writers = FirstCall(calls, "GatherWriterStatus");
    const std::size_t finished = FirstCall(calls, "QueryStatus\tImportSnapshots");
    ASSERT_LT(finished, calls.size());
    EXPECT_LT(import, writers);
    EXPECT_LT(writers, finished) << "the writers are looked at before the import has finished";
    for (const char* line :
         {"Initializing VSS content.", "Creating VSS backup object.",
          "Selecting Hyper-V writer for backup. ok.", "Importing snapshots.",
          "Waiting until VSS import task finishes.", "Enumerating mount points for imported snapshots."})
        EXPECT_TRUE(log.has(line)) << line << "\n" << log.text();
}

TEST(SnapshotImport, AnIdVssDoesntKnowFailsTheWholeImportAndReleasesWhatCameOver) {
    host_and_proxy_t hosts;
    const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
    SnapshotIdList ids;
    DeserializeSnapshotIds(taken.snapshotsXml, ids);
    ids.push_back(string_to_guid(std::string("{0badbad0-0000-4000-8000-000000000001}")));
    const auto context =
        std::make_shared<hv::CImportSnapshotContext>(taken.backupDoc, SerializeSnapshotIds(ids));

    const auto lines = failure_lines([&] { Import(context); });
    EXPECT_EQ(LastLine(lines), "Failed to enumerate mount points for imported snapshots.");
    EXPECT_TRUE(hosts.Shadows(hosts.ProxyDir()).empty());
}

TEST(SnapshotImport, ImportThatDoesntFinishGivesItsOwnFailure) {
    struct case_t {
        const char* proxyFault;
        bool closed;
        std::string expected;
    };
    const case_t cases[] = {
        {"", true, "Import snapshot task has been cancelled."},
        {R"(<Fault op="ImportSnapshots" status="0x80042301"/>)", false, "Import snapshot task has failed."},
        {R"(<Fault op="ImportSnapshots" hr="0x80042301"/>)", false,
         "Failed to initiate snapshot import procedure."},
    };
    for (const case_t& c : cases) {
        host_and_proxy_t hosts(c.proxyFault);
        const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
        std::string all;
        for (const std::string& line : failure_lines([&] { Import(ContextOf(taken), c.closed); }))
            all += line + "\n";
        EXPECT_TRUE(Contains(all, c.expected)) << all;
        EXPECT_TRUE(hosts.Shadows(hosts.ProxyDir()).empty()) << all;
    }
}

TEST(SnapshotImport, DocumentTheProxyCantReadFailsBeforeAnyImport) {
    host_and_proxy_t hosts;
    hosts.SelectProxy();
    const auto context = std::make_shared<hv::CImportSnapshotContext>(L"<not a backup/>", L"<SnapshotIDs/>");
    const auto lines = failure_lines([&] { Import(context); });
    EXPECT_EQ(LastLine(lines), "Failed to create VSS backup object.");
    EXPECT_EQ(FirstCall(hosts.Calls(hosts.ProxyDir()), "ImportSnapshots"),
              hosts.Calls(hosts.ProxyDir()).size());
}
