#include "tool/command_handlers.h"

#include "common/xml/dom.h"
#include "invoke/arguments.h"
#include "tool/snapshot_task_holder.h"

namespace tool {

namespace {

CSnapshotTaskHolder& Holder() {
    return CSnapshotTaskHolder::Instance();
}

} // namespace

void BeginSnapshotCreation(InputArguments_t& input, OutputArguments_t& output) {
    const std::wstring jobName = input.ReadText("JobName");
    const std::wstring backupConsole = input.ReadText("BackupConsole");
    const std::wstring spec = input.ReadEncoded("SnapshotXmlSpec");
    output.WriteGuid("SnapshotId", Holder().BeginSnapshotCreation(spec, jobName, backupConsole));
}

void GetAsyncOpStatus(InputArguments_t&, OutputArguments_t& output) {
    const impl::SOperationStatus status = Holder().GetAsyncOpStatus()->Read();
    output.WriteGuid("SnapshotId", status.snapshotId);
    output.WriteText("ErrDescription", status.errDescription);
    output.WriteBool("IsCompleted", status.isCompleted);
    output.WriteBool("IsSucceeded", status.isSucceeded);
    output.WriteNumber("CreationTime", status.creationTime);
    output.WriteNumber("CompletedTime", status.completedTime);
}

void BeginSnapshotImport(InputArguments_t& input, OutputArguments_t& output) {
    const std::wstring backupDoc = input.ReadEncoded("BackupDoc");
    const std::wstring snapshotIds = input.ReadEncoded("SnapshotIDsList");
    const std::wstring jobName = input.ReadText("JobName");
    const std::wstring backupConsole = input.ReadText("BackupConsole");
    auto context = std::make_shared<hv::CImportSnapshotContext>(backupDoc, snapshotIds);
    output.WriteGuid("SnapshotId", Holder().BeginSnapshotImport(context, jobName, backupConsole));
}

void GetSnapshotInfo(InputArguments_t&, OutputArguments_t& output) {
    const auto info = Holder().GetSnapshotInfo();
    output.WriteEncoded("BackupDoc", info->BackupDoc);
    output.WriteEncoded("WriterDoc", info->WriterDoc);
    output.WriteEncoded("SnapshotsXML", info->SnapshotsXML);
}

void GetVMFilesList(InputArguments_t& input, OutputArguments_t& output) {
    const GUID vmId = input.ReadGuid("VmId");
    output.WriteEncodedUtf8("FilesList", Holder().GetVMFilesList(vmId));
}

void SetVmBackupStatus(InputArguments_t& input, OutputArguments_t&) {
    const GUID vmId = input.ReadGuid("VmId");
    const bool status = input.ReadBool("BackupStatus");
    Holder().SetVmBackupStatus(vmId, status);
}

void ConvertOffhostPaths(InputArguments_t& input, OutputArguments_t& output) {
    const std::string items = input.ReadEncodedUtf8("InPathsXML");
    output.WriteEncodedUtf8("OutPathsXML", Holder().ConvertOffhostPaths(items));
}

void CloseSnapshot(InputArguments_t&, OutputArguments_t&) {
    Holder().CloseSnapshot();
}

void GetLockerJobInfo(InputArguments_t&, OutputArguments_t& output) {
    const auto job = Holder().GetLockerJobInfo();
    const dom_element_t locks = output.CreateElement("Locks");
    dom_set_attribute(locks, L"BackupConsole", job->backupConsole);
    dom_set_attribute(locks, L"JobName", job->jobName);
}

} // namespace tool
