// A pipe name is a Unix stream socket in a private directory. The stream carries
// messages as a 4-byte little-endian length followed by the bytes, so that the reader
// can tell the three outcomes of a message-mode pipe apart: complete, more, gone.
#include "invoke/pipe_channel.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/errno_posix.h"
#include "common/win/event.h"
#include "common/win/native_name_posix.h"
#include "compat/unique_fd_posix.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

namespace win::pipes {

namespace {

constexpr std::size_t length_field_size = 4;
constexpr auto connect_retry_pause = std::chrono::milliseconds(20);
constexpr auto event_check_period = std::chrono::milliseconds(100);

// A socket whose peer has gone reads as a broken pipe, as a pipe does; any other errno as it does
// for every call of the platform.
DWORD win32_code_of_errno(int error) {
    return error == ENOTCONN ? ERROR_BROKEN_PIPE : win::win32_error_from_errno(error);
}

using fd_t = compat::unique_fd_t;

// A failure of the system: its Win32 equivalent and the step that failed.
struct os_failure_t {
    DWORD code;
};

[[noreturn]] void fail(int error) {
    throw os_failure_t{win32_code_of_errno(error)};
}
[[noreturn]] void fail_with(DWORD code) {
    throw os_failure_t{code};
}

const char* configured_pipe_directory() {
    const char* configured = std::getenv("MIRRACK_PIPE_DIR");
    return configured && *configured ? configured : nullptr;
}

std::string pipe_directory() {
    if (const char* configured = configured_pipe_directory())
        return configured;
    return "/tmp/mirrack-" + std::to_string(::getuid());
}

// Who chose the directory: one named by the user is the user's choice; the default one in /tmp must
// be ours alone.
enum class chosen_by_t { user, default_place };

// The directory is private to the user: nobody else may plant or read sockets in it.
void ensure_private_directory(const std::string& directory, chosen_by_t chosen_by) {
    if (::mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST)
        fail(errno);
    struct stat info {};
    if (::lstat(directory.c_str(), &info) != 0)
        fail(errno);
    if (!S_ISDIR(info.st_mode))
        fail_with(ERROR_PATH_NOT_FOUND);
    if (info.st_uid != ::getuid() || (chosen_by == chosen_by_t::default_place && (info.st_mode & 077) != 0))
        fail_with(ERROR_ACCESS_DENIED);
}

std::string socket_name_of(const std::wstring& full_path) {
    static const std::wstring prefix = L"\\\\.\\pipe\\";
    if (full_path.size() <= prefix.size() || !iequals(full_path.substr(0, prefix.size()), prefix))
        fail_with(ERROR_BAD_PATHNAME);
    const std::wstring name = full_path.substr(prefix.size());
    if (name.find_first_of(L"/\\") != std::wstring::npos || name == L"." || name == L"..")
        fail_with(ERROR_INVALID_NAME);
    return win::native_name_bytes(name);
}

std::string socket_path_of(const std::wstring& full_path) {
    return pipe_directory() + "/" + socket_name_of(full_path);
}

sockaddr_un socket_address(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path))
        fail_with(ERROR_FILENAME_EXCED_RANGE);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

int new_socket() {
    int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        fail(errno);
    return fd;
}

// 0: connected; otherwise the errno of the attempt.
int try_connect(int fd, const sockaddr_un& address) {
    while (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        if (errno != EINTR)
            return errno;
    }
    return 0;
}

// The name's lock, held by the server that owns the name for as long as it lives. It
// tells a live server without knocking on its socket: a knock would be taken for the
// client that the live server is waiting for.
int lock_name(const std::string& directory, const std::string& name) {
    const std::string locks = directory + "/.locks";
    if (::mkdir(locks.c_str(), 0700) != 0 && errno != EEXIST)
        fail(errno);
    fd_t lock(::open((locks + "/" + name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (lock.get() < 0)
        fail(errno);
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        fail_with(errno == EWOULDBLOCK ? ERROR_PIPE_BUSY : win32_code_of_errno(errno));
    return lock.release();
}

// A socket file that nobody answers on is what a server that died leaves behind.
void remove_stale_socket(const std::string& path, const sockaddr_un& address) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0)
        return;
    fd_t probe(new_socket());
    const int error = try_connect(probe.get(), address);
    if (error == 0)
        fail_with(ERROR_PIPE_BUSY);
    if (error != ECONNREFUSED && error != ENOENT)
        fail(error);
    if (::unlink(path.c_str()) != 0 && errno != ENOENT)
        fail(errno);
}

// Waits until fd is readable (or hung up). -1 waits without limit. False on time-out.
bool wait_readable(int fd, int timeout_ms) {
    pollfd entry{fd, POLLIN, 0};
    for (;;) {
        const int ready = ::poll(&entry, 1, timeout_ms);
        if (ready > 0)
            return true;
        if (ready == 0)
            return false;
        if (errno != EINTR)
            fail(errno);
    }
}

bool any_signalled(const std::vector<std::shared_ptr<win::win_manual_reset_event_t>>& events) {
    return std::any_of(events.begin(), events.end(),
                       [](const auto& event) { return event && event->is_set(); });
}

} // namespace

struct pipe_channel_t {
    std::string socket_path;
    fd_t name_lock;
    fd_t listener;
    fd_t connection;
    bool owns_path = false;
    dev_t path_device = 0;
    ino_t path_inode = 0;
    std::uint64_t message_left = 0;
    bool inside_message = false;

