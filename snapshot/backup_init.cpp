#include "snapshot/vss_snapshot.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "snapshot/writer_selection.h"
#include "spec/hv_backup_spec.h"
#include "vssutils/backup_components.h"
#include "vssutils/cancel_callbacks.h"

namespace impl {

void CVssSnapshot::InitBackup() {
    exc::traced("Failed to initialize VSS backup.", [&] {
        log_scope_t scope(logging::tool_logger(), "Initializing VSS backup.");
        backupComponents = VSSUtils::CreateBackupComponents();
        VSSUtils::InitBackupComponents(backupComponents, std::wstring());
        SelectHyperVWriter(backupComponents);
        if (specification->useCsvVssWriter)
            SelectCsvWriter(backupComponents);
        VSSUtils::CWinEventTestCancelCallback probe(cancelEvent);
        CollectMetadata(probe);
        if (IsTransportable())
            EnableTransportable();
        scope.ok();
    });
}

void CVssSnapshot::CollectMetadata(VSSUtils::ITestCancelCallback& probe) {
    exc::traced("Failed to collect Hyper-V writer metadata.", [&] {
        log_scope_t scope(logging::tool_logger(), "Collecting Hyper-V writer metadata.");
        VSSUtils::CVssMetaCache cache(HyperVWriterId);
        VSSUtils::EnumWritersMetadata(backupComponents, cache, &probe);
        hyperVWriterMetadata = cache.Get(HyperVWriterId);
        scope.ok();
    });
}

void CVssSnapshot::EnableTransportable() {
    exc::traced("Failed to enable transportable shadow copy.", [&] {
        log_scope_t scope(logging::tool_logger(), "Enabling transportable shadow copy");
        VSSUtils::SetVssContext(backupComponents, VSS_VOLSNAP_ATTR_TRANSPORTABLE);
        scope.ok();
    });
}

} // namespace impl
