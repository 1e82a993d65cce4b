// This build carries no import task: creation fails with a line that says so.
#include "tool/import_task.h"

#include "common/exc/exc.h"

std::shared_ptr<IImportTask> CreateImportTask(const std::wstring&, const std::wstring&, const GUID&,
                                              const std::shared_ptr<hv::CImportSnapshotContext>&) {
    throw exc::runtime_exc_t("Snapshot import task is not available in this build.");
}
