#include "common/crash/dump_file_os.h"
#include "common/crash/dump_gens_win32.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/handle.h"

namespace crash::detail {

DWORD delete_dump_file(const std::wstring& path) {
    return ::DeleteFileW(path.c_str()) ? ERROR_SUCCESS : ::GetLastError();
}

} // namespace crash::detail

namespace crash::win32 {

bool create_new_dump_file(const std::wstring& path, DWORD access, const char* failure,
                          win::win_handle_t& file) {
    const HANDLE created =
        ::CreateFileW(path.c_str(), access, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    const DWORD error = ::GetLastError();
    file = win::win_handle_t(created);
    if (file.valid())
        return true;
    if (error == ERROR_FILE_EXISTS)
        return false;
    throw exc::win_sys_exc_t(failure, to_ansi_nothrow(path), error);
}

} // namespace crash::win32
