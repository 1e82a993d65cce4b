// The imported snapshot's owner. Its constructor takes the transportable snapshot
// over from the host's backup document; releasing the object gives the imported
// shadow copies up, and so it lives on the worker that made it.
#pragma once

#include "import/import_snapshot_context.h"
#include "import/import_snapshot_result.h"
#include "vssutils/com.h"

#include <memory>

namespace win {
class win_manual_reset_event_t;
}

namespace hv {

class CVssImportSnapshot {
public:
    // Does the whole import or throws. Setting closeEvent cancels it: the import then
    // fails with "Import snapshot task has been cancelled.".
    CVssImportSnapshot(const std::shared_ptr<CImportSnapshotContext>& context,
                       const std::shared_ptr<win::win_manual_reset_event_t>& closeEvent);
    ~CVssImportSnapshot();
    CVssImportSnapshot(const CVssImportSnapshot&) = delete;
    CVssImportSnapshot& operator=(const CVssImportSnapshot&) = delete;

    std::shared_ptr<CVssImportSnapshotResult> GetResult() const { return result; }

private:
    VSSUtils::BackupComponentsPtr backupComponents;
    std::shared_ptr<CVssImportSnapshotResult> result;
};

} // namespace hv
