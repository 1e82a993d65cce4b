// How one message becomes the text of its lines: time stamp, thread head, prefix, marker, indent.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace logging::format {

// What every line of one message shares.
struct message_head_t {
    std::string_view timestamp; // "[dd.mm.yyyy hh:mm:ss] ", or "TIME ---"
    std::uint32_t thread_id = 0;
    std::uint32_t mode = 0;  // 0: the tool's layout; else the short layout without prefix
    std::string_view prefix; // of the handle's line format
    std::string_view eol;    // of the receiver
};

// Room for the longest time stamp.
constexpr std::size_t timestamp_capacity = 48;

// "[16.11.2026 05:22:58] " in local time; "TIME ---" when the moment has no local time.
std::string timestamp_text(std::time_t moment);
// The same into text, which holds timestamp_capacity characters; its length.
std::size_t write_timestamp(std::time_t moment, char* text);

// All lines of a message, each with its head and end of line, in one text.
std::string message_text(const message_head_t& head, int level, std::int32_t indent,
                         std::string_view message);
// The same in place of what out held, reusing its storage.
void assign_message_text(std::string& out, const message_head_t& head, int level, std::int32_t indent,
                         std::string_view message);

} // namespace logging::format
