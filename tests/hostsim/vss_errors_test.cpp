// The errors VSS gives for a requester's mistakes.
#include "scratch_host.h"

#include <gtest/gtest.h>

using namespace hostsim_test;
using compat::com_ptr_t;

namespace {

const GUID unknown_id = {0x12345678, 0, 0, {0, 0, 0, 0, 0, 0, 0, 9}};

} // namespace

TEST(VssErrors, UnknownsAreNotFoundOrNotSupportedAndSomethingAddedTwiceAlreadyExists) {
    scratch_host_t host;
    auto backup = gathered_backup();
    start_set(backup.get());
    EXPECT_EQ(add_volume(backup.get(), L"E:\\", GUID_NULL), VSS_E_OBJECT_NOT_FOUND);
    EXPECT_EQ(
        backup->AddComponent(hyperv_writer_instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"", L"no such VM"),
        VSS_E_OBJECT_NOT_FOUND);
    EXPECT_EQ(backup->AddComponent(unknown_id, hyperv_writer_id, VSS_CT_FILEGROUP, L"", vm1_component),
              VSS_E_OBJECT_NOT_FOUND)
        << "the writer instance must be the writer's";
    BOOL supported = TRUE;
    WCHAR volume[] = L"Z:\\";
    EXPECT_EQ(backup->IsVolumeSupported(system_provider_id, volume, &supported), VSS_E_OBJECT_NOT_FOUND);
    VSS_SNAPSHOT_PROP prop{};
    EXPECT_EQ(backup->GetSnapshotProperties(unknown_id, &prop), VSS_E_OBJECT_NOT_FOUND);
    // Providers serve only what they support.
    EXPECT_EQ(add_volume(backup.get(), L"\\\\fs01\\vms\\", system_provider_id),
              VSS_E_VOLUME_NOT_SUPPORTED_BY_PROVIDER);
    EXPECT_EQ(add_volume(backup.get(), L"C:\\ClusterStorage\\Volume1\\", hardware_provider_id),
              VSS_E_VOLUME_NOT_SUPPORTED_BY_PROVIDER)
        << "the hardware provider lists C: only";
    EXPECT_EQ(add_volume(backup.get(), c_volume_name, unknown_id), VSS_E_PROVIDER_NOT_REGISTERED);
    WCHAR share[] = L"\\\\fs01\\vms\\";
    ASSERT_EQ(backup->IsVolumeSupported(system_provider_id, share, &supported), S_OK);
    EXPECT_FALSE(supported) << "an unsupported volume is an answer, not an error";
    EXPECT_EQ(backup->IsVolumeSupported(unknown_id, share, &supported), VSS_E_PROVIDER_NOT_REGISTERED);
    ASSERT_EQ(add_volume(backup.get(), c_volume_name, system_provider_id), S_OK);
    EXPECT_EQ(add_volume(backup.get(), L"c:\\", system_provider_id), VSS_E_OBJECT_ALREADY_EXISTS)
        << "a mount point names the same volume";
    ASSERT_EQ(
        backup->AddComponent(hyperv_writer_instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"", vm1_component),
        S_OK);
    EXPECT_EQ(
        backup->AddComponent(hyperv_writer_instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"", vm1_component),
        VSS_E_OBJECT_ALREADY_EXISTS);

    // Transportable sets need a transportable provider.
    backup = gathered_backup();
    ASSERT_EQ(backup->SetContext(VSS_VOLSNAP_ATTR_TRANSPORTABLE), S_OK);
    VSS_ID set_id{};
    ASSERT_EQ(backup->StartSnapshotSet(&set_id), S_OK);
    EXPECT_EQ(add_volume(backup.get(), c_volume_name, system_provider_id),
              VSS_E_VOLUME_NOT_SUPPORTED_BY_PROVIDER);
    EXPECT_EQ(add_volume(backup.get(), L"\\\\fs01\\vms\\", GUID_NULL), VSS_E_VOLUME_NOT_SUPPORTED)
        << "no provider can make a transportable copy of a share";
    EXPECT_EQ(add_volume(backup.get(), c_volume_name, GUID_NULL), S_OK) << "the hardware provider is chosen";
}

