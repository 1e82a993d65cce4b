#include "common/logging/line_layout.h"

#include "common/logging/log_platform.h"
#include "common/logging/log_t.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace logging::format {

namespace {

std::string_view level_marker(int level, bool first_line) {
    if (level != level_warning && level != level_error)
        return {};
    if (!first_line)
        return ">>  |";
    return level == level_warning ? "WARN|" : "ERR |";
}

std::string_view level_word(int level) {
    if (level == level_warning)
        return "Warning  ";
    if (level == level_error)
        return "Error    ";
    return "Info     ";
}

// "<  2840> ", or "<40> " in the short layout: the digits right-aligned in a field that a longer
// number widens.
std::size_t write_thread_head(char* text, std::uint32_t thread_id, bool short_layout) {
    unsigned value = short_layout ? thread_id % 100 : thread_id;
    char digits[12];
    char* digit = digits + sizeof digits;
    do {
        *--digit = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    const std::size_t count = static_cast<std::size_t>(digits + sizeof digits - digit);
    const std::size_t width = std::max<std::size_t>(short_layout ? 2 : 6, count);
    char* at = text;
    *at++ = '<';
    at = std::fill_n(at, width - count, ' ');
    at = std::copy_n(digit, count, at);
    *at++ = '>';
    *at++ = ' ';
    return static_cast<std::size_t>(at - text);
}

// A thread writes its lines under its own id, so its head is made once and kept. Plain data: thread
// storage without a destructor lasts as long as the thread, past the last lines of process exit.
struct thread_head_t {
    std::uint32_t thread_id = 0;
    bool short_layout = false;
    std::uint8_t length = 0; // 0 until a head is made
    char text[16] = {};
};
thread_local thread_head_t last_thread_head;

std::string_view thread_head(const message_head_t& head) {
    thread_head_t& last = last_thread_head;
    const bool short_layout = head.mode != 0;
    if (last.length == 0 || last.thread_id != head.thread_id || last.short_layout != short_layout) {
        last.length = static_cast<std::uint8_t>(write_thread_head(last.text, head.thread_id, short_layout));
        last.thread_id = head.thread_id;
        last.short_layout = short_layout;
    }
    return std::string_view(last.text, last.length);
}

char* put(char* at, std::string_view text) {
    if (!text.empty())
        std::memcpy(at, text.data(), text.size());
    return at + text.size();
}

} // namespace

std::size_t write_timestamp(std::time_t moment, char* text) {
    std::tm parts{};
    if (!platform::local_time(moment, parts)) {
        constexpr std::string_view none = "TIME ---";
        none.copy(text, none.size());
        return none.size();
    }
    const int length =
        std::snprintf(text, timestamp_capacity, "[%02d.%02d.%04d %02d:%02d:%02d] ", parts.tm_mday,
                      parts.tm_mon + 1, parts.tm_year + 1900, parts.tm_hour, parts.tm_min, parts.tm_sec);
    return length < 0 ? 0 : std::min(static_cast<std::size_t>(length), timestamp_capacity - 1);
}

std::string timestamp_text(std::time_t moment) {
    char text[timestamp_capacity];
    return std::string(text, write_timestamp(moment, text));
}

std::string message_text(const message_head_t& head, int level, std::int32_t indent,
                         std::string_view message) {
    std::string out;
    assign_message_text(out, head, level, indent, message);
    return out;
}

void assign_message_text(std::string& out, const message_head_t& head, int level, std::int32_t indent,
                         std::string_view message) {
    const std::string_view thread = thread_head(head);
    const std::string_view prefix = head.mode == 0 ? head.prefix : std::string_view();
    const std::size_t lead_length = head.timestamp.size() + thread.size() + prefix.size();
    const std::size_t indent_length = indent > 0 ? static_cast<std::size_t>(indent) * 2 : 0;
    // The text is filled in place over the storage that the previous message left; it grows only
    // for a longer message, and the lead of the first line is copied to the others.
    std::size_t length = 0;
    // Room for a one-line message up front: a traced document of megabytes would otherwise be
    // copied at every doubling, three times its size at the worst moment.
    constexpr std::size_t marker_room = 16;
    out.reserve(lead_length + marker_room + indent_length + message.size() + head.eol.size());
    std::size_t start = 0;
    bool first_line = true;
    // Every line feed ends a piece; the piece behind a closing one is empty and gives no line, and
    // an empty message still gives one line.
    do {
        std::size_t end = message.find('\n', start);
        if (end == std::string_view::npos)
            end = message.size();
        const std::string_view marker = head.mode == 0 ? level_marker(level, first_line) : level_word(level);
        const std::string_view text = message.substr(start, end - start);
        const std::size_t line_end =
            length + lead_length + marker.size() + indent_length + text.size() + head.eol.size();
        if (out.size() < line_end)
            out.resize(line_end);
        char* const lead = out.data();
        char* at = lead + length;
        if (first_line) {
            at = put(at, head.timestamp);
            at = put(at, thread);
            at = put(at, prefix);
        } else {
            at = put(at, std::string_view(lead, lead_length));
        }
        at = put(at, marker);
        if (indent_length > 0)
            at = std::fill_n(at, indent_length, ' ');
        at = put(at, text);
        put(at, head.eol);
        length = line_end;
        first_line = false;
        start = end + 1;
    } while (start < message.size());
    out.resize(length);
}

} // namespace logging::format
