// The VSS work of a snapshot task. The constructor creates the snapshot from the
// specification: backup object, writers, VM selection, file sets, volumes,
// snapshot set, shadow paths, documents. Destroying the object releases the
// snapshot. It lives and dies on the task's worker, in the worker's apartment.
#pragma once

#include "compat/ascii_case.h"
#include "snapshot/backup_vm_info.h"
#include "snapshot/snapshot_result.h"
#include "vssutils/com.h"
#include "vssutils/writer_metadata.h"

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

class CHvBackupSpec;
class CHvVmBackupSpec;

namespace win {
class win_manual_reset_event_t;
}

namespace VSSUtils {
class CVolumesHolder;
class ITestCancelCallback;
} // namespace VSSUtils

namespace impl {

class CVssSnapshot {
public:
    using VmMap = std::map<std::wstring, std::shared_ptr<CBackupVmInfo>, compat::less_t>;

    // The cancel event stops the waits of the creation; setting it fails the creation.
    CVssSnapshot(std::shared_ptr<const CHvBackupSpec> specification,
                 std::shared_ptr<win::win_manual_reset_event_t> cancelEvent);
    ~CVssSnapshot();
    CVssSnapshot(const CVssSnapshot&) = delete;
    CVssSnapshot& operator=(const CVssSnapshot&) = delete;

    // The documents and each VM's items, keyed by the VM's id. They are handed
    // over, not copied: nothing of the task reads them again, and on a large host
    // a second set of them would double the task's memory. Called once.
    std::shared_ptr<CVssSnapshotResult> BuildResult();
    // Hands the server's verdict on one VM to the writer.
    void CompleteVm(const GUID& vmId, bool succeeded);
    VSSUtils::BackupComponentsPtr GetBackupComponents() const { return backupComponents; }
    const VmMap& GetVms() const { return VMs; }

private:
    void InitBackup();
    void CollectMetadata(VSSUtils::ITestCancelCallback& probe);
    void EnableTransportable();
    void SelectVms();
    [[noreturn]] void ReportMissingVms(const std::list<std::shared_ptr<CHvVmBackupSpec>>& missing) const;
    void PreBackup();
    void AddVmComponents();
    void CollectVmFiles();
    std::shared_ptr<VSSUtils::CVolumesHolder> CollectVolumes();
    void AddVolumesToSet(const std::shared_ptr<VSSUtils::CVolumesHolder>& volumes);
    void MapItemsToShadow();
    void CheckItemsOnSnapshot();
    bool IsTransportable() const;

    std::shared_ptr<const CHvBackupSpec> specification;
    std::shared_ptr<win::win_manual_reset_event_t> cancelEvent;
    VSSUtils::BackupComponentsPtr backupComponents;
    std::shared_ptr<VSSUtils::SWriterMetaInfo> hyperVWriterMetadata;
    VmMap VMs;
    std::vector<VSS_ID> snapshotIds;
    std::wstring backupDocument;
    std::wstring writerDocument;
    std::wstring snapshotsDocument;
};

} // namespace impl
