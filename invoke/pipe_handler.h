// The server end of a named pipe: created once, waits for one client, then moves
// whole messages as byte buffers. What the bytes mean is the invoke server's business.
#pragma once

#include "compat/win_types.h"
#include "invoke/pipe_channel.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace win {
class win_manual_reset_event_t;
}

namespace win::pipes {

typedef std::vector<std::uint8_t> byte_buffer_t;

// Reads happen in parts of this size; a longer message takes several.
inline constexpr DWORD pipe_chunk_size = 1024;
// The wait for a client is bounded by this, whatever the caller asks for.
inline constexpr DWORD client_wait_limit_ms = 120000;

class CPipeHandler {
public:
    CPipeHandler(std::wstring pipePath, std::shared_ptr<pipe_channel_t> pipe);

    // Returns once a client is connected; throws "Timed out until client to connect." when
    // none came in time or the stop event was signalled.
    void WaitClient(const std::shared_ptr<win::win_manual_reset_event_t>& stopEvent, DWORD timeoutMs);
    // One whole message. False: the client has gone (what was read of the message is dropped).
    bool ReadMessage(byte_buffer_t& result);
    // One whole message. False: the client has gone.
    bool WriteMessage(const byte_buffer_t& data);

private:
    pipe_channel_t& Pipe() const;

    std::wstring pipePath;
    std::shared_ptr<pipe_channel_t> pipe;
    std::shared_ptr<win::win_manual_reset_event_t> cancelEvent;
};

// Throws exc::win_sys_exc_t "Failed to create named pipe '%1'." when the name is taken or bad.
std::shared_ptr<CPipeHandler> CreateNamedPipeEndpoint(const std::wstring& fullPath);

// The client's side of the same transport.
bool ReadWholeMessage(pipe_channel_t& channel, byte_buffer_t& result);
bool WriteWholeMessage(pipe_channel_t& channel, const byte_buffer_t& data);

} // namespace win::pipes
