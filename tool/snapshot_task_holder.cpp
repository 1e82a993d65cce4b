#include "tool/snapshot_task_holder.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "import/vss_import_snapshot_thread.h"
#include "snapshot/vss_snapshot_thread.h"
#include "spec/hv_backup_spec.h"
#include "tool/snapshot_id.h"

#include <concepts>
#include <utility>

namespace {

const char* const notInitializedText = "Snapshot is not initialized.";

template <class Task> Task& Required(const std::shared_ptr<Task>& task) {
    if (!task)
        throw exc::runtime_exc_t(notInitializedText);
    return *task;
}

const std::string& FailureText(const std::string& text) {
    return text;
}

template <typename MakeText>
requires std::invocable<MakeText> std::string FailureText(const MakeText& make) {
    return make();
}

// Every operation but the clearing has the same frame: a log block around the
// work, and the operation's own failure line added to whatever the work threw.
// The work closes the block itself, since the closing line differs. The failure
// line is a text, or what makes it when it is needed.
template <typename Failure, typename Work>
auto RunInLogBlock(const std::string& blockText, const Failure& failure, Work work) {
    try {
        log_scope_t block(logging::tool_logger(), blockText);
        return work(block);
    } catch (const std::exception& e) {
        exc::rethrow_with_trace(FailureText(failure), e);
    }
}

} // namespace

CSnapshotTaskHolder& CSnapshotTaskHolder::Instance() {
    static CSnapshotTaskHolder holder;
    return holder;
}

CSnapshotTaskHolder::CSnapshotTaskHolder()
    : CSnapshotTaskHolder(
          [](const impl::STaskIdentity& task, const std::shared_ptr<CHvBackupSpec>& spec) {
              return std::make_shared<CVssSnapshotThread2>(task.jobName, task.backupConsole, task.snapshotId,
                                                           spec);
          },
          [](const impl::STaskIdentity& task, const std::shared_ptr<hv::CImportSnapshotContext>& context) {
              return std::make_shared<hv::CVssImportSnapshotThread>(task.jobName, task.backupConsole,
                                                                    task.snapshotId, context);
          }) {}

CSnapshotTaskHolder::CSnapshotTaskHolder(SnapshotTaskFactory snapshotFactory, ImportTaskFactory importFactory)
    : makeSnapshotTask(std::move(snapshotFactory)), makeImportTask(std::move(importFactory)) {}

CSnapshotTaskHolder::~CSnapshotTaskHolder() {
    importTask.reset();
    snapshotTask.reset();
}

GUID CSnapshotTaskHolder::BeginSnapshotCreation(const std::wstring& specText, const std::wstring& jobName,
                                                const std::wstring& backupConsole) {
    const std::string job = to_ansi_nothrow(jobName);
    const std::string console = to_ansi_nothrow(backupConsole);
    return RunInLogBlock(
        format_message("Starting VSS backup. Job: '%1'. Backup server: '%2'. Backup spec: '%3'.", job,
                       console, to_ansi_nothrow(specText)),
        format_message("Failed to create snapshot task. Job: '%1'. Backup console: '%2'.", job, console),
        [&](log_scope_t& block) {
            auto spec = std::make_shared<CHvBackupSpec>(to_ansi(specText));
            spec->DumpToLog();
            const GUID id = tool::NewSnapshotId();
            // The previous task, if any, is released only now, inside this command.
            snapshotTask = makeSnapshotTask({jobName, backupConsole, id}, spec);
            block.finish("VSS backup is started. Snapshot ID: [%1]", guid_to_string(id));
            return id;
        });
}

