#include "common/win/errno_posix.h"

#include <cerrno>

namespace win {

DWORD win32_error_from_errno(int error) noexcept {
    switch (error) {
    case 0:
        return ERROR_SUCCESS;
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
    case ELOOP:
        return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EISDIR:
        return ERROR_ACCESS_DENIED;
    case EBADF:
        return ERROR_INVALID_HANDLE;
    case EEXIST:
        return ERROR_ALREADY_EXISTS;
    case EWOULDBLOCK:
        return ERROR_SHARING_VIOLATION;
    case EINVAL:
        return ERROR_INVALID_PARAMETER;
    case ENOMEM:
        return 8; // ERROR_NOT_ENOUGH_MEMORY
    case EMFILE:
    case ENFILE:
        return 4; // ERROR_TOO_MANY_OPEN_FILES
    case ENOSPC:
        return 112; // ERROR_DISK_FULL
    case EROFS:
        return 19; // ERROR_WRITE_PROTECT
    case ENAMETOOLONG:
        return 206; // ERROR_FILENAME_EXCED_RANGE
    case ENOTEMPTY:
        return 145; // ERROR_DIR_NOT_EMPTY
    case EIO:
        return 1117; // ERROR_IO_DEVICE
    default:
        return 31; // ERROR_GEN_FAILURE
    }
}

} // namespace win
