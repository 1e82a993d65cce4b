// One checked free function per call on the platform's backup components object. Each takes its
// counted pointer by value, so it holds a reference of its own for the length of the call, and
// throws impl::vss::vss_exc_t (the step's words, then the VSS error text) on an HRESULT below zero.
#pragma once

#include "vssutils/com.h"

#include <cstdint>
#include <string>

namespace VSSUtils {

BackupComponentsPtr CreateBackupComponents();
// An empty document initialises a new backup; a saved one takes over that backup's state.
void InitBackupComponents(BackupComponentsPtr components, const std::wstring& savedDocument);
// Both of the above in one log block.
BackupComponentsPtr CreateVssBackupObject(const std::wstring& savedDocument);

void SetVssContext(BackupComponentsPtr components, std::uint32_t contextFlags);
VSS_ID StartSnapshotSet(BackupComponentsPtr components);
// Always a full backup of selected components with the bootable system state.
void SetBackupState(BackupComponentsPtr components);
AsyncPtr PrepareForBackup(BackupComponentsPtr components);
AsyncPtr DoSnapshotSet(BackupComponentsPtr components);
AsyncPtr ImportSnapshots(BackupComponentsPtr components);
AsyncPtr BackupComplete(BackupComponentsPtr components);
std::wstring SaveComponentsAsXml(BackupComponentsPtr components);
std::wstring SaveWriterMetadataAsXml(WriterMetadataPtr metadata);

// `name` only labels the failure.
void EnableWriterClass(BackupComponentsPtr components, const VSS_ID& classId, const std::string& name);

void AddComponent(BackupComponentsPtr components, const VSS_ID& instanceId, const VSS_ID& writerId,
                  VSS_COMPONENT_TYPE type, const std::wstring& logicalPath,
                  const std::wstring& componentName);
void SetBackupSucceeded(BackupComponentsPtr components, const VSS_ID& instanceId, const VSS_ID& writerId,
                        VSS_COMPONENT_TYPE type, const std::wstring& logicalPath,
                        const std::wstring& componentName, bool succeeded);

// Returns the id of the new snapshot.
VSS_ID AddVolumeToSnapshotSet(BackupComponentsPtr components, const std::wstring& volumeName,
                              const VSS_ID& providerId);
bool IsVolumeSupported(BackupComponentsPtr components, const std::wstring& volumeName,
                       const VSS_ID& providerId);

struct SFileShareRoot {
    std::wstring rootPath;
    std::wstring logicalPrefix;
};
// The root under which VSS knows the share that holds filePath.
SFileShareRoot GetFileShareRoot(BackupComponentsPtr components, const std::wstring& filePath);

} // namespace VSSUtils
