#include "common/win/file_os.h"

namespace win::detail {

DWORD os_open_file(const std::wstring& path, HANDLE& handle) {
    handle = ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    return handle == INVALID_HANDLE_VALUE ? ::GetLastError() : ERROR_SUCCESS;
}

DWORD os_write_file(HANDLE file, const void* buffer, DWORD length, DWORD& written) {
    written = 0;
    return ::WriteFile(file, buffer, length, &written, nullptr) ? ERROR_SUCCESS : ::GetLastError();
}

DWORD os_read_file(HANDLE file, void* buffer, DWORD length, DWORD& read) {
    read = 0;
    return ::ReadFile(file, buffer, length, &read, nullptr) ? ERROR_SUCCESS : ::GetLastError();
}

DWORD os_file_size(HANDLE file, std::uint64_t& size) {
    LARGE_INTEGER value{};
    if (!::GetFileSizeEx(file, &value))
        return ::GetLastError();
    size = static_cast<std::uint64_t>(value.QuadPart);
    return ERROR_SUCCESS;
}

DWORD os_set_file_pointer(HANDLE file, std::int64_t offset, DWORD method, std::uint64_t& position) {
    LARGE_INTEGER distance{};
    distance.QuadPart = offset;
    LARGE_INTEGER result{};
    if (!::SetFilePointerEx(file, distance, &result, method))
        return ::GetLastError();
    position = static_cast<std::uint64_t>(result.QuadPart);
    return ERROR_SUCCESS;
}

DWORD os_set_end_of_file(HANDLE file) {
    return ::SetEndOfFile(file) ? ERROR_SUCCESS : ::GetLastError();
}

DWORD os_flush_file(HANDLE file) {
    return ::FlushFileBuffers(file) ? ERROR_SUCCESS : ::GetLastError();
}

} // namespace win::detail
