// The platform's file-system calls under the portable folder, search and file
// helpers. Each returns 0 or the Win32 error of the call.
#pragma once

#include "common/win/file_search.h"

#include <memory>
#include <string>

namespace win::detail {

// One search: FindFirstFileW, FindNextFileW, FindClose.
class os_search_t {
public:
    os_search_t();
    ~os_search_t();
    os_search_t(const os_search_t&) = delete;
    os_search_t& operator=(const os_search_t&) = delete;

    DWORD first(const std::wstring& pattern, find_data_t& entry);
    DWORD next(find_data_t& entry);
    void close() noexcept;

private:
    struct state_t;
    std::unique_ptr<state_t> state_;
};

// FindFirstFileW with one retry, on errors 2 and 3, of the path narrowed and
// read back as UTF-8. The error reported is the first one, or 3 where the
// first was 3.
DWORD find_first_with_retry(const std::wstring& path, os_search_t& search, find_data_t& entry);

// PathFileExistsW.
bool os_path_file_exists(const std::wstring& path);
// CreateDirectoryW.
DWORD os_create_directory(const std::wstring& path);

} // namespace win::detail
