#include "common/crash/dump_file_os.h"

#include "common/win/errno_posix.h"
#include "common/win/local_path.h"
#include "hostsim/host_access.h"

#include <cerrno>

#include <unistd.h>

namespace crash::detail {

DWORD delete_dump_file(const std::wstring& path) {
    if (auto fault = hostsim::win32_call("DeleteFileW", path))
        return *fault;
    const auto local = win::local_path(path);
    if (!local)
        return ERROR_PATH_NOT_FOUND;
    if (::unlink(local->c_str()) != 0)
        return win::win32_error_from_errno(errno);
    return ERROR_SUCCESS;
}

} // namespace crash::detail
