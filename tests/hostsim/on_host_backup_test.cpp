// A whole backup on the host, driven through the requester interfaces as the tool drives it.
#include "scratch_host.h"

#include "hostsim/host_access.h"

#include <gtest/gtest.h>

using namespace hostsim_test;
using compat::com_ptr_t;

// What the requester reads of the metadata (file specs with their variables unexpanded among it)
// is checked through the VSS layer's and the snapshot's tests; here, what only the raw calls show.
TEST(OnHostBackup, OnlyEnabledWritersPublishTheirComponentsWithCaptionAndLogicalPathAsWritten) {
    scratch_host_t host;
    auto backup = initialised_backup();
    ASSERT_EQ(backup->EnableWriterClasses(&hyperv_writer_id, 1), S_OK);
    ASSERT_EQ(run(backup.get(), &IVssBackupComponents::GatherWriterMetadata), VSS_S_ASYNC_FINISHED);
    UINT writers = 0;
    ASSERT_EQ(backup->GetWriterMetadataCount(&writers), S_OK);
    ASSERT_EQ(writers, 1u) << "only the enabled writer takes part";
    VSS_ID instance{};
    com_ptr_t<IVssExamineWriterMetadata> metadata;
    ASSERT_EQ(backup->GetWriterMetadata(0, &instance, metadata.put()), S_OK);

    com_ptr_t<IVssWMComponent> component, second;
    ASSERT_EQ(metadata->GetComponent(0, component.put()), S_OK);
    PVSSCOMPONENTINFO info = nullptr;
    ASSERT_EQ(component->GetComponentInfo(&info), S_OK);
    EXPECT_STREQ(info->bstrCaption, L"vm1");
    EXPECT_STREQ(info->bstrLogicalPath, L"");
    ASSERT_EQ(component->FreeComponentInfo(info), S_OK);
    ASSERT_EQ(metadata->GetComponent(1, second.put()), S_OK);
    ASSERT_EQ(second->GetComponentInfo(&info), S_OK);
    EXPECT_EQ(info->bstrLogicalPath, nullptr) << "a component without logicalPath has none";
    second->FreeComponentInfo(info);
}

TEST(OnHostBackup, ShadowCopyKeepsThePointInTimeUntilTheObjectIsReleased) {
    scratch_host_t host;
    VSS_ID snapshot_id{};
    auto backup = prepared_backup(&snapshot_id);

    compat::com_ptr_t<IVssAsync> snapshot;
    ASSERT_EQ(backup->DoSnapshotSet(snapshot.put()), S_OK);
    // Written after the call, before the operation is seen to end: not in the copy.
    host.write("volumes/c/VMs/vm1/vm1.vhdx", "disk of vm1, after");
    host.write("volumes/c/VMs/vm1/new.avhdx", "born later");
    ASSERT_EQ(wait_for(snapshot), VSS_S_ASYNC_FINISHED);

    VSS_SNAPSHOT_PROP prop{};
    ASSERT_EQ(backup->GetSnapshotProperties(snapshot_id, &prop), S_OK);
    const std::wstring device = prop.m_pwszSnapshotDeviceObject;
    EXPECT_EQ(prop.m_ProviderId, system_provider_id);
    EXPECT_EQ(prop.m_eStatus, VSS_SS_CREATED);
    VssFreeSnapshotPropertiesInternal(&prop);
    EXPECT_EQ(prop.m_pwszSnapshotDeviceObject, nullptr);

    EXPECT_EQ(read_file(local_path(device + L"\\vms\\VM1\\vm1.VHDX")), "disk of vm1, before");
    EXPECT_FALSE(std::filesystem::exists(local_path(device + L"\\VMs\\vm1\\new.avhdx")));
    EXPECT_EQ(read_file(local_path(L"C:\\VMs\\vm1\\vm1.vhdx")), "disk of vm1, after");

    const auto shadow_folder = local_path(device + L"\\");
    ASSERT_TRUE(std::filesystem::is_directory(shadow_folder));
    ASSERT_EQ(host.state_lines("shadows.txt").size(), 1u);
    backup.reset();
    EXPECT_FALSE(std::filesystem::exists(shadow_folder));
    EXPECT_TRUE(host.state_lines("shadows.txt").empty());
}

TEST(OnHostBackup, WritersMoveThroughTheirStatesCallsAreJournaledAndSharesAndCsvsGetTheirProviders) {
    scratch_host_t host;
    auto backup = prepared_backup();
    ASSERT_EQ(run(backup.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_FINISHED);
    ASSERT_EQ(set_outcome(backup.get(), vm1_component, false), S_OK);
    ASSERT_EQ(run(backup.get(), &IVssBackupComponents::BackupComplete), VSS_S_ASYNC_FINISHED);
    EXPECT_EQ(writer_states(backup.get()), std::vector<VSS_WRITER_STATE>(2, VSS_WS_STABLE));

    auto backups = host.state_lines("backups.txt");
    backups.at(0).resize(8); // the set's id goes
    EXPECT_EQ(backups, (std::vector<std::string>{"backup\t{",
                                                 "component\tB1F6C5A2-2D3E-4F50-8A61-7C8D9E0F1A2B\tfailed"}));

    EXPECT_EQ(host.state_lines("journal.txt").front(),
              std::to_string(getpid()) + "\tCreateVssBackupComponentsInternal");
    EXPECT_NE(host.count("AddComponent", "B1F6C5A2-2D3E-4F50-8A61-7C8D9E0F1A2B"), 0u);
    EXPECT_NE(host.count("AddToSnapshotSet", "Volume{6a1b0c3e-0000-0000-0000-000000000001}"), 0u);
    EXPECT_NE(host.count("DoSnapshotSet", "{"), 0u);
    EXPECT_NE(host.count("QueryStatus", "DoSnapshotSet"), 0u);
    // Shares and cluster volumes get their own provider when none is named; what their shadow copies
    // hold is read through the tool's snapshot road.
    auto shares = gathered_backup();
    start_set(shares.get());
    VSS_ID share_snapshot{}, csv_snapshot{};
    ASSERT_EQ(add_volume(shares.get(), L"\\\\fs01\\vms\\", GUID_NULL, &share_snapshot), S_OK);
    ASSERT_EQ(add_volume(shares.get(), L"C:\\ClusterStorage\\Volume1\\", GUID_NULL, &csv_snapshot), S_OK);
    ASSERT_EQ(shares->SetBackupState(true, true, VSS_BT_FULL, false), S_OK);
    ASSERT_EQ(run(shares.get(), &IVssBackupComponents::PrepareForBackup), VSS_S_ASYNC_FINISHED);
    ASSERT_EQ(run(shares.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_FINISHED);

    const std::pair<VSS_ID, GUID> providers[] = {
        {share_snapshot, {0x89300202, 0x3cec, 0x4981, {0x91, 0x71, 0x19, 0xf5, 0x95, 0x59, 0xe0, 0xf2}}},
        {csv_snapshot, {0x400a2ff4, 0x5eb1, 0x44b0, {0x8a, 0x05, 0x1f, 0xca, 0xc0, 0xbc, 0xf9, 0xff}}}};
    for (const auto& [snapshot, provider] : providers) {
        VSS_SNAPSHOT_PROP prop{};
        ASSERT_EQ(shares->GetSnapshotProperties(snapshot, &prop), S_OK);
        EXPECT_EQ(prop.m_ProviderId, provider);
        VssFreeSnapshotPropertiesInternal(&prop);
    }
}
