// The off-host road through two real tools: mirrack on the Hyper-V host makes a
// transportable snapshot, mirrack on the proxy imports it from the host's documents
// and converts the host's paths, as a backup server drives them.
#include "offhost_tools.h"

#include "client/invoke_client.h"
#include "common/format/format.h"
#include "invoke/snapshot_ids.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace import_test;
using client::CRequestArguments;
using client::CResponse;

namespace {

class OffhostRoad {
public:
    explicit OffhostRoad(const std::string& proxyExtra = "")
        : tools(proxyExtra), hosts(tools.hosts), hostRun(tools.hostRun), proxyRun(tools.proxyRun) {
        host = client::CInvokeClient::Connect(L"host");
        proxy = client::CInvokeClient::Connect(L"proxy");
    }

    static CResponse WaitForVerdict(client::CInvokeClient& tool) {
        for (;;) {
            CResponse status = tool.Call(L"GetAsyncOpStatus", {});
            if (!status.IsSuccess() || status.Value(L"IsCompleted") == L"true")
                return status;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }

    // The host task's documents, once its snapshot stands.
    void SnapshotOnHost() {
        const CResponse begin = host->Call(L"BeginSnapshotCreation",
                                           CRequestArguments()
                                               .AddText(L"JobName", L"Nightly")
                                               .AddText(L"BackupConsole", L"Console")
                                               .AddEncodedBytes(L"SnapshotXmlSpec", hosts.OffhostSpec()));
        ASSERT_TRUE(begin.IsSuccess()) << to_ansi(begin.Frame());
        const CResponse status = WaitForVerdict(*host);
        ASSERT_EQ(status.Value(L"IsSucceeded"), L"true") << to_ansi(status.Frame());
        const CResponse info = host->Call(L"GetSnapshotInfo", {});
        backupDoc = info.Decoded(L"BackupDoc");
        snapshotsXml = info.Decoded(L"SnapshotsXML");
        ASSERT_FALSE(backupDoc.empty());
        ASSERT_FALSE(snapshotsXml.empty()) << "an off-host task lists its snapshots";
    }

    ItemsList HostItems(const GUID& vm) {
        ItemsList items;
        DeserializeItemsList(
            host->Call(L"GetVMFilesList", CRequestArguments().AddGuid(L"VmId", vm)).Decoded(L"FilesList"),
            items);
        return items;
    }

    CResponse BeginImport(const std::wstring& idsList) {
        return proxy->Call(L"BeginSnapshotImport", CRequestArguments()
                                                       .AddEncoded(L"BackupDoc", backupDoc)
                                                       .AddEncoded(L"SnapshotIDsList", idsList)
                                                       .AddText(L"JobName", L"Nightly")
                                                       .AddText(L"BackupConsole", L"Console"));
    }

    CResponse Convert(const std::wstring& itemsXml) {
        return proxy->Call(L"ConvertOffhostPaths", CRequestArguments().AddEncoded(L"InPathsXML", itemsXml));
    }

    // Closes both tasks, the proxy's first, and ends both sessions; the tools' logs.
    std::pair<std::string, std::string> CloseBoth() {
        EXPECT_EQ(proxy->Call(L"CloseSnapshot", {}).Frame(), L"xml:<OutputArguments/>");
        EXPECT_EQ(host->Call(L"CloseSnapshot", {}).Frame(), L"xml:<OutputArguments/>");
        proxy->Disconnect();
        host->Disconnect();
        EXPECT_EQ(proxyRun.WaitForExit(), 0);
        EXPECT_EQ(hostRun.WaitForExit(), 0);
        return {hostRun.LogText(), proxyRun.LogText()};
    }

    offhost_tools_t tools;
    host_and_proxy_t& hosts;
    ToolRun& hostRun;
    ToolRun& proxyRun;
    std::unique_ptr<client::CInvokeClient> host, proxy;
    std::wstring backupDoc, snapshotsXml;
};

const std::wstring notImported = L"\\\\?\\Volume{99999999-0000-4000-8000-000000000009}\\VMs\\x.vhdx";

} // namespace

TEST(OffhostRoad, HostsItemsLeadToTheSnapshotsFilesOnTheProxyAndBothHostsEndClean) {
    OffhostRoad road;
    road.SnapshotOnHost();
    ItemsList items;
    for (const GUID& vm : road.hosts.OffhostVms()) {
        const ItemsList ofVm = road.HostItems(vm);
        EXPECT_FALSE(ofVm.empty());
        items.insert(items.end(), ofVm.begin(), ofVm.end());
    }
    std::vector<std::string> before;
    road.hosts.SelectHost();
    for (const CFilesListItem& item : items) {
        EXPECT_TRUE(item.fullPath.starts_with(L"\\\\?\\Volume{")) << to_ansi(item.fullPath);
        before.push_back(ReadThrough(item.fullPath));
        road.hosts.Overwrite(item.fullPath, "written after the snapshot");
    }
    road.hosts.SelectProxy();
    items.push_back(CFilesListItem(L"D:\\VMs\\", L"x.vhdx", 0, L"x.vhdx", notImported));

    const CResponse begin = road.BeginImport(road.snapshotsXml);
    ASSERT_TRUE(begin.IsSuccess()) << to_ansi(begin.Frame());
    const CResponse status = OffhostRoad::WaitForVerdict(*road.proxy);
    ASSERT_EQ(status.Value(L"IsSucceeded"), L"true") << to_ansi(status.Frame());
    EXPECT_EQ(status.Value(L"SnapshotId"), begin.Value(L"SnapshotId"));
    const CResponse locks = road.proxy->Call(L"GetLockerJobInfo", {});
    EXPECT_EQ(locks.Argument(L"Locks").Attribute(L"JobName"), L"Nightly");

    const CResponse converted = road.Convert(SerializeItemsList(items));
    ASSERT_TRUE(converted.IsSuccess()) << to_ansi(converted.Frame());
    ItemsList onProxy;
    DeserializeItemsList(converted.Decoded(L"OutPathsXML"), onProxy);
    ASSERT_EQ(onProxy.size(), items.size());
    for (std::size_t i = 0; i + 1 < items.size(); ++i) {
        EXPECT_TRUE(onProxy[i].fullPath.starts_with(L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy"));
        EXPECT_EQ(ReadThrough(onProxy[i].fullPath), before[i]) << to_ansi(onProxy[i].fullPath);
        EXPECT_EQ(onProxy[i].path, items[i].path);
        EXPECT_EQ(onProxy[i].relativePath, items[i].relativePath);
    }
    EXPECT_EQ(onProxy.back().fullPath, notImported) << "a volume that wasn't imported stays as it came";

    for (const GUID& vm : road.hosts.OffhostVms())
        road.host->Call(L"SetVmBackupStatus",
                        CRequestArguments().AddGuid(L"VmId", vm).AddBool(L"BackupStatus", true));
    const auto [hostLog, proxyLog] = road.CloseBoth();
    EXPECT_TRUE(road.hosts.Shadows(road.hosts.HostDir()).empty());
    EXPECT_TRUE(road.hosts.Shadows(road.hosts.ProxyDir()).empty());
    EXPECT_TRUE(Contains(proxyLog, "Snapshot import task was successfully created. Snapshot ID: '"))
        << proxyLog;
    EXPECT_TRUE(Contains(proxyLog, "Paths were successfully converted.")) << proxyLog;
    EXPECT_TRUE(Contains(proxyLog, "Leaving snapshot import procedure.")) << proxyLog;
}

TEST(OffhostRoad, PathsAreRefusedUntilTheImportStandsAndClosingCancelsIt) {
    OffhostRoad road(R"(<Fault op="ImportSnapshots" delayMs="600000"/>)");
    road.SnapshotOnHost();
    ASSERT_TRUE(road.BeginImport(road.snapshotsXml).IsSuccess());
    EXPECT_EQ(road.proxy->Call(L"GetAsyncOpStatus", {}).Value(L"IsCompleted"), L"false");

    const std::wstring items = L"<FilesList/>";
    EXPECT_EQ(
        road.Convert(items).Frame(),
        L"err:There is no successfully imported snapshot.\n--tr:Failed to convert source paths to off-host "
        L"shadow paths. Given specification: '" +
            items + L"'.");
    const auto [hostLog, proxyLog] = road.CloseBoth();
    EXPECT_TRUE(Contains(proxyLog, "Import snapshot task has been cancelled.")) << proxyLog;
    EXPECT_TRUE(road.hosts.Shadows(road.hosts.ProxyDir()).empty());
}

TEST(OffhostRoad, ImportOfASnapshotTheHostNeverMadeFailsWhole) {
    OffhostRoad road;
    road.SnapshotOnHost();
    SnapshotIdList ids;
    DeserializeSnapshotIds(road.snapshotsXml, ids);
    ids.push_back(string_to_guid(std::string("{0badbad0-0000-4000-8000-000000000001}")));

    ASSERT_TRUE(road.BeginImport(SerializeSnapshotIds(ids)).IsSuccess())
        << "the worker fails, not the command";
    const CResponse status = OffhostRoad::WaitForVerdict(*road.proxy);
    EXPECT_EQ(status.Value(L"IsSucceeded"), L"false");
    EXPECT_TRUE(Contains(to_ansi(status.Value(L"ErrDescription")),
                         "Failed to enumerate mount points for imported snapshots."))
        << to_ansi(status.Frame());
    EXPECT_TRUE(Contains(to_ansi(road.Convert(L"<FilesList/>").Body()),
                         "There is no successfully imported snapshot."));
    road.CloseBoth();
    EXPECT_TRUE(road.hosts.Shadows(road.hosts.ProxyDir()).empty());
}
