// The backup specification document, narrow text as the tool receives it, and the
// lookups and the log dump a snapshot task makes of it.
#include "fuzz/fuzz_input.h"
#include "spec/hv_backup_spec.h"

#include <exception>
#include <optional>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string document(fuzz::bytes_of(data, size));
    std::optional<CHvBackupSpec> spec;
    try {
        spec.emplace(document);
    } catch (const std::exception&) {
        return 0;
    }
    fuzz::require(spec->defaultProvider && spec->offhost,
                  "default provider and off-host settings always exist");
    for (const CHvBackupSpec::vm_ptr_t& vm : spec->vms)
        fuzz::require(vm != nullptr, "every VM entry exists");
    for (const CHvBackupSpec::provider_ptr_t& provider : spec->volumeProviders) {
        fuzz::require(provider != nullptr, "every volume provider exists");
        const CHvBackupSpec::provider_ptr_t found = spec->FindVolumeProvider(provider->mountPoint);
        fuzz::require(found && spec::SamePath(found->mountPoint, provider->mountPoint),
                      "a mount point finds a provider of that mount point");
    }
    fuzz::require(spec->FindVolumeProvider(L"") != nullptr, "every path finds a provider");
    spec->DumpToLog();
    return 0;
}
