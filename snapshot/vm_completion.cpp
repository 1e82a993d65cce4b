#include "snapshot/vss_snapshot.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "vssutils/backup_components.h"

namespace impl {

void CVssSnapshot::CompleteVm(const GUID& vmId, bool succeeded) {
    log_scope_t scope(logging::tool_logger(), "VSI: Set VM backup status: [%1], [%2]", guid_to_string(vmId),
                      succeeded ? "Done" : "Failed");
    std::wstring name = guid_to_wstring(vmId);
    if (!name.empty() && name.front() == L'{')
        name.erase(0, 1);
    if (!name.empty() && name.back() == L'}')
        name.pop_back();
    auto vm = VMs.find(name);
    if (vm == VMs.end())
        throw exc::runtime_exc_t("Cannot find VM with ID: [%1]", to_ansi_nothrow(name));
    const CBackupVmInfo& info = *vm->second;
    // No component was added for a crash-consistent VM, so there is nothing to tell the writer.
    if (!info.crashConsistent)
        VSSUtils::SetBackupSucceeded(backupComponents, hyperVWriterMetadata->writerInstanceId,
                                     hyperVWriterMetadata->writerId, info.componentType, info.logicalPath,
                                     info.componentName, succeeded);
    scope.ok();
}

} // namespace impl
