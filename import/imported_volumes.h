// After an import: which device shows each imported snapshot on this machine.
#pragma once

#include "import/import_snapshot_context.h"
#include "import/import_snapshot_result.h"
#include "vssutils/com.h"

#include <memory>

namespace hv {

// One record per id of the context's list, in order. An id that VSS doesn't know
// fails the whole enumeration: the server gets all of the volumes or none.
std::shared_ptr<CVssImportSnapshotResult>
EnumerateImportedVolumes(VSSUtils::BackupComponentsPtr components,
                         const std::shared_ptr<CImportSnapshotContext>& context);

} // namespace hv
