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

// The operations that write, read, seek, set the size and flush tell an observer
// (the performance log installs one) their code before they start.
namespace file_op {
inline constexpr std::uint32_t write = 0x100;
inline constexpr std::uint32_t read = 0x101;
inline constexpr std::uint32_t seek = 0x102;
inline constexpr std::uint32_t set_size = 0x103;
inline constexpr std::uint32_t flush = 0x104;
} // namespace file_op
using file_operation_observer_t = void (*)(std::uint32_t code) noexcept;
void set_file_operation_observer(file_operation_observer_t observer) noexcept;

} // namespace win
