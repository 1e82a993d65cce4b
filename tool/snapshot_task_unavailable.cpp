// This build carries no snapshot task: creation fails with a line that says so.
#include "tool/snapshot_task.h"

#include "common/exc/exc.h"

std::shared_ptr<ISnapshotTask> CreateSnapshotTask(const std::wstring&, const std::wstring&, const GUID&,
                                                  const std::shared_ptr<CHvBackupSpec>&) {
    throw exc::runtime_exc_t("Snapshot task is not available in this build.");
}
