// What a simulated host is, as host.xml describes it: volumes, shares, providers, writers
// with their components, registry, environment, and the faults to inject.
#pragma once

#include "compat/vss_types.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace hostsim {

struct volume_t {
    std::wstring name;                // \\?\Volume{...}\ .
    std::filesystem::path dir;        // absolute
    std::vector<std::wstring> mounts; // each with a trailing backslash, first reported first
    bool csv = false;
};

struct share_t {
    std::wstring unc;  // \\server\share\ .
    std::wstring root; // what the share's root path is reported as
    std::filesystem::path dir;
};

enum class provider_kind { system, software, hardware, fileshare, csv };

struct provider_t {
    GUID id{};
    provider_kind kind = provider_kind::system;
    bool explicit_volumes = false;     // a volumes attribute was given
    bool all_volumes = false;          // volumes="*"
    std::vector<std::wstring> volumes; // volume names, share roots or mount points
    bool transportable = false;
    unsigned refuse = 0; // the first answers of IsVolumeSupported that are "no"
};

struct file_spec_t {
    std::wstring path;
    std::wstring spec;
    bool recursive = false;
};

struct component_t {
    std::wstring name;
    std::wstring caption;
    VSS_COMPONENT_TYPE type = VSS_CT_FILEGROUP;
    std::optional<std::wstring> logical_path; // absent: none
    std::vector<file_spec_t> files;
};

struct writer_t {
    GUID id{};
    GUID instance{};
    std::wstring name;
    VSS_USAGE_TYPE usage = VSS_UT_USERDATA;
    VSS_SOURCE_TYPE source = VSS_ST_OTHER;
    std::vector<component_t> components;
};

struct fault_t {
    std::string op;
    std::optional<HRESULT> hr;
    std::optional<std::uint32_t> err;
    std::optional<HRESULT> status;
    unsigned delay_ms = 0;
    unsigned nth = 0; // 0: every call
    std::wstring match;
};

enum class writer_phase { identify, prepare, snapshot, complete };

struct writer_fault_t {
    GUID writer{};
    writer_phase at = writer_phase::identify;
    VSS_WRITER_STATE state = VSS_WS_UNKNOWN;
    HRESULT hr = S_OK;
};

struct registry_entry_t {
    std::wstring name;
    std::uint32_t type = 1; // REG_SZ 1, REG_DWORD 4
    std::wstring text;
    std::uint32_t number = 0;
};

struct registry_key_t {
    std::wstring path;
    std::vector<registry_entry_t> values;
};

struct host_model_t {
    std::wstring name;
    std::vector<std::pair<std::wstring, std::wstring>> environment;
    std::vector<registry_key_t> registry;
    std::vector<volume_t> volumes;
    std::vector<share_t> shares;
    std::vector<provider_t> providers;
    std::vector<writer_t> writers;
    std::vector<fault_t> faults;
    std::vector<writer_fault_t> writer_faults;
};

// The model, or the complaint that makes the file unusable (with the file's name in it).
std::variant<host_model_t, std::string> load_host_model(const std::filesystem::path& host_dir);

} // namespace hostsim
