// The import itself, on the test's thread: a transportable snapshot taken on the host
// comes over to the proxy from the backup document, with the writers checked while
// it comes; or the import gives its own failure and nothing stays on the proxy. Then the host's
// volume-name paths converted to the imported shadow copies: which items move, how the rest of
// a path is joined to the device, and what stays as it came.
#include "import/import_snapshot_result.h"
#include "import/vss_import_snapshot.h"
#include "import_test_support.h"

#include "common/exc/convert.h"
#include "common/win/event.h"
#include "documents/snapshot_ids.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace import_test;

namespace {

std::unique_ptr<hv::CVssImportSnapshot> Import(const std::wstring& backupDoc, const std::wstring& idsList) {
    return std::make_unique<hv::CVssImportSnapshot>(
        std::make_shared<hv::CImportSnapshotContext>(backupDoc, idsList),
        std::make_shared<win::win_manual_reset_event_t>());
}

const std::wstring volumeC = L"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000001}\\";
const std::wstring volumeD = L"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000002}\\";
const std::wstring shadow7 = L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy7";
const std::wstring shadow8 = L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy8";
const VSSUtils::VSS_SNAPSHOT_INFO c7{GUID_NULL, volumeC, shadow7}, d8{GUID_NULL, volumeD, shadow8};

hv::CVssImportSnapshotResult ResultOf(std::vector<VSSUtils::VSS_SNAPSHOT_INFO> snapshots) {
    return hv::CVssImportSnapshotResult(
        std::make_shared<const std::vector<VSSUtils::VSS_SNAPSHOT_INFO>>(std::move(snapshots)));
}

CFilesListItem Item(const std::wstring& fullPath, const std::wstring& relativePath = L"disk.vhdx") {
    return CFilesListItem(L"C:\\VMs\\vm1\\", L"*.vhdx", 1, relativePath, fullPath);
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
    const auto& proxy = hosts.proxy;
    EXPECT_NE(proxy.first_call("SetContext\t4294967295"), std::string::npos);
    EXPECT_NE(proxy.first_call("EnableWriterClasses\t{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}"),
              std::string::npos);
    const std::size_t writers = proxy.first_call("GatherWriterStatus");
    EXPECT_LT(proxy.first_call("ImportSnapshots"), writers);
    EXPECT_LT(writers, proxy.first_call("QueryStatus\tImportSnapshots")) << "before the import has finished";
    EXPECT_TRUE(log.has("Waiting until VSS import task finishes.")) << log.text();
}

// A close that cancels the import is the import task's.
TEST(SnapshotImport, ImportThatDoesntStandGivesItsOwnFailureAndLeavesTheProxyEmpty) {
    const std::pair<const char*, std::string> cases[] = {
        {R"(<Fault op="ImportSnapshots" status="0x80042301"/>)", "Import snapshot task has failed."},
        {R"(<Fault op="ImportSnapshots" hr="0x80042301"/>)", "Failed to initiate snapshot import procedure."},
        {"", "Failed to create VSS backup object."},
    };
    for (const auto& [proxyFault, expected] : cases) {
        const bool readable = *proxyFault != '\0';
        host_and_proxy_t hosts(proxyFault);
        const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
        const auto lines = failure_lines(
            [&] { Import(readable ? taken.backupDoc : L"<not a backup/>", taken.snapshotsXml); });
        EXPECT_TRUE(std::find(lines.begin(), lines.end(), expected) != lines.end())
            << testing::PrintToString(lines);
        EXPECT_TRUE(hosts.proxy.state_lines("shadows.txt").empty());
    }
}

// A path's volume is matched in any case, one closing separator is taken off each part and one
// put between, and each snapshot walks the list once in the result's order.
TEST(PathConversion, OneItemAgainstTheSnapshotsOfAResult) {
    const auto one = [](std::vector<VSSUtils::VSS_SNAPSHOT_INFO> snapshots, const std::wstring& fullPath) {
        return Converted(ResultOf(std::move(snapshots)), {Item(fullPath)}).at(0).fullPath;
    };
    EXPECT_EQ(one({c7}, L"\\\\?\\VOLUME{6A1B0C3E-0000-0000-0000-000000000001}\\VMs\\Vm1\\Disk.VHDX"),
              shadow7 + L"\\VMs\\Vm1\\Disk.VHDX");
    EXPECT_EQ(one({c7}, volumeC), shadow7) << "the volume itself";
    EXPECT_EQ(one({c7, d8}, volumeD + L"data\\d.vhdx"), shadow8 + L"\\data\\d.vhdx");
    for (const std::wstring stays : {L"\\\\?\\Volume{99999999-0000-0000-0000-000000000009}\\x.vhdx",
                                     L"C:\\VMs\\vm1\\disk.vhdx", L"\\\\?\\Vol"})
        EXPECT_EQ(one({c7, d8}, stays), stays) << "on no snapshot's volume";
    EXPECT_EQ(one({{GUID_NULL, volumeC, shadow7 + L"\\"}}, volumeC + L"a.vhd"), shadow7 + L"\\a.vhd");
    EXPECT_EQ(one({{GUID_NULL, volumeC.substr(0, volumeC.size() - 1), shadow7}}, volumeC + L"a.vhd"),
              shadow7 + L"\\\\a.vhd")
        << "an old volume without its separator leaves the rest's in place";
    const std::wstring nested = volumeD + L"inner";
    EXPECT_EQ(one({{GUID_NULL, volumeC, nested}, d8}, volumeC + L"a.vhd"), shadow8 + L"\\inner\\a.vhd")
        << "a device that begins with a later snapshot's volume is rewritten again";
    EXPECT_EQ(one({d8, {GUID_NULL, volumeC, nested}}, volumeC + L"a.vhd"), nested + L"\\a.vhd");
}

TEST(PathConversion, EveryStepIsLoggedEvenForAnEmptyListAndUnreadableItemsFailThisCallOnly) {
    const auto result = ResultOf({c7, d8});
    log_capture_t log;
    EXPECT_EQ(result.ConvertOffhostPaths("<FilesList/>"), "<FilesList/>");
    EXPECT_TRUE(log.has("Obtaining paths to shadow copies of the specified files.")) << log.text();
    EXPECT_TRUE(log.has("XML specification: [<FilesList/>].")) << log.text();
    EXPECT_TRUE(log.has("Old volume: [" + to_ansi(volumeD) + "], new volume: [" + to_ansi(shadow8) + "]"))
        << log.text();
    EXPECT_EQ(log.count("Updating paths for files on volume ["), 2u) << log.text();
    EXPECT_EQ(log.count(" ok."), 0u) << "the blocks close without a closing line\n" << log.text();
    const auto lines = failure_lines([&] { result.ConvertOffhostPaths("<FilesList><File"); });
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines.back(), "Failed to obtain paths to shadow items on imported snapshot.");
    EXPECT_EQ(Converted(result, {Item(volumeC + L"a.vhd", L"r")}),
              (ItemsList{CFilesListItem(L"C:\\VMs\\vm1\\", L"*.vhdx", 1, L"r", shadow7 + L"\\a.vhd")}))
        << "only FullPath changes";
}
