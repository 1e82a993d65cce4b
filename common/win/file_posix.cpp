#include "common/win/errno_posix.h"
#include "common/win/file_os.h"
#include "common/win/kernel_object_posix.h"
#include "common/win/local_path.h"
#include "compat/unique_fd_posix.h"
#include "hostsim/host_access.h"

#include <cerrno>
#include <string>
#include <typeinfo>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace win::detail {

namespace {

class file_object_t final : public posix::kernel_object_t {
public:
    file_object_t(compat::unique_fd_t fd, std::wstring path) : fd_(std::move(fd)), path_(std::move(path)) {}
    int fd() const { return fd_.get(); }
    // As it was opened: what a fault of the simulated host matches.
    const std::wstring& path() const { return path_; }

private:
    ~file_object_t() override = default;
    compat::unique_fd_t fd_;
    std::wstring path_;
};

// Asked on every write of the log: the exact type is one comparison, where a cast that walks the
// hierarchy costs as much as the rest of the write's own work.
inline file_object_t* file_of(HANDLE handle) {
    posix::kernel_object_t* object = posix::from_handle(handle);
    if (object == nullptr || typeid(*object) != typeid(file_object_t))
        return nullptr;
    return static_cast<file_object_t*>(object);
}

inline int fd_of(HANDLE handle) {
    const file_object_t* file = file_of(handle);
    return file != nullptr ? file->fd() : -1;
}

DWORD last_errno_error() {
    return win32_error_from_errno(errno);
}

} // namespace

DWORD os_open_file(const std::wstring& path, HANDLE& handle) {
    if (auto fault = hostsim::win32_call("CreateFileW", path))
        return *fault;
    const auto local = local_path(path);
    if (!local)
        return ERROR_PATH_NOT_FOUND;
    compat::unique_fd_t fd(::open(local->c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    if (!fd)
        return errno == ENOENT ? ERROR_PATH_NOT_FOUND : last_errno_error();
    // Others may read; a second writer is kept out, as the share mode does.
    if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? ERROR_SHARING_VIOLATION : last_errno_error();
    handle = posix::to_handle(new file_object_t(std::move(fd), path));
    return ERROR_SUCCESS;
}

DWORD os_write_file(HANDLE file, const void* buffer, DWORD length, DWORD& written) {
    const int fd = fd_of(file);
    if (fd < 0)
        return ERROR_INVALID_HANDLE;
    written = 0;
    const char* data = static_cast<const char*>(buffer);
    while (written < length) {
        const ssize_t n = ::write(fd, data + written, length - written);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return last_errno_error();
        }
        written += static_cast<DWORD>(n);
    }
    return ERROR_SUCCESS;
}

// Only a log's rotation reads: asking the host on each read costs nothing that counts.
DWORD os_read_file(HANDLE file, void* buffer, DWORD length, DWORD& read) {
    const file_object_t* object = file_of(file);
    if (object == nullptr)
        return ERROR_INVALID_HANDLE;
    read = 0;
    if (auto fault = hostsim::win32_call("ReadFile", object->path()))
        return *fault;
    const int fd = object->fd();
    char* data = static_cast<char*>(buffer);
    while (read < length) {
        const ssize_t n = ::read(fd, data + read, length - read);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return last_errno_error();
        }
        if (n == 0)
            break;
        read += static_cast<DWORD>(n);
    }
    return ERROR_SUCCESS;
}

DWORD os_file_size(HANDLE file, std::uint64_t& size) {
    const int fd = fd_of(file);
    if (fd < 0)
        return ERROR_INVALID_HANDLE;
    struct stat st {};
    if (::fstat(fd, &st) != 0)
        return last_errno_error();
    size = static_cast<std::uint64_t>(st.st_size);
    return ERROR_SUCCESS;
}

DWORD os_set_file_pointer(HANDLE file, std::int64_t offset, DWORD method, std::uint64_t& position) {
    const int fd = fd_of(file);
    if (fd < 0)
        return ERROR_INVALID_HANDLE;
    static const int whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (method > 2)
        return ERROR_INVALID_PARAMETER;
    const off_t result = ::lseek(fd, static_cast<off_t>(offset), whence[method]);
    if (result < 0)
        return errno == EINVAL ? 131 /* ERROR_NEGATIVE_SEEK */ : last_errno_error();
    position = static_cast<std::uint64_t>(result);
    return ERROR_SUCCESS;
}

// Only a log's rotation cuts a file, as reads, so the host is asked here too.
DWORD os_set_end_of_file(HANDLE file) {
    const file_object_t* object = file_of(file);
    if (object == nullptr)
        return ERROR_INVALID_HANDLE;
    if (auto fault = hostsim::win32_call("SetEndOfFile", object->path()))
        return *fault;
    const int fd = object->fd();
    const off_t position = ::lseek(fd, 0, SEEK_CUR);
    if (position < 0 || ::ftruncate(fd, position) != 0)
        return last_errno_error();
    return ERROR_SUCCESS;
}

DWORD os_flush_file(HANDLE file) {
    const int fd = fd_of(file);
    if (fd < 0)
        return ERROR_INVALID_HANDLE;
    if (::fdatasync(fd) != 0)
        return last_errno_error();
    return ERROR_SUCCESS;
}

} // namespace win::detail
