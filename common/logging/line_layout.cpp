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
    std::size_t length = 0; // 0 until a head is made
    char text[16] = {};
};
thread_local thread_head_t last_thread_head;

std::string_view thread_head(const message_head_t& head) {
    thread_head_t& last = last_thread_head;
    const bool short_layout = head.mode != 0;
    if (last.length == 0 || last.thread_id != head.thread_id || last.short_layout != short_layout) {
        last.length = write_thread_head(last.text, head.thread_id, short_layout);
        last.thread_id = head.thread_id;
        last.short_layout = short_layout;
    }
    return std::string_view(last.text, last.length);
}

std::size_t line_feeds(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = text.find('\n'); at != std::string_view::npos; at = text.find('\n', at + 1))
        ++count;
    return count;
}

// The pieces of a line are a few bytes each: copied inline, two overlapping moves apiece, where a
// call into the library's memcpy for each would cost more than all the copying.
template <std::size_t width> void copy_ends(char* to, const char* from, std::size_t count) {
    char head[width];
    char tail[width];
    std::memcpy(head, from, width);
    std::memcpy(tail, from + count - width, width);
    std::memcpy(to, head, width);
    std::memcpy(to + count - width, tail, width);
}

char* put(char* at, std::string_view text) {
    const std::size_t count = text.size();
    if (count > 32)
        std::memcpy(at, text.data(), count);
    else if (count >= 16)
        copy_ends<16>(at, text.data(), count);
    else if (count >= 8)
        copy_ends<8>(at, text.data(), count);
    else if (count >= 4)
        copy_ends<4>(at, text.data(), count);
    else if (count > 0) {
        at[0] = text[0];
        at[count / 2] = text[count / 2];
        at[count - 1] = text[count - 1];
    }
    return at + count;
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
    const std::string_view first_marker = head.mode == 0 ? level_marker(level, true) : level_word(level);
    const std::string_view next_marker = head.mode == 0 ? level_marker(level, false) : first_marker;
    const std::size_t lead_length = head.timestamp.size() + thread.size() + prefix.size();
    const std::size_t indent_length = indent > 0 ? static_cast<std::size_t>(indent) * 2 : 0;
    // Every line feed ends a piece; the piece behind a closing one is empty and gives no line, and
    // an empty message still gives one line.
    const std::size_t feeds = line_feeds(message);
    const std::size_t lines = feeds + 1 - (feeds > 0 && message.back() == '\n' ? 1 : 0);
    // Markers of one message are all of one length. Knowing the length before the first byte, the
    // text is made in one pass over storage that a previous message left: a traced document of
    // megabytes is never copied at a doubling.
    const std::size_t per_line = lead_length + first_marker.size() + indent_length + head.eol.size();
    out.resize(lines * per_line + message.size() - feeds);
    char* const lead = out.data();
    char* at = lead;
    std::size_t start = 0;
    for (std::size_t line = 0; line < lines; ++line) {
        const std::size_t found = feeds == 0 ? std::string_view::npos : message.find('\n', start);
        const std::size_t end = found == std::string_view::npos ? message.size() : found;
        if (line == 0) {
            at = put(at, head.timestamp);
            at = put(at, thread);
            at = put(at, prefix);
            at = put(at, first_marker);
        } else {
            at = put(at, std::string_view(lead, lead_length));
            at = put(at, next_marker);
        }
        at = std::fill_n(at, indent_length, ' ');
        at = put(at, message.substr(start, end - start));
        at = put(at, head.eol);
        start = end + 1;
    }
}

} // namespace logging::format
