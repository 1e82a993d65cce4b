// The backup specification: what one snapshot task is to do, parsed from the
// HVBackupSpec document. Immutable once built; share it freely between threads.
#pragma once

#include "compat/win_types.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace spec {

// Provider types: 0..4 as the platform's VSS_PROVIDER_TYPE, 5 our own.
enum : std::uint32_t {
    HV_PROVIDER_TYPE_UNKNOWN = 0,
    HV_PROVIDER_TYPE_SYSTEM = 1,
    HV_PROVIDER_TYPE_SOFTWARE = 2,
    HV_PROVIDER_TYPE_HARDWARE = 3,
    HV_PROVIDER_TYPE_FILESHARE = 4,
    HV_PROVIDER_TYPE_CSV = 5,
};

// The text the log shows for a provider type; an unknown one as its number.
std::string ProviderTypeToString(std::uint32_t type);

// The path equality of mount points and files: same number of components, each
// equal without regard to ASCII case; a trailing separator makes no difference.
bool SamePath(const std::wstring& a, const std::wstring& b);

} // namespace spec

class CHvVmBackupSpec {
public:
    CHvVmBackupSpec(std::string vmId, std::vector<std::string> excludedDisks,
                    std::vector<std::string> auxFiles, bool crashConsistent);

    const std::string vmId; // as given, not parsed as a GUID
    const std::vector<std::string> excludedDisks;
    const std::vector<std::string> auxFiles;
    const bool crashConsistent;
};

class CVolVssProviderInfo {
public:
    CVolVssProviderInfo() = default;
    CVolVssProviderInfo(const GUID& providerId, std::uint32_t providerType, std::wstring mountPoint);

    const GUID providerId = GUID_NULL;
    const std::uint32_t providerType = spec::HV_PROVIDER_TYPE_UNKNOWN;
    const std::wstring mountPoint;
};

class COffhostInfo {
public:
    static constexpr std::int32_t NotSpecified = -1;
    static constexpr std::int32_t Disabled = 0;
    static constexpr std::int32_t Enabled = 1;

    COffhostInfo() = default;
    explicit COffhostInfo(std::int32_t mode_) : mode(mode_) {}

    const std::int32_t mode = NotSpecified;
};

class CHvBackupSpec {
public:
    typedef std::shared_ptr<CHvVmBackupSpec> vm_ptr_t;
    typedef std::shared_ptr<CVolVssProviderInfo> provider_ptr_t;

    // Parses the whole document (narrow text) or throws; nothing half-built survives.
    explicit CHvBackupSpec(const std::string& document);

    // The provider whose mount point is the path (same components, ASCII case
    // ignored), else the default provider. Never empty.
    provider_ptr_t FindVolumeProvider(const std::wstring& path) const;
    // Writes the parsed specification to the tool's log; never fails.
    void DumpToLog() const;

    const std::vector<vm_ptr_t> vms;                   // document order
    const provider_ptr_t defaultProvider;              // never empty
    const std::vector<provider_ptr_t> volumeProviders; // document order
    const std::shared_ptr<COffhostInfo> offhost;       // never empty
    const bool useCsvVssWriter;

private:
    struct parsed_t;
    static parsed_t Parse(const std::string& document);
    explicit CHvBackupSpec(parsed_t&& parsed);
};
