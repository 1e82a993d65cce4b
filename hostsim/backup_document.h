// The backup components document of the simulator (SaveAsXML, InitializeForBackup): what
// a new object needs to take over a backup, including its snapshot set and where the
// data of each shadow copy lies, so that a process on another host can import the set.
#pragma once

#include "compat/vss_types.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace hostsim {

struct selected_component_t {
    GUID instance{};
    GUID writer{};
    VSS_COMPONENT_TYPE type = VSS_CT_UNDEFINED;
    std::wstring logical_path;
    std::wstring name;
    std::optional<bool> succeeded; // not reported until SetBackupSucceeded
};

struct set_snapshot_t {
    GUID snapshot_id{};
    GUID provider_id{};
    std::wstring volume_name;
    unsigned number = 0; // the shadow copy's number on the host that made it
    std::int32_t attributes = 0;
    std::int64_t created = 0;
    std::wstring machine;
};

struct backup_document_t {
    std::filesystem::path host_dir; // the state of the host that made the snapshots
    std::wstring machine;
    LONG context = 0;
    bool writers_restricted = false;
    std::vector<GUID> enabled_writers;
    bool backup_state_set = false;
    bool select_components = false;
    bool bootable_system_state = false;
    VSS_BACKUP_TYPE backup_type = VSS_BT_UNDEFINED;
    bool partial_file_support = false;
    std::vector<selected_component_t> components;
    std::optional<GUID> set_id;
    std::vector<set_snapshot_t> snapshots;
};

std::wstring save_backup_document(const backup_document_t& document);
// Nothing for a text that isn't such a document.
std::optional<backup_document_t> load_backup_document(const std::wstring& text);

} // namespace hostsim
