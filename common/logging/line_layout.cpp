#include "common/logging/line_layout.h"

#include "common/logging/log_platform.h"
#include "common/logging/log_t.h"

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

std::string thread_head(const message_head_t& head) {
    char text[32];
    if (head.mode == 0)
        std::snprintf(text, sizeof text, "<%6u> ", static_cast<unsigned>(head.thread_id));
    else
        std::snprintf(text, sizeof text, "<%2u> ", static_cast<unsigned>(head.thread_id % 100));
    return text;
}

void append_line(std::string& out, const message_head_t& head, const std::string& thread, int level,
                 std::int32_t indent, bool first_line, const char* text, std::size_t length) {
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
    out.append(text, length);
    out += head.eol;
}

} // namespace

std::string timestamp_text(std::time_t moment) {
    std::tm parts{};
    if (!platform::local_time(moment, parts))
        return "TIME ---";
    char text[48];
    std::snprintf(text, sizeof text, "[%02d.%02d.%04d %02d:%02d:%02d] ", parts.tm_mday, parts.tm_mon + 1,
                  parts.tm_year + 1900, parts.tm_hour, parts.tm_min, parts.tm_sec);
    return text;
}

std::string message_text(const message_head_t& head, int level, std::int32_t indent,
                         const std::string& message) {
    const std::string thread = thread_head(head);
    std::string out;
    out.reserve(message.size() + 64);
    // The piece behind a closing line feed is empty and gives no line; an empty message gives one.
    std::size_t start = 0;
    bool first_line = true;
    do {
        std::size_t end = message.find('\n', start);
        if (end == std::string::npos)
            end = message.size();
        append_line(out, head, thread, level, indent, first_line, message.data() + start, end - start);
        first_line = false;
        start = end + 1;
    } while (start < message.size());
    return out;
}

} // namespace logging::format
