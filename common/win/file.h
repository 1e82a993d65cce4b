// An open file and the operations on it; each failure is an
// exc::win_sys_exc_t naming the file.
#pragma once

#include "common/win/handle.h"

#include <cstdint>
#include <memory>
#include <string>

namespace win {

class win_impersonation_session_t;

enum class seek_method_t : DWORD {
    begin = 0,   // FILE_BEGIN
    current = 1, // FILE_CURRENT
    end = 2,     // FILE_END
};

struct win_file_t {
    shared_handle_t handle;
    std::wstring path;
    // The impersonation scope that was active at opening, kept while the file is open.
    std::shared_ptr<win_impersonation_session_t> impersonation;
};
using shared_file_t = std::shared_ptr<win_file_t>;

// CreateFileW for reading and writing, others may read, opened or created.
// Throws exc::win_sys_exc_t "Failed to create or open file [%1]." with the
// code (32 and 33 when another writer holds the file).
shared_file_t file_open(const std::wstring& path);

DWORD file_write(win_file_t& file, const void* buffer, DWORD length);
DWORD file_read(win_file_t& file, void* buffer, DWORD length);
std::uint64_t file_size(win_file_t& file);
std::uint64_t file_seek(win_file_t& file, std::int64_t offset, seek_method_t method);
void file_set_size(win_file_t& file, std::uint64_t size);
void file_flush(win_file_t& file);

// The scope provider for file_open (impersonation installs it); without one
// files open under the thread's own identity.
using impersonation_provider_t = std::shared_ptr<win_impersonation_session_t> (*)(const std::wstring& path);
void set_impersonation_provider(impersonation_provider_t provider) noexcept;

} // namespace win
