// The one place where the tool's tasks live: a snapshot task on the host and an
// import task on a proxy. Commands reach the tasks only through this object, on
// the main thread, so its slots need no lock.
#pragma once

#include "compat/win_types.h"
#include "import/import_task.h"
#include "snapshot/snapshot_task.h"
#include "snapshot/task_core.h"

#include <functional>
#include <memory>
#include <string>

class CSnapshotTaskHolder {
public:
    using SnapshotTaskFactory = std::function<std::shared_ptr<impl::ISnapshotTask>(
        const impl::STaskIdentity& identity, const std::shared_ptr<CHvBackupSpec>& spec)>;
    using ImportTaskFactory = std::function<std::shared_ptr<hv::IImportTask>(
        const impl::STaskIdentity& identity, const std::shared_ptr<hv::CImportSnapshotContext>& context)>;

    // The process-wide holder, made on first use and destroyed at normal exit.
    static CSnapshotTaskHolder& Instance();

    CSnapshotTaskHolder();
    CSnapshotTaskHolder(SnapshotTaskFactory makeSnapshotTask, ImportTaskFactory makeImportTask);
    ~CSnapshotTaskHolder();
    CSnapshotTaskHolder(const CSnapshotTaskHolder&) = delete;
    CSnapshotTaskHolder& operator=(const CSnapshotTaskHolder&) = delete;

    GUID BeginSnapshotCreation(const std::wstring& specText, const std::wstring& jobName,
                               const std::wstring& backupConsole);
    GUID BeginSnapshotImport(const std::shared_ptr<hv::CImportSnapshotContext>& context,
                             const std::wstring& jobName, const std::wstring& backupConsole);
    std::shared_ptr<COperationInfo> GetAsyncOpStatus();
    std::shared_ptr<impl::CSnapshotInfo> GetSnapshotInfo();
    // The items list as UTF-8, the form in which it crosses the pipe.
    std::string GetVMFilesList(const GUID& vmId);
    void SetVmBackupStatus(const GUID& vmId, bool status);
    // The items list as UTF-8, the form in which it crosses the pipe.
    std::string ConvertOffhostPaths(const std::string& itemsXml);
    std::shared_ptr<wrap::locks::CLockerJobInfo> GetLockerJobInfo();
    void CloseSnapshot();
    // False when releasing a task threw; the failure is logged.
    bool ClearResources();

private:
    // Releases one task, the snapshot task first; false when both slots were empty.
    bool ReleaseOneTask();

    std::shared_ptr<impl::ISnapshotTask> snapshotTask;
    std::shared_ptr<hv::IImportTask> importTask;
    SnapshotTaskFactory makeSnapshotTask;
    ImportTaskFactory makeImportTask;
};
