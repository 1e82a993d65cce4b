// Wild-card file search (FindFirstFileW / FindNextFileW / FindClose) with the
// Windows mask rules: '*' any run, '?' one character, no regard to case, and the
// DOS forms around dots ("*.*" matches all, "*." the names without extension).
#pragma once

#include "compat/win_types.h"

#include <cstdint>
#include <memory>
#include <string>

namespace win {

namespace detail {
class os_search_t;
}

// What a search tells about one entry (from WIN32_FIND_DATAW).
struct find_data_t {
    std::wstring name;
    DWORD attributes = 0;
    std::uint64_t size = 0;
    std::uint64_t last_write_time = 0; // FILETIME as a 64-bit count
    bool is_directory() const { return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
};

// Does the name match the mask?
bool mask_matches(const std::wstring& mask, const std::wstring& name);

inline constexpr const char* file_search_failed_text = "File search operation has failed. Search mask: [%1].";

class win_file_search_t {
public:
    // An empty search.
    win_file_search_t();
    // Starts the search on "folder\mask". "Not there" (errors 2, 3) gives an
    // empty search without failure; any other failure throws exc::win_sys_exc_t
    // with file_search_failed_text.
    explicit win_file_search_t(const std::wstring& mask);
    ~win_file_search_t();
    win_file_search_t(win_file_search_t&&) noexcept;
    win_file_search_t& operator=(win_file_search_t&&) noexcept;

    // Is there a current entry?
    bool found() const { return found_; }
    const find_data_t& current() const { return current_; }
    // Moves to the next entry; false at the end (the search is then closed).
    // Throws exc::win_sys_exc_t "File search operation has failed. Search
    // mask: [%1]." for a failure other than the normal end.
    bool next();
    void close() noexcept;
    const std::wstring& mask() const { return mask_; }

private:
    std::wstring mask_;
    std::unique_ptr<detail::os_search_t> search_;
    find_data_t current_;
    bool found_ = false;
};

} // namespace win
