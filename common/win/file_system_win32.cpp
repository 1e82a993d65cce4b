#include "common/win/file_system_os.h"
#include "common/win/handle.h"

namespace win::detail {

namespace {

struct find_handle_traits {
    using pointer = HANDLE;
    static pointer invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static bool is_valid(pointer h) noexcept { return h != INVALID_HANDLE_VALUE && h != nullptr; }
    static void close(pointer h) noexcept { ::FindClose(h); }
};
using unique_find_handle_t = unique_any_t<find_handle_traits>;

void fill(const WIN32_FIND_DATAW& data, find_data_t& entry) {
    entry.name = data.cFileName;
    entry.attributes = data.dwFileAttributes;
    entry.size = (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
    entry.last_write_time = (static_cast<std::uint64_t>(data.ftLastWriteTime.dwHighDateTime) << 32) |
                            data.ftLastWriteTime.dwLowDateTime;
}

} // namespace

struct os_search_t::state_t {
    unique_find_handle_t find;
};

os_search_t::os_search_t() : state_(std::make_unique<state_t>()) {}
os_search_t::~os_search_t() = default;

DWORD os_search_t::first(const std::wstring& pattern, find_data_t& entry) {
    WIN32_FIND_DATAW data{};
    state_->find.reset(::FindFirstFileW(pattern.c_str(), &data));
    if (!state_->find.valid())
        return ::GetLastError();
    fill(data, entry);
    return ERROR_SUCCESS;
}

DWORD os_search_t::next(find_data_t& entry) {
    WIN32_FIND_DATAW data{};
    if (!::FindNextFileW(state_->find.get(), &data))
        return ::GetLastError();
    fill(data, entry);
    return ERROR_SUCCESS;
}

void os_search_t::close() noexcept {
    state_->find.reset();
}

// What PathFileExistsW answers, without linking the shell's helper library.
bool os_path_file_exists(const std::wstring& path) {
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

DWORD os_create_directory(const std::wstring& path) {
    return ::CreateDirectoryW(path.c_str(), nullptr) ? ERROR_SUCCESS : ::GetLastError();
}

} // namespace win::detail
