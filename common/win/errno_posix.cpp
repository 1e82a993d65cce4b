// Each errno that the file, socket and thread calls of this platform return stands for the
// Win32 error that Windows gives in the same situation, so that the texts and the "not there"
// rule of errors 2 and 3 read the same on both platforms. Every code given here has its text in
// the POSIX table of system messages.
#include "common/win/errno_posix.h"

#include <cerrno>

namespace win {

namespace {} // namespace

DWORD win32_error_from_errno(int error) noexcept {
    switch (error) {
    case 0:
        return ERROR_SUCCESS;
    case ENOENT:
    case ECONNREFUSED: // a socket without a listener: the pipe is not there
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case ELOOP:
        return ERROR_CANT_RESOLVE_FILENAME;
    case EACCES:
    case EPERM:
    case EISDIR:
        return ERROR_ACCESS_DENIED;
    case EBADF:
        return ERROR_INVALID_HANDLE;
    case EEXIST:
        return ERROR_ALREADY_EXISTS;
    case EWOULDBLOCK:
    case ETXTBSY:
        return ERROR_SHARING_VIOLATION;
    case EBUSY:
        return ERROR_BUSY;
    case EINVAL:
    case EOVERFLOW:
        return ERROR_INVALID_PARAMETER;
    case ENOMEM:
    case ENOBUFS:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case ENOSPC:
    case EDQUOT: // Windows reports a full quota as a full disk
        return ERROR_DISK_FULL;
    case EFBIG:
        return ERROR_FILE_TOO_LARGE;
    case EROFS:
        return ERROR_WRITE_PROTECT;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    case ENOTEMPTY:
        return ERROR_DIR_NOT_EMPTY;
    case EXDEV:
        return ERROR_NOT_SAME_DEVICE;
    case EMLINK:
        return ERROR_TOO_MANY_LINKS;
    case EIO:
        return ERROR_IO_DEVICE;
    case ENXIO:
    case ENODEV:
    case ENOMEDIUM:
        return ERROR_NOT_READY;
    case EPIPE:
    case ECONNRESET:
        return ERROR_BROKEN_PIPE;
    case ENOTCONN:
        return ERROR_PIPE_NOT_CONNECTED;
    case EADDRINUSE:
        return ERROR_PIPE_BUSY;
    case ETIMEDOUT:
        return ERROR_TIMEOUT;
    case EINTR:
        return ERROR_OPERATION_ABORTED;
    case ENOSYS:
        return ERROR_CALL_NOT_IMPLEMENTED;
    case EOPNOTSUPP:
        return ERROR_NOT_SUPPORTED;
    case ESPIPE:
        return ERROR_INVALID_FUNCTION;
    default:
        return ERROR_GEN_FAILURE;
    }
}

} // namespace win
