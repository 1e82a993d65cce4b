// The operating system's side of a message pipe: one connected channel that moves
// whole messages, read in chunks. The server endpoint and the client both sit on it.
#pragma once

#include "compat/win_types.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace win {
class win_manual_reset_event_t;
}

namespace win::pipes {

// Defined by each platform's implementation.
struct pipe_channel_t;

// What waiting for a client came to.
enum class client_wait_t { connected, timed_out };

// The server side of a pipe name; at most one server owns a name.
// Throws exc::win_sys_exc_t "Failed to create named pipe '%1'." with the system's code.
std::shared_ptr<pipe_channel_t> create_server_channel(const std::wstring& full_path);

// Waits up to timeout_ms for the one client; a signalled event among `other_events` ends the
// wait like the time limit. Throws exc::win_sys_exc_t "Failed to connect named pipe.".
client_wait_t wait_for_client(pipe_channel_t& channel,
                              const std::vector<std::shared_ptr<win::win_manual_reset_event_t>>& other_events,
                              DWORD timeout_ms);

// The client side: connects to a server that owns the name, retrying while none does yet.
// Throws exc::win_sys_exc_t with the system's code when no server could be reached in time.
std::shared_ptr<pipe_channel_t> connect_client_channel(const std::wstring& full_path, DWORD timeout_ms);

// Reads the next part of the current message into `into` (at most `capacity` bytes).
// Returns ERROR_SUCCESS when the message is complete, ERROR_MORE_DATA when more of it
// follows, ERROR_BROKEN_PIPE when the peer has gone, any other code on failure.
DWORD read_message_part(pipe_channel_t& channel, std::uint8_t* into, DWORD capacity, DWORD& bytes_read);

// Writes one whole message. Returns ERROR_SUCCESS, ERROR_BROKEN_PIPE or another code.
DWORD write_whole_message(pipe_channel_t& channel, const std::uint8_t* data, DWORD size,
                          DWORD& bytes_written);

} // namespace win::pipes
