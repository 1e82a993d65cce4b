#include "snapshot/writer_selection.h"

#include "common/exc/convert.h"
#include "common/logging/log.h"
#include "vssutils/backup_components.h"

namespace impl {

const VSS_ID HyperVWriterId = {0x66841cd4, 0x6ded, 0x4f4b, {0x8f, 0x17, 0xfd, 0x23, 0xf8, 0xdd, 0xc3, 0xde}};
const char CsvWriterIdText[] = "{1072ae1c-e5a7-4ea1-9e4a-6f7964656570}";

void SelectHyperVWriter(VSSUtils::BackupComponentsPtr components) {
    log_scope_t scope(logging::tool_logger(), "Selecting Hyper-V writer for backup.");
    VSSUtils::EnableWriterClass(components, HyperVWriterId, "Hyper-V");
    scope.ok();
}

void SelectCsvWriter(VSSUtils::BackupComponentsPtr components) {
    log_scope_t scope(logging::tool_logger(), "Selecting CSV writer for backup.");
    VSSUtils::EnableWriterClass(components, string_to_guid(std::string(CsvWriterIdText)), "CSV");
    scope.ok();
}

} // namespace impl
