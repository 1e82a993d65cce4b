// The parsed specification as the log shows it. Excluded disks and auxiliary
// files are left out on purpose.
#include "common/format/format.h"
#include "common/logging/log.h"
#include "spec/hv_backup_spec.h"

namespace {

void dump_provider(const logger_t& log, const CVolVssProviderInfo& provider) {
    log_info(log, "Provider ID: '%1'. Type: '%2'. Mount point: '%3'.",
             to_ansi_nothrow(guid_to_wstring(provider.providerId)),
             spec::ProviderTypeToString(provider.providerType), to_ansi_nothrow(provider.mountPoint));
}

void dump_vms(const logger_t& log, const std::vector<CHvBackupSpec::vm_ptr_t>& vms) {
    if (vms.size() == 1) {
        log_info(log, "VmID: '%1', is crash consistent: '%2'.", vms.front()->vmId,
                 bool_to_string(vms.front()->crashConsistent));
        return;
    }
    log_info(log, "VMs to process:");
    for (const CHvBackupSpec::vm_ptr_t& vm : vms)
        log_info(log, "-   VmID: '%1', is crash consistent: '%2'.", vm->vmId,
                 bool_to_string(vm->crashConsistent));
}

void dump_offhost(const logger_t& log, const std::shared_ptr<COffhostInfo>& offhost) {
    if (!offhost) {
        log_info(log, "Off-host settings are not specified.");
        return;
    }
    switch (offhost->mode) {
    case COffhostInfo::NotSpecified:
        log_info(log, "Offhost settings are not specified.");
        break;
    case COffhostInfo::Disabled:
        log_info(log, "Offhost backup is disabled.");
        break;
    case COffhostInfo::Enabled:
        log_info(log, "Off-host backup is enabled.");
        break;
    default:
        log_info(log, "Offhost mode: '%1'.", num_to_string(offhost->mode));
        break;
    }
}

} // namespace

namespace spec {

std::string ProviderTypeToString(std::uint32_t type) {
    switch (type) {
    case HV_PROVIDER_TYPE_UNKNOWN:
        return "Not specified";
    case HV_PROVIDER_TYPE_SYSTEM:
        return "System";
    case HV_PROVIDER_TYPE_SOFTWARE:
        return "software";
    case HV_PROVIDER_TYPE_HARDWARE:
        return "hardware";
    case HV_PROVIDER_TYPE_FILESHARE:
        return "fileshare";
    case HV_PROVIDER_TYPE_CSV:
        return "csv";
    default:
        return num_to_string(static_cast<std::uint64_t>(type));
    }
}

} // namespace spec

void CHvBackupSpec::DumpToLog() const {
    const logger_t& log = logging::tool_logger();
    dump_vms(log, vms);
    log_info(log, "Default vss provider:");
    dump_provider(log, *defaultProvider);
    log_info(log, "Providers for volumes:");
    for (const provider_ptr_t& provider : volumeProviders)
        dump_provider(log, *provider);
    dump_offhost(log, offhost);
    log_info(log, "Use CSV Vss Writer: '%1'.", bool_to_string(useCsvVssWriter));
}
