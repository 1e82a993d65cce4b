#include "import/vss_import_snapshot.h"

#include "common/exc/exc.h"
#include "common/logging/log.h"
#include "import/imported_volumes.h"
#include "snapshot/writer_selection.h"
#include "vssutils/async_wait.h"
#include "vssutils/backup_components.h"
#include "vssutils/cancel_callbacks.h"
#include "vssutils/writer_status.h"

#include <utility>

namespace hv {

CVssImportSnapshot::CVssImportSnapshot(const std::shared_ptr<CImportSnapshotContext>& context,
                                       const std::shared_ptr<win::win_manual_reset_event_t>& closeEvent) {
    log_info(logging::tool_logger(), "Initializing VSS content.");
    // The new object knows what the host task knew, the snapshot set included: the
    // import takes its ids from there, not from the server's list.
    VSSUtils::BackupComponentsPtr components = VSSUtils::CreateVssBackupObject(context->backupDocument);
    VSSUtils::SetVssContext(components, VSS_CTX_ALL);
    impl::SelectHyperVWriter(components);

    log_info(logging::tool_logger(), "Importing snapshots.");
    VSSUtils::AsyncPtr import = VSSUtils::ImportSnapshots(components);
    VSSUtils::CWinEventTestCancelCallback probe(closeEvent);
    // Checked while the import is still under way; a cancelled check is left to the wait below.
    VSSUtils::VerifyWriters(components, &probe, true);
    if (!VSSUtils::WaitAsyncOperation(import, &probe, "Waiting until VSS import task finishes.",
                                      "Import snapshot task has failed."))
        throw exc::runtime_exc_t("Import snapshot task has been cancelled.");

    result = EnumerateImportedVolumes(components, context);
    backupComponents = std::move(components);
}

CVssImportSnapshot::~CVssImportSnapshot() {
    try {
        VSSUtils::BackupComponentsPtr components = std::move(backupComponents);
        components.reset();
    } catch (const std::exception& e) {
        log_exception(logging::tool_logger(), "Failed to release snapshot.", e);
    }
}

} // namespace hv
