#include "common/crash/dump_file_os.h"

namespace crash::detail {

DWORD delete_dump_file(const std::wstring& path) {
    return ::DeleteFileW(path.c_str()) ? ERROR_SUCCESS : ::GetLastError();
}

} // namespace crash::detail
