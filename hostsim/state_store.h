// The host's shared state under <host>/state: the journal of calls, the live shadow
// copies with their owners, the shadow-copy creation in progress, the backup state of
// cluster shared volumes and the record of completed backups. Every process that uses the
// host reads and writes it under one file lock.
#pragma once

#include "compat/unique_fd_posix.h"
#include "compat/win_types.h"
#include "hostsim/wide_text.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace hostsim {

struct process_identity_t {
    int pid = 0;             // 0: nobody
    std::uint64_t start = 0; // start time of the process, so that a reused pid is not taken for it
};

process_identity_t this_process();
bool is_alive(const process_identity_t& process);

struct shadow_record_t {
    unsigned number = 0;
    GUID snapshot_id{};
    GUID set_id{};
    GUID provider_id{};
    std::wstring volume_name;
    process_identity_t owner; // nobody: a transportable copy whose maker let go of it
    std::int32_t attributes = 0;
    std::int64_t created = 0; // FILETIME ticks
    std::wstring machine;
};

// The one shadow-copy creation a host allows at a time: from StartSnapshotSet until
// DoSnapshotSet has ended or the object is gone.
struct creation_record_t {
    GUID set_id{};
    process_identity_t owner;
    std::wstring since; // UTC, as people read it
};

// A cluster shared volume in backup: the jobs (snapshot sets; GUID_NULL for a caller that
// was creating none), the processes that run them, and the paths by which they prepared it.
struct csv_preparation_t {
    GUID set_id{};
    process_identity_t owner;
    std::wstring path;
};
struct csv_state_t {
    std::wstring volume_name;
    std::vector<csv_preparation_t> preparations;
};

struct component_result_t {
    std::wstring name;
    std::wstring result; // succeeded, failed, not-reported
};

class state_store_t {
public:
    explicit state_store_t(std::filesystem::path host_dir);
    ~state_store_t();
    state_store_t(const state_store_t&) = delete;
    state_store_t& operator=(const state_store_t&) = delete;

    const std::filesystem::path& host_dir() const { return host_dir_; }
    std::filesystem::path shadow_dir(unsigned number) const;

    // One line: process id, op, arguments, tab-separated.
    void journal(std::string_view op, const std::vector<std::wstring>& args = {}) const;

    // The file lock over the state, held while the descriptor lives; the accessors below
    // expect it to be held.
    [[nodiscard]] compat::unique_fd_t lock() const;

    std::vector<shadow_record_t> shadows() const;
    void save_shadows(const std::vector<shadow_record_t>& shadows) const;
    unsigned allocate_shadow_number() const;
    void remove_shadow_data(unsigned number) const;

    std::vector<creation_record_t> creations() const;
    void save_creations(const std::vector<creation_record_t>& creations) const;

    std::vector<csv_state_t> csv_volumes() const;
    void save_csv_volumes(const std::vector<csv_state_t>& volumes) const;

    void record_backup(const GUID& set_id, const std::vector<component_result_t>& components) const;

    // What a process finds when it opens the host: copies and creations whose owner died
    // go, as VSS does for a requester that vanished. Takes the lock itself.
    void remove_abandoned_shadows() const;
    // The creations whose owner died go; the caller holds the lock.
    std::vector<creation_record_t> live_creations() const;

private:
    void remove_leftovers(const std::vector<shadow_record_t>& live) const;

    std::filesystem::path host_dir_;
    std::filesystem::path state_dir_;
    compat::unique_fd_t journal_fd_;
};

std::wstring utc_now_text();
// Now in FILETIME ticks, as shadow copies are stamped.
std::int64_t filetime_now();

std::vector<std::wstring> read_lines(const std::filesystem::path& file);
inline std::vector<std::wstring> split_fields(const std::wstring& line) {
    return split_text(line, L'\t', true);
}

} // namespace hostsim
