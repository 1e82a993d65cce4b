// The named pipe of the system: one message-mode instance, duplex, overlapped for
// the wait for a client, plain synchronous calls for reading and writing.
#include "invoke/pipe_channel.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/event.h"
#include "common/win/handle.h"
#include "common/win/wait.h"

#include <chrono>
#include <thread>

namespace win::pipes {

namespace {

constexpr DWORD open_mode = 0x40000003; // PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED
constexpr DWORD pipe_mode = 6;          // PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT
constexpr DWORD max_instances = 1;      // a second server on the same name fails
constexpr DWORD buffer_size = 1024;
constexpr auto connect_retry_pause = std::chrono::milliseconds(20);

} // namespace

struct pipe_channel_t {
    std::shared_ptr<win::win_handle_t> pipe;
    HANDLE handle() const { return pipe->handle(); }
};

std::shared_ptr<pipe_channel_t> create_server_channel(const std::wstring& full_path) {
    HANDLE created = ::CreateNamedPipeW(full_path.c_str(), open_mode, pipe_mode, max_instances, buffer_size,
                                        buffer_size, 0, nullptr);
    if (created == INVALID_HANDLE_VALUE)
        throw exc::win_sys_exc_t("Failed to create named pipe '%1'.", to_ansi_nothrow(full_path),
                                 ::GetLastError());
    auto channel = std::make_shared<pipe_channel_t>();
    channel->pipe = std::make_shared<win::win_handle_t>(created);
    return channel;
}

namespace {

// The overlapped connect must not outlive its OVERLAPPED: cancel it and let it settle.
void abandon_pending_connect(HANDLE pipe, OVERLAPPED& overlapped) {
    DWORD ignored = 0;
    if (::CancelIoEx(pipe, &overlapped) || ::GetLastError() != ERROR_NOT_FOUND)
        ::GetOverlappedResult(pipe, &overlapped, &ignored, TRUE);
}

// A client that connected before the call, or that connected and has already closed its end:
// either way the client has been, and the first read tells which.
bool client_has_come(DWORD error) {
    return error == ERROR_PIPE_CONNECTED || error == ERROR_NO_DATA;
}

} // namespace

client_wait_t wait_for_client(pipe_channel_t& channel,
                              const std::vector<std::shared_ptr<win::win_manual_reset_event_t>>& other_events,
                              DWORD timeout_ms) {
    win::win_manual_reset_event_t connected;
    OVERLAPPED overlapped{};
    overlapped.hEvent = connected.handle();
    std::vector<HANDLE> handles{connected.handle()};
    for (const auto& event : other_events)
        handles.push_back(event->handle());

    const BOOL done = ::ConnectNamedPipe(channel.handle(), &overlapped);
    const DWORD error = done ? ERROR_SUCCESS : ::GetLastError();
    if (done || client_has_come(error))
        return client_wait_t::connected;
    if (error != ERROR_IO_PENDING)
        throw exc::win_sys_exc_t("Failed to connect named pipe.", error);
    const DWORD woken = win::wait_for_objects(handles.data(), static_cast<DWORD>(handles.size()), timeout_ms);
    if (woken != win::wait_object_0) {
        abandon_pending_connect(channel.handle(), overlapped);
        return client_wait_t::timed_out;
    }
    // The event says that the connect has completed: its result is the overlapped one. A second
    // connect call would find a client that has already left, and fail where the first read
    // should see the pipe broken.
    DWORD ignored = 0;
    if (::GetOverlappedResult(channel.handle(), &overlapped, &ignored, FALSE))
        return client_wait_t::connected;
    const DWORD completion = ::GetLastError();
    if (client_has_come(completion))
        return client_wait_t::connected;
    throw exc::win_sys_exc_t("Failed to connect named pipe.", completion);
}

std::shared_ptr<pipe_channel_t> connect_client_channel(const std::wstring& full_path, DWORD timeout_ms) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    for (;;) {
        HANDLE opened = ::CreateFileW(full_path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
        if (opened != INVALID_HANDLE_VALUE) {
            auto channel = std::make_shared<pipe_channel_t>();
            channel->pipe = std::make_shared<win::win_handle_t>(opened);
            DWORD mode = PIPE_READMODE_MESSAGE;
            if (!::SetNamedPipeHandleState(opened, &mode, nullptr, nullptr))
                throw exc::win_sys_exc_t("Failed to connect to named pipe '%1'.", to_ansi_nothrow(full_path),
                                         ::GetLastError());
            return channel;
        }
        const DWORD error = ::GetLastError();
        const bool worth_retrying = error == ERROR_FILE_NOT_FOUND || error == ERROR_PIPE_BUSY;
        if (!worth_retrying || std::chrono::steady_clock::now() >= deadline)
            throw exc::win_sys_exc_t("Failed to connect to named pipe '%1'.", to_ansi_nothrow(full_path),
                                     error);
        std::this_thread::sleep_for(connect_retry_pause);
    }
}

DWORD read_message_part(pipe_channel_t& channel, std::uint8_t* into, DWORD capacity, DWORD& bytes_read) {
    bytes_read = 0;
    if (::ReadFile(channel.handle(), into, capacity, &bytes_read, nullptr))
        return ERROR_SUCCESS;
    return ::GetLastError();
}

DWORD write_whole_message(pipe_channel_t& channel, const std::uint8_t* data, DWORD size,
                          DWORD& bytes_written) {
    bytes_written = 0;
    if (::WriteFile(channel.handle(), data, size, &bytes_written, nullptr))
        return ERROR_SUCCESS;
    const DWORD error = ::GetLastError();
    // A client that has closed its end makes the write fail with "the pipe is being closed":
    // that is the peer gone, as much as the broken pipe that a read meets.
    return error == ERROR_NO_DATA ? DWORD(ERROR_BROKEN_PIPE) : error;
}

} // namespace win::pipes
