// The platform's calls on files under common/win/file.h: 0 or the Win32 error.
#pragma once

#include "compat/win_types.h"

#include <cstdint>
#include <string>

namespace win::detail {

// CreateFileW: read and write, FILE_SHARE_READ, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL.
DWORD os_open_file(const std::wstring& path, HANDLE& handle);
DWORD os_write_file(HANDLE file, const void* buffer, DWORD length, DWORD& written);
DWORD os_read_file(HANDLE file, void* buffer, DWORD length, DWORD& read);
DWORD os_file_size(HANDLE file, std::uint64_t& size);
// SetFilePointerEx; method 0, 1, 2 as FILE_BEGIN, FILE_CURRENT, FILE_END.
DWORD os_set_file_pointer(HANDLE file, std::int64_t offset, DWORD method, std::uint64_t& position);
DWORD os_set_end_of_file(HANDLE file);
DWORD os_flush_file(HANDLE file);

} // namespace win::detail