    ~pipe_channel_t() {
        if (!owns_path)
            return;
        // Only the socket this server bound: a successor may already own the name.
        struct stat info {};
        if (::lstat(socket_path.c_str(), &info) == 0 && info.st_dev == path_device &&
            info.st_ino == path_inode)
            ::unlink(socket_path.c_str());
    }
};

namespace {

// The name has one client; anyone else who knocks is let in and shown out at once,
// which the knocker sees as a broken pipe, as with a busy pipe instance.
void turn_away_extra_clients(pipe_channel_t& channel) {
    if (channel.listener.get() < 0)
        return;
    while (wait_readable(channel.listener.get(), 0)) {
        const int extra = ::accept4(channel.listener.get(), nullptr, nullptr, SOCK_CLOEXEC);
        if (extra < 0)
            return;
        ::close(extra);
    }
}

// Waits for data from the client, turning away other clients meanwhile.
void wait_for_data(pipe_channel_t& channel) {
    if (channel.listener.get() < 0)
        return;
    pollfd entries[2] = {{channel.connection.get(), POLLIN, 0}, {channel.listener.get(), POLLIN, 0}};
    for (;;) {
        entries[0].revents = entries[1].revents = 0;
        if (::poll(entries, 2, -1) < 0) {
            if (errno == EINTR)
                continue;
            fail(errno);
        }
        if (entries[1].revents != 0)
            turn_away_extra_clients(channel);
        if (entries[0].revents != 0)
            return;
    }
}

// Reads exactly `size` bytes. False when the peer has gone before all of them came.
bool receive_exactly(pipe_channel_t& channel, std::uint8_t* into, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        wait_for_data(channel);
        const ssize_t got = ::recv(channel.connection.get(), into + done, size - done, 0);
        if (got > 0) {
            done += static_cast<std::size_t>(got);
            continue;
        }
        if (got == 0)
            return false;
        if (errno == EINTR)
            continue;
        if (errno == ECONNRESET || errno == EPIPE)
            return false;
        fail(errno);
    }
    return true;
}

std::uint64_t decode_length(const std::uint8_t* field) {
    return std::uint64_t(field[0]) | std::uint64_t(field[1]) << 8 | std::uint64_t(field[2]) << 16 |
           std::uint64_t(field[3]) << 24;
}

void encode_length(std::uint32_t length, std::uint8_t* field) {
    for (std::size_t i = 0; i < length_field_size; ++i)
        field[i] = static_cast<std::uint8_t>(length >> (8 * i));
}

std::shared_ptr<pipe_channel_t> bind_server_channel(const std::wstring& full_path) {
    auto channel = std::make_shared<pipe_channel_t>();
    const std::string directory = pipe_directory();
    channel->socket_path = socket_path_of(full_path);
    const sockaddr_un address = socket_address(channel->socket_path);
    ensure_private_directory(directory,
                             configured_pipe_directory() ? chosen_by_t::user : chosen_by_t::default_place);
    channel->name_lock.reset(lock_name(directory, socket_name_of(full_path)));
    remove_stale_socket(channel->socket_path, address);

    channel->listener.reset(new_socket());
    if (::bind(channel->listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        fail(errno);
    struct stat info {};
    if (::lstat(channel->socket_path.c_str(), &info) == 0) {
        channel->owns_path = true;
        channel->path_device = info.st_dev;
        channel->path_inode = info.st_ino;
    }
    if (::listen(channel->listener.get(), 1) != 0)
        fail(errno);
    return channel;
}

} // namespace

std::shared_ptr<pipe_channel_t> create_server_channel(const std::wstring& full_path) {
    try {
        return bind_server_channel(full_path);
    } catch (const os_failure_t& failure) {
        throw exc::win_sys_exc_t("Failed to create named pipe '%1'.", to_ansi_nothrow(full_path),
                                 failure.code);
    }
}

client_wait_t wait_for_client(pipe_channel_t& channel,
                              const std::vector<std::shared_ptr<win::win_manual_reset_event_t>>& other_events,
                              DWORD timeout_ms) {
    try {
        if (channel.connection.get() >= 0)
            return client_wait_t::connected;
        // The socket cannot be waited on together with an event, so the wait goes in slices.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
        for (;;) {
            if (any_signalled(other_events))
                return client_wait_t::timed_out;
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0)
                return client_wait_t::timed_out;
            if (wait_readable(channel.listener.get(),
                              static_cast<int>(std::min(left, event_check_period).count())))
                break;
        }
        const int client = ::accept4(channel.listener.get(), nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0)
            fail(errno);
        channel.connection.reset(client);
        return client_wait_t::connected;
    } catch (const os_failure_t& failure) {
        throw exc::win_sys_exc_t("Failed to connect named pipe.", failure.code);
    }
}

std::shared_ptr<pipe_channel_t> connect_client_channel(const std::wstring& full_path, DWORD timeout_ms) {
    try {
        auto channel = std::make_shared<pipe_channel_t>();
        channel->socket_path = socket_path_of(full_path);
        const sockaddr_un address = socket_address(channel->socket_path);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
        for (;;) {
            fd_t attempt(new_socket());
            const int error = try_connect(attempt.get(), address);
            if (error == 0) {
                channel->connection.reset(attempt.release());
                return channel;
            }
            if (error != ENOENT && error != ECONNREFUSED)
                fail(error);
            if (std::chrono::steady_clock::now() >= deadline)
                fail_with(error == ENOENT ? ERROR_FILE_NOT_FOUND : ERROR_SEM_TIMEOUT);
            std::this_thread::sleep_for(connect_retry_pause);
        }
    } catch (const os_failure_t& failure) {
        throw exc::win_sys_exc_t("Failed to connect to named pipe '%1'.", to_ansi_nothrow(full_path),
                                 failure.code);
    }
}

DWORD read_message_part(pipe_channel_t& channel, std::uint8_t* into, DWORD capacity, DWORD& bytes_read) {
    bytes_read = 0;
    try {
        if (channel.connection.get() < 0)
            return ERROR_INVALID_HANDLE;
        if (!channel.inside_message) {
            std::uint8_t field[length_field_size];
            if (!receive_exactly(channel, field, sizeof(field)))
                return ERROR_BROKEN_PIPE;
            channel.message_left = decode_length(field);
            channel.inside_message = true;
        }
        const auto part = static_cast<DWORD>(std::min<std::uint64_t>(capacity, channel.message_left));
        if (!receive_exactly(channel, into, part)) {
            channel.inside_message = false;
            return ERROR_BROKEN_PIPE;
        }
        bytes_read = part;
        channel.message_left -= part;
        if (channel.message_left > 0)
            return ERROR_MORE_DATA;
        channel.inside_message = false;
        return ERROR_SUCCESS;
    } catch (const os_failure_t& failure) {
        return failure.code;
    }
}

DWORD write_whole_message(pipe_channel_t& channel, const std::uint8_t* data, DWORD size,
                          DWORD& bytes_written) {
    bytes_written = 0;
    if (channel.connection.get() < 0)
        return ERROR_INVALID_HANDLE;
    std::uint8_t field[length_field_size];
    encode_length(size, field);
    std::size_t header_left = sizeof(field);
    std::size_t body_done = 0;
    while (header_left > 0 || body_done < size) {
        iovec parts[2];
        int count = 0;
        if (header_left > 0)
            parts[count++] = {field + sizeof(field) - header_left, header_left};
        parts[count++] = {const_cast<std::uint8_t*>(data) + body_done, size - body_done};
        msghdr message{};
        message.msg_iov = parts;
        message.msg_iovlen = static_cast<decltype(message.msg_iovlen)>(count);
        const ssize_t sent = ::sendmsg(channel.connection.get(), &message, MSG_NOSIGNAL);
        if (sent < 0) {
            if (errno == EINTR)
                continue;
            return win32_code_of_errno(errno);
        }
        auto progress = static_cast<std::size_t>(sent);
        const std::size_t from_header = std::min(progress, header_left);
        header_left -= from_header;
        body_done += progress - from_header;
    }
    bytes_written = static_cast<DWORD>(body_done);
    return ERROR_SUCCESS;
}

} // namespace win::pipes
