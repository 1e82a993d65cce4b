// The backup specification (HVBackupSpec) as a backup server writes it, from a plain
// record: mirrack-client spec and the lab's sample specifications both write through it.
#pragma once

#include "compat/win_types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace client {

// Provider types as the document numbers them.
enum class provider_kind_t : std::uint32_t { unspecified = 0, system, software, hardware, fileshare, csv };

struct spec_provider_t {
    provider_kind_t kind = provider_kind_t::unspecified;
    GUID id = GUID_NULL;
    std::wstring mountPoint; // empty for the default provider
};

struct spec_vm_entry_t {
    // As the Hyper-V writer names the VM's component: the tool compares the text, braces and all.
    std::wstring id;
    bool crashConsistent = false;
    std::vector<std::wstring> excludedDisks;
    std::vector<std::wstring> auxFiles;
};

struct backup_spec_t {
    std::vector<spec_vm_entry_t> vms;
    // Absent: the tool's default, no provider named.
    std::optional<spec_provider_t> defaultProvider;
    std::vector<spec_provider_t> volumeProviders;
    bool offhost = false;
    bool useCsvWriter = false;
};

// The document as UTF-8 text with its XML declaration.
std::string WriteBackupSpec(const backup_spec_t& spec);

} // namespace client
