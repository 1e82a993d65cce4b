#include "snapshot/provider_choice.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "spec/hv_backup_spec.h"

namespace impl {

const GUID SystemProviderId = {0xb5946137, 0x7b9f, 0x4925, {0xaf, 0x80, 0x51, 0xab, 0xd6, 0x0b, 0x20, 0xd5}};
const GUID FileShareProviderId = {
    0x89300202, 0x3cec, 0x4981, {0x91, 0x71, 0x19, 0xf5, 0x95, 0x59, 0xe0, 0xf2}};
const GUID CsvProviderId = {0x400a2ff4, 0x5eb1, 0x44b0, {0x8a, 0x05, 0x1f, 0xca, 0xc0, 0xbc, 0xf9, 0xff}};

namespace {

// The fixed providers, whose id in the specification doesn't count.
struct fixed_provider_t {
    std::uint32_t type;
    const GUID& id;
    const char* line;
};

const fixed_provider_t fixed_providers[] = {
    {spec::HV_PROVIDER_TYPE_SYSTEM, SystemProviderId, "System provider will be used for volume [%1]."},
    {spec::HV_PROVIDER_TYPE_FILESHARE, FileShareProviderId,
     "File share provider will be used for the volume [%1]."},
    {spec::HV_PROVIDER_TYPE_CSV, CsvProviderId, "CSV provider will be used for the volume [%1]."},
};

GUID ProviderOf(const CVolVssProviderInfo& provider, const std::string& mountPoint) {
    const logger_t& log = logging::tool_logger();
    if (provider.providerType == spec::HV_PROVIDER_TYPE_UNKNOWN) {
        log_info(log, "Snapshot provider is not specified for volume [%1]. Default one will be used.",
                 mountPoint);
        return GUID_NULL;
    }
    for (const fixed_provider_t& fixed : fixed_providers)
        if (provider.providerType == fixed.type) {
            log_info(log, fixed.line, mountPoint);
            return fixed.id;
        }
    const std::string id = guid_to_string(provider.providerId);
    if (provider.providerType == spec::HV_PROVIDER_TYPE_SOFTWARE)
        log_info(log, "Software provider [%1] will be used for volume [%2].", id, mountPoint);
    else
        log_info(log, "Hardware provider [%1] will be used for the volume [%2].", id, mountPoint);
    return provider.providerId;
}

} // namespace

GUID ChooseProvider(const CHvBackupSpec& specification, const std::wstring& mountPoint) {
    const std::string mountPointText = to_ansi_nothrow(mountPoint);
    return exc::traced(
        "VSS provider for volume [%1] is not specified in the snapshot request.", mountPointText,
        [&] { return ProviderOf(*specification.FindVolumeProvider(mountPoint), mountPointText); });
}

} // namespace impl