TEST(VssErrors, CallsOutOfOrderAreInABadState) {
    scratch_host_t host;
    auto fresh = new_backup();
    UINT count = 0;
    VSS_ID set_id{};
    EXPECT_EQ(fresh->StartSnapshotSet(&set_id), VSS_E_BAD_STATE) << "before InitializeForBackup";
    ASSERT_EQ(fresh->InitializeForBackup(), S_OK);
    EXPECT_EQ(fresh->InitializeForBackup(), VSS_E_BAD_STATE) << "initialized twice";
    EXPECT_EQ(fresh->GetWriterMetadataCount(&count), VSS_E_BAD_STATE) << "before the metadata is gathered";
    EXPECT_EQ(fresh->GetWriterStatusCount(&count), VSS_E_BAD_STATE) << "before the status is gathered";
    EXPECT_EQ(add_volume(fresh.get(), c_volume_name, GUID_NULL), VSS_E_BAD_STATE)
        << "before StartSnapshotSet";

    compat::com_ptr_t<IVssAsync> pending;
    ASSERT_EQ(fresh->GatherWriterMetadata(pending.put()), S_OK);
    EXPECT_EQ(fresh->GetWriterMetadataCount(&count), VSS_E_BAD_STATE)
        << "before the gathering has been seen to end";
    ASSERT_EQ(wait_for(pending), VSS_S_ASYNC_FINISHED);

    ASSERT_EQ(fresh->StartSnapshotSet(&set_id), S_OK);
    EXPECT_EQ(fresh->StartSnapshotSet(&set_id), VSS_E_SNAPSHOT_SET_IN_PROGRESS);
    EXPECT_EQ(fresh->SetContext(VSS_VOLSNAP_ATTR_TRANSPORTABLE), VSS_E_BAD_STATE)
        << "after the set was started";
    ASSERT_EQ(add_volume(fresh.get(), c_volume_name, GUID_NULL), S_OK);
    EXPECT_EQ(run(fresh.get(), &IVssBackupComponents::PrepareForBackup), VSS_E_BAD_STATE)
        << "no backup state";
    EXPECT_EQ(run(fresh.get(), &IVssBackupComponents::DoSnapshotSet), VSS_E_BAD_STATE) << "not prepared";
    EXPECT_EQ(run(fresh.get(), &IVssBackupComponents::BackupComplete), VSS_E_BAD_STATE) << "no snapshot";
    EXPECT_EQ(fresh->SetBackupSucceeded(hyperv_writer_instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"",
                                        vm1_component, true),
              VSS_E_BAD_STATE);
    EXPECT_EQ(run(fresh.get(), &IVssBackupComponents::ImportSnapshots), VSS_E_BAD_STATE)
        << "nothing to import without a document";
}

TEST(VssErrors, StepsThatCannotBeRepeated) {
    scratch_host_t host;
    auto backup = prepared_backup();
    EXPECT_EQ(run(backup.get(), &IVssBackupComponents::PrepareForBackup), VSS_E_BAD_STATE);
    EXPECT_EQ(backup->AddComponent(hyperv_writer_instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"",
                                   L"C7D8E9F0-1A2B-4C3D-8E4F-5A6B7C8D9E0F"),
              VSS_E_BAD_STATE)
        << "components are chosen before the prepare";
    ASSERT_EQ(run(backup.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_FINISHED);
    EXPECT_EQ(run(backup.get(), &IVssBackupComponents::DoSnapshotSet), VSS_E_BAD_STATE);
    EXPECT_EQ(add_volume(backup.get(), L"\\\\fs01\\vms\\", GUID_NULL), VSS_E_BAD_STATE);
    EXPECT_EQ(backup->SetBackupSucceeded(hyperv_writer_instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"",
                                         L"C7D8E9F0-1A2B-4C3D-8E4F-5A6B7C8D9E0F", true),
              VSS_E_OBJECT_NOT_FOUND)
        << "only components of the backup have an outcome";
    ASSERT_EQ(run(backup.get(), &IVssBackupComponents::BackupComplete), VSS_S_ASYNC_FINISHED);
    EXPECT_EQ(run(backup.get(), &IVssBackupComponents::BackupComplete), VSS_E_BAD_STATE);
}

TEST(VssErrors, ADocumentThatIsNotABackupDocumentIsInvalidAndAnotherInterfaceIsRefused) {
    scratch_host_t host;
    for (const wchar_t* text :
         {L"<not xml", L"<Writer/>", L"<BackupComponents><SnapshotSet id=\"nope\"/></BackupComponents>"}) {
        auto backup = new_backup();
        BSTR document = SysAllocString(text);
        EXPECT_EQ(backup->InitializeForBackup(document), VSS_E_INVALID_XML_DOCUMENT) << text;
        SysFreeString(document);
    }
    auto backup = gathered_backup();
    com_ptr_t<IVssAsync> not_an_async;
    EXPECT_EQ(backup.query(IID_IVssAsync, not_an_async), E_NOINTERFACE);
}
