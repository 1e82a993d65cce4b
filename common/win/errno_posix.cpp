// Each errno that the file, socket and thread calls of this platform return stands for the
// Win32 error that Windows gives in the same situation, so that the texts and the "not there"
// rule of errors 2 and 3 read the same on both platforms. Every code given here has its text in
// the POSIX table of system messages.
#include "common/win/errno_posix.h"

#include <cerrno>

namespace win {

namespace {

constexpr DWORD error_invalid_function = 1;
constexpr DWORD error_too_many_open_files = 4;
constexpr DWORD error_not_enough_memory = 8;
constexpr DWORD error_not_same_device = 17;
constexpr DWORD error_write_protect = 19;
constexpr DWORD error_not_ready = 21;
constexpr DWORD error_gen_failure = 31;
constexpr DWORD error_call_not_implemented = 120;
constexpr DWORD error_disk_full = 112;
constexpr DWORD error_dir_not_empty = 145;
constexpr DWORD error_busy = 170;
constexpr DWORD error_filename_exced_range = 206;
constexpr DWORD error_file_too_large = 223;
constexpr DWORD error_pipe_not_connected = 233;
constexpr DWORD error_io_device = 1117;
constexpr DWORD error_too_many_links = 1142;
constexpr DWORD error_timeout = 1460;
constexpr DWORD error_cant_resolve_filename = 1921;

} // namespace

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
        return error_cant_resolve_filename;
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
        return error_busy;
    case EINVAL:
    case EOVERFLOW:
        return ERROR_INVALID_PARAMETER;
    case ENOMEM:
    case ENOBUFS:
        return error_not_enough_memory;
    case EMFILE:
    case ENFILE:
        return error_too_many_open_files;
    case ENOSPC:
    case EDQUOT: // Windows reports a full quota as a full disk
        return error_disk_full;
    case EFBIG:
        return error_file_too_large;
    case EROFS:
        return error_write_protect;
    case ENAMETOOLONG:
        return error_filename_exced_range;
    case ENOTEMPTY:
        return error_dir_not_empty;
    case EXDEV:
        return error_not_same_device;
    case EMLINK:
        return error_too_many_links;
    case EIO:
        return error_io_device;
    case ENXIO:
    case ENODEV:
    case ENOMEDIUM:
        return error_not_ready;
    case EPIPE:
    case ECONNRESET:
        return ERROR_BROKEN_PIPE;
    case ENOTCONN:
        return error_pipe_not_connected;
    case EADDRINUSE:
        return ERROR_PIPE_BUSY;
    case ETIMEDOUT:
        return error_timeout;
    case EINTR:
        return ERROR_OPERATION_ABORTED;
    case ENOSYS:
        return error_call_not_implemented;
    case EOPNOTSUPP:
        return ERROR_NOT_SUPPORTED;
    case ESPIPE:
        return error_invalid_function;
    default:
        return error_gen_failure;
    }
}

} // namespace win
