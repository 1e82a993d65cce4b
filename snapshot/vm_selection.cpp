#include "snapshot/vss_snapshot.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "spec/hv_backup_spec.h"
#include "vssutils/backup_components.h"
#include "vssutils/vss_exc.h"
#include "vssutils/writer_components.h"

#include <algorithm>

namespace impl {

namespace {

using PendingVms = std::list<std::shared_ptr<CHvVmBackupSpec>>;

std::uint32_t CountComponents(VSSUtils::WriterMetadataPtr metadata) {
    UINT includeFiles = 0, excludeFiles = 0, components = 0;
    VSSUtils::CheckVss(metadata->GetFileCounts(&includeFiles, &excludeFiles, &components),
                       "Failed to get number of VMs in the Hyper-V writer document.");
    return components;
}

// VM ids are compared as text, braces and all: the specification must word them as the writer does.
PendingVms::iterator FindPending(PendingVms& pending, const std::string& componentName) {
    return std::find_if(pending.begin(), pending.end(),
                        [&](const auto& vm) { return iequals(vm->vmId, componentName); });
}

std::string JoinIds(const PendingVms& vms) {
    std::string list;
    for (const auto& vm : vms)
        list += (list.empty() ? "" : ";") + vm->vmId;
    return list;
}

} // namespace

void CVssSnapshot::SelectVms() {
    exc::traced("Failed to specify VMs that should be backed up.", [&] {
        log_scope_t scope(logging::tool_logger(), "Selecting specified VMs for backup.");
        PendingVms pending(specification->vms.begin(), specification->vms.end());
        const VSSUtils::WriterMetadataPtr metadata = hyperVWriterMetadata->metadata;
        const std::uint32_t components = CountComponents(metadata);
        for (std::uint32_t index = 0; index < components && !pending.empty(); ++index) {
            VSSUtils::WmComponentPtr component = VSSUtils::GetWmComponent(metadata, index);
            const VSSUtils::SWmComponentInfo info = VSSUtils::GetWmComponentInfo(component);
            const std::string name = to_ansi(info.componentName);
            auto match = FindPending(pending, name);
            if (match == pending.end())
                continue;
            log_info(logging::tool_logger(), "Adding VM '%1' to the backup list.", name);
            VMs[info.componentName] = std::make_shared<CBackupVmInfo>(
                component, info, (*match)->crashConsistent, (*match)->auxFiles);
            pending.erase(match);
        }
        if (!pending.empty())
            ReportMissingVms(pending);
        scope.ok();
    });
}

// One missing VM fails the task: a backup without it is not what was asked for.
void CVssSnapshot::ReportMissingVms(const PendingVms& missing) const {
    for (const auto& vm : missing)
        log_warning(logging::tool_logger(),
                    "Hyper-V writer does not contain references for VM %1. Excluding VM from backup list",
                    vm->vmId);
    throw exc::runtime_exc_t(
        "There is no VSS metadata for VMs, or they are not registered on Hyper-V host. VMs: '%1'.",
        JoinIds(missing));
}

void CVssSnapshot::AddVmComponents() {
    for (const auto& [name, vm] : VMs) {
        // Without its component the writer takes no part for this VM; its files are still copied.
        if (vm->crashConsistent) {
            log_info(logging::tool_logger(), "VM %1 will be backed up in crash consistent mode.",
                     to_ansi(name));
            continue;
        }
        VSSUtils::AddComponent(backupComponents, hyperVWriterMetadata->writerInstanceId,
                               hyperVWriterMetadata->writerId, vm->componentType, vm->logicalPath,
                               vm->componentName);
    }
}
} // namespace impl
