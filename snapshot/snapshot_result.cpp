#include "snapshot/snapshot_result.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"

std::string CVssSnapshotResult::ListVmFiles(const GUID& vmId) const {
    const std::string idText = guid_to_string(vmId);
    log_scope_t scope(logging::tool_logger(), "Listing files for VM '%1'.", idText);
    auto vm = vmFiles.find(vmId);
    if (vm == vmFiles.end())
        throw exc::runtime_exc_t("Cannot find VM with ID: [%1]", idText);
    std::string document = SerializeItemsListUtf8(vm->second);
    scope.ok();
    return document;
}
