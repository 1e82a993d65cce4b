// The import itself, on the test's thread: a transportable snapshot taken on the host
// comes over to the proxy from the backup document, with the writers checked while
// it comes; or the import gives its own failure and nothing stays on the proxy.
#include "import/vss_import_snapshot.h"
#include "import_test_support.h"

#include "common/exc/convert.h"
#include "common/win/event.h"
#include "documents/snapshot_ids.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace import_test;

namespace {

std::string AllLines(const std::function<void()>& action) {
    std::string all;
    for (const std::string& line : failure_lines(action))
        all += line + "\n";
    return all;
}

std::unique_ptr<hv::CVssImportSnapshot> Import(const std::wstring& backupDoc, const std::wstring& idsList,
                                               bool closed = false) {
    auto closeEvent = std::make_shared<win::win_manual_reset_event_t>();
    if (closed)
        closeEvent->set();
    return std::make_unique<hv::CVssImportSnapshot>(
        std::make_shared<hv::CImportSnapshotContext>(backupDoc, idsList), closeEvent);
}

std::size_t FirstCall(const std::vector<std::string>& calls, const std::string& call) {
    const auto at =
        std::find_if(calls.begin(), calls.end(), [&](const std::string& c) { return c.rfind(call, 0) == 0; });
    return static_cast<std::size_t>(at - calls.begin());
}

} // namespace

TEST(SnapshotImport, TakesTheListedSnapshotsWithTheHyperVWriterAndChecksWritersWhileItRuns) {
    host_and_proxy_t hosts;
    const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
    log_capture_t log;
    const auto imported = Import(taken.backupDoc, taken.snapshotsXml);

    SnapshotIdList ids;
    DeserializeSnapshotIds(taken.snapshotsXml, ids);
    const auto& snapshots = imported->GetResult()->Snapshots();
    ASSERT_EQ(snapshots.size(), 2u) << "the sample VMs lie on C: and on the cluster shared volume";
    for (std::size_t i = 0; i < ids.size(); ++i) {
        EXPECT_EQ(snapshots[i].snapshotId, ids[i]) << "in the list's order";
        EXPECT_TRUE(log.has("Mount point for volume [" + to_ansi(snapshots[i].oldVolume) + "] is [" +
                            to_ansi(snapshots[i].newVolume) + "]."))
            << log.text();
    }
    const auto calls = hosts.Calls(hosts.ProxyDir());
    EXPECT_LT(FirstCall(calls, "SetContext\t4294967295"), calls.size());
    EXPECT_LT(FirstCall(calls, "EnableWriterClasses\t{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}"), calls.size());
    const std::size_t writers = FirstCall(calls, "GatherWriterStatus");
    EXPECT_LT(FirstCall(calls, "ImportSnapshots"), writers);
    EXPECT_LT(writers, FirstCall(calls, "QueryStatus\tImportSnapshots")) << "before the import has finished";
    EXPECT_TRUE(log.has("Waiting until VSS import task finishes.")) << log.text();
}

TEST(SnapshotImport, ImportThatDoesntStandGivesItsOwnFailureAndLeavesTheProxyEmpty) {
    struct case_t {
        const char* proxyFault;
        bool closed;
        bool readableDocument;
        std::string expected;
    };
    const case_t cases[] = {
        {"", true, true, "Import snapshot task has been cancelled."},
        {R"(<Fault op="ImportSnapshots" status="0x80042301"/>)", false, true,
         "Import snapshot task has failed."},
        {R"(<Fault op="ImportSnapshots" hr="0x80042301"/>)", false, true,
         "Failed to initiate snapshot import procedure."},
        {"", false, false, "Failed to create VSS backup object."},
    };
    for (const case_t& c : cases) {
        host_and_proxy_t hosts(c.proxyFault);
        const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
        const std::string all = AllLines([&] {
            Import(c.readableDocument ? taken.backupDoc : L"<not a backup/>", taken.snapshotsXml, c.closed);
        });
        EXPECT_TRUE(contains(all, c.expected)) << all;
        EXPECT_TRUE(hosts.Shadows(hosts.ProxyDir()).empty()) << all;
    }
}
