// The whole road of a snapshot through the checked calls, with the arguments the system fixes.
#include "vss_test_support.h"

#include "common/exc/convert.h"
#include "vssutils/async_wait.h"
#include "vssutils/backup_components.h"
#include "vssutils/snapshot_info.h"
#include "vssutils/writer_metadata.h"

#include <gtest/gtest.h>

using namespace VSSUtils;
using namespace vssutils_test;

namespace {

std::vector<std::string> arguments_of(const scratch_host_t& host, const std::string& op) {
    for (const auto& record : host.journal())
        if (record.size() >= 2 && record[1] == op)
            return std::vector<std::string>(record.begin() + 2, record.end());
    return {};
}

} // namespace

TEST(SnapshotSet, TheCheckedCallsTakeADescribedSnapshotThatASavedDocumentCarriesOn) {
    scratch_host_t host;
    const std::wstring volume = c_volume_name;
    log_capture_t log;

    BackupComponentsPtr backup = CreateVssBackupObject(L"");
    EnableWriterClass(backup, hyperv_writer_id, "Hyper-V");
    CVssMetaCache cache(hyperv_writer_id);
    EnumWritersMetadata(backup, cache, nullptr);
    auto writer = cache.Get(hyperv_writer_id);
    StartSnapshotSet(backup);
    AddComponent(backup, writer->writerInstanceId, writer->writerId, VSS_CT_FILEGROUP, L"", vm1_component);
    ASSERT_TRUE(IsVolumeSupported(backup, volume, system_provider_id));
    VSS_ID snapshotId = AddVolumeToSnapshotSet(backup, volume, system_provider_id);
    SetBackupState(backup);
    ASSERT_TRUE(WaitForAsync(PrepareForBackup(backup), nullptr));
    ASSERT_TRUE(WaitForAsync(DoSnapshotSet(backup), nullptr));

    VSS_SNAPSHOT_INFO info = GetSnapshotInfo(backup, snapshotId);
    EXPECT_EQ(info.snapshotId, snapshotId);
    EXPECT_EQ(info.oldVolume, volume);
    EXPECT_EQ(info.newVolume.rfind(L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy", 0), 0u);
    EXPECT_TRUE(
        log.has("Old volume: [" + to_ansi(volume) + "], New volume: [" + to_ansi(info.newVolume) + "]"));
    EXPECT_EQ(journal_count(host, "VssFreeSnapshotPropertiesInternal"), 1u);

    EXPECT_EQ(arguments_of(host, "SetBackupState"), (std::vector<std::string>{"1", "true", "true", "false"}));
    EXPECT_EQ(arguments_of(host, "EnableWriterClasses"),
              std::vector<std::string>{"{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}"});
    EXPECT_FALSE(SaveWriterMetadataAsXml(writer->metadata).empty());

    CreateVssBackupObject(SaveComponentsAsXml(backup));
    EXPECT_EQ(journal_count(host, "InitializeForBackup", "document"), 1u);
    EXPECT_FALSE(log.has("Failed."));
}
