#include "common/logging/line_layout.h"

#include "common/logging/log_platform.h"
#include "common/logging/log_t.h"

#include <algorithm>
#include <cstdio>

namespace logging::format {

namespace {

const char* level_marker(int level, bool first_line) {
    if (level != level_warning && level != level_error)
        return "";
    if (!first_line)
        return ">>  |";
    return level == level_warning ? "WARN|" : "ERR |";
}

const char* level_word(int level) {
    if (level == level_warning)
        return "Warning  ";
    if (level == level_error)
        return "Error    ";
    return "Info     ";
}

// "<  2840> ", or "<40> " in the short layout; built by hand, as it is on every line.
std::string_view thread_head(const message_head_t& head, char (&text)[16]) {
    unsigned value = head.mode == 0 ? head.thread_id : head.thread_id % 100;
    const std::size_t width = head.mode == 0 ? 6 : 2;
    char* end = text + sizeof text;
    char* start = end;
    *--start = ' ';
    *--start = '>';
    do {
        *--start = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    while (static_cast<std::size_t>(end - start) < width + 2)
        *--start = ' ';
    *--start = '<';
    return std::string_view(start, static_cast<std::size_t>(end - start));
}

void append_line(std::string& out, const message_head_t& head, std::string_view thread, int level,
                 std::int32_t indent, bool first_line, std::string_view text) {
    out += head.timestamp;
    out += thread;
    if (head.mode == 0) {
        out += head.prefix;
        out += level_marker(level, first_line);
    } else {
        out += level_word(level);
    }
    if (indent > 0)
        out.append(static_cast<std::size_t>(indent) * 2, ' ');
    out += text;
    out += head.eol;
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
    char thread_text[16];
    const std::string_view thread = thread_head(head, thread_text);
    out.clear();
    // Room for a one-line message up front: a traced document of megabytes would otherwise be
    // copied at every doubling, three times its size at the worst moment.
    constexpr std::size_t marker_room = 16;
    out.reserve(head.timestamp.size() + thread.size() + head.prefix.size() + marker_room +
                2 * static_cast<std::size_t>(std::max(indent, 0)) + message.size() + head.eol.size());
    // The piece behind a closing line feed is empty and gives no line; an empty message gives one.
    std::size_t start = 0;
    bool first_line = true;
    do {
        std::size_t end = message.find('\n', start);
        if (end == std::string_view::npos)
            end = message.size();
        append_line(out, head, thread, level, indent, first_line, message.substr(start, end - start));
        first_line = false;
        start = end + 1;
    } while (start < message.size());
}

} // namespace logging::format