GUID CSnapshotTaskHolder::BeginSnapshotImport(const std::shared_ptr<hv::CImportSnapshotContext>& context,
                                              const std::wstring& jobName,
                                              const std::wstring& backupConsole) {
    const std::string job = to_ansi_nothrow(jobName);
    const std::string console = to_ansi_nothrow(backupConsole);
    return RunInLogBlock(
        format_message("Starting import of the off-host snapshot. Job: '%1'. Backup server: '%2'.", job,
                       console),
        format_message("Failed to import off-host snapshot. Job: '%1'. Backup console: '%2'.", job, console),
        [&](log_scope_t& block) {
            const GUID id = tool::NewSnapshotId();
            importTask = makeImportTask({jobName, backupConsole, id}, context);
            block.finish("Snapshot import task was successfully created. Snapshot ID: '%1'.",
                         guid_to_string(id));
            return id;
        });
}

std::shared_ptr<COperationInfo> CSnapshotTaskHolder::GetAsyncOpStatus() {
    return RunInLogBlock("Getting operation info.", "Failed to get operation info.", [&](log_scope_t& block) {
        auto info = snapshotTask ? snapshotTask->GetOperationInfo() : Required(importTask).GetOperationInfo();
        block.ok();
        return info;
    });
}

std::shared_ptr<impl::CSnapshotInfo> CSnapshotTaskHolder::GetSnapshotInfo() {
    return RunInLogBlock("Getting snapshot info.", "Failed to get snapshot info.", [&](log_scope_t& block) {
        auto info = Required(snapshotTask).GetCreatedInfo();
        block.ok();
        return info;
    });
}

std::string CSnapshotTaskHolder::GetVMFilesList(const GUID& vmId) {
    return RunInLogBlock(format_message("Getting file list of vm '%1'.", guid_to_string(vmId)),
                         "Failed to get file list of vm.", [&](log_scope_t& block) {
                             auto files = Required(snapshotTask).GetVmFiles(vmId);
                             block.ok();
                             return files;
                         });
}

void CSnapshotTaskHolder::SetVmBackupStatus(const GUID& vmId, bool status) {
    RunInLogBlock(format_message("Completing VM backup. VMID: '%1', Status: '%2'", guid_to_string(vmId),
                                 status ? "OK" : "Failed"),
                  format_message("Failed to complete VM backup. VmID: '%1'.", guid_to_string(vmId)),
                  [&](log_scope_t& block) {
                      Required(snapshotTask).SetVmCompletion(vmId, status);
                      block.ok();
                  });
}

// The items list runs to megabytes: the failure line that shows it is made only for a failure.
std::string CSnapshotTaskHolder::ConvertOffhostPaths(const std::string& itemsXml) {
    return RunInLogBlock(
        "Converting source paths to the off-host paths.",
        [&] {
            return format_message(
                "Failed to convert source paths to off-host shadow paths. Given specification: '%1'.",
                to_ansi_nothrow(from_utf8(itemsXml)));
        },
        [&](log_scope_t& block) {
            auto converted = Required(importTask).ConvertOffhostPaths(itemsXml);
            block.finish("Paths were successfully converted.");
            return converted;
        });
}

std::shared_ptr<wrap::locks::CLockerJobInfo> CSnapshotTaskHolder::GetLockerJobInfo() {
    // The block is left open on purpose: the server's log readers expect this
    // command to be marked " Failed." even when it answers.
    return RunInLogBlock("Getting lock job info.", "Failed to get operation info.", [&](log_scope_t&) {
        return snapshotTask ? snapshotTask->GetJobInfo() : Required(importTask).GetJobInfo();
    });
}

bool CSnapshotTaskHolder::ReleaseOneTask() {
    if (snapshotTask)
        snapshotTask.reset();
    else if (importTask)
        importTask.reset();
    else
        return false;
    return true;
}

void CSnapshotTaskHolder::CloseSnapshot() {
    RunInLogBlock("Closing VSS snapshot.", "Failed to close snapshot.", [&](log_scope_t& block) {
        // Closing when nothing is open is reported in the log but answers as a success.
        if (!ReleaseOneTask())
            log_error(logging::tool_logger(), notInitializedText);
        block.ok();
    });
}

bool CSnapshotTaskHolder::ClearResources() {
    try {
        ReleaseOneTask();
        return true;
    } catch (const std::exception& e) {
        log_exception(logging::tool_logger(), "Failed to clear resources.", e);
        return false;
    }
}
