// The whole road of a snapshot through the checked calls, with the arguments the system fixes;
// and the walk over the writers' metadata and the cache of the wanted writer.
#include "vss_test_support.h"

#include "common/exc/convert.h"
#include "vssutils/async_wait.h"
#include "vssutils/backup_components.h"
#include "vssutils/snapshot_info.h"
#include "vssutils/writer_components.h"
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

const GUID system_writer_id = {0xe8132975, 0x6f93, 0x4464, {0xa5, 0x3e, 0x10, 0x50, 0x25, 0x3a, 0xe2, 0x20}};

CVssMetaCache walk(const std::string& extra = "") {
    scratch_host_t host(sample_host_xml(extra));
    CVssMetaCache cache(hyperv_writer_id);
    EnumWritersMetadata(initialised_backup(), cache, nullptr);
    return cache;
}

} // namespace

TEST(SnapshotSet, TheCheckedCallsReadTheWriterAndTakeADescribedSnapshotThatASavedDocumentCarriesOn) {
    scratch_host_t host;
    const std::wstring volume = c_volume_name;
    log_capture_t log;

    BackupComponentsPtr backup = CreateVssBackupObject(L"");
    EnableWriterClass(backup, hyperv_writer_id, "Hyper-V");
    CVssMetaCache cache(hyperv_writer_id);
    EnumWritersMetadata(backup, cache, nullptr);
    // The wanted writer is cached; the enabled class is the only one seen. The names, files and
    // masks of its components are read where the snapshot lists each VM's items.
    EXPECT_EQ(cache.SeenWriters(), std::vector<VSS_ID>{hyperv_writer_id});
    auto writer = cache.Find(hyperv_writer_id);
    ASSERT_TRUE(writer && writer->metadata);
    EXPECT_EQ(writer->writerInstanceId, hyperv_writer_instance);
    EXPECT_EQ(writer->writerName.text(), L"Microsoft Hyper-V VSS Writer");
    EXPECT_EQ(cache.Get(hyperv_writer_id), writer);
    EXPECT_EQ(GetWmComponentInfo(GetWmComponent(writer->metadata, 0)).type, VSS_CT_FILEGROUP);
    EXPECT_EQ(GetWmComponentInfo(GetWmComponent(writer->metadata, 1)).logicalPath, L"")
        << "no logical path reads as an empty one";

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

// A writer whose metadata or identity cannot be read is left out with a warning, and the walk goes on.
TEST(WriterMetadata, AnUnreadableWriterIsLeftOutAndTheWalkGoesOn) {
    const std::pair<std::string, std::string> faults[] = {
        {R"(<Fault op="GetIdentity" match="Hyper-V" hr="0x80042302"/>)",
         "Failed to retrieve properties of the VSS writer (using IVssExamineWriterMetadata)."},
        {R"(<Fault op="GetWriterMetadata" nth="1" hr="0x80042302"/>)",
         "Failed to get specific writer metadata. Index: '0'"}};
    for (const auto& [fault, warning] : faults) {
        SCOPED_TRACE(fault);
        log_capture_t log;
        CVssMetaCache cache = walk(fault);
        EXPECT_EQ(cache.SeenWriters(), std::vector<VSS_ID>{system_writer_id})
            << "every other writer only seen";
        EXPECT_FALSE(cache.Find(system_writer_id));
        EXPECT_TRUE(log.has(warning));
        EXPECT_EQ(failure_lines([&] { cache.Get(hyperv_writer_id); }),
                  std::vector<std::string>{
                      "There is no metadata for writer '{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}'."});
    }
}
