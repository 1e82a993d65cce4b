#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/logging/log_t.h"

using logging::level_error;
using logging::level_info;
using logging::level_trace;
using logging::level_warning;

namespace {

// The handle's log is copied per call, so that a call never races with the handle's release.
void write_at(const logger_t& h, int level, std::int32_t indent, const std::string& message) {
    std::shared_ptr<logging::log_t> log = h.log;
    if (log)
        log->write(level, indent, h.format.get(), message);
}

void write_at_current_indent(const logger_t& h, int level, const std::string& message) {
    std::shared_ptr<logging::log_t> log = h.log;
    if (log)
        log->write_at_current_indent(level, h.format.get(), message);
}

// The text, then every line of the exception; the text alone when the exception has none.
std::string with_exception(const std::string& text, const std::exception& e) {
    const char* what = e.what();
    if (what == nullptr)
        return text;
    return text + "\n" + what;
}

} // namespace

void log_info(const logger_t& h, const std::string& text) {
    write_at_current_indent(h, level_info, text);
}

void log_info(const logger_t& h, const std::string& fmt, const std::string& a1) {
    write_at_current_indent(h, level_info, format_message(fmt, a1));
}

void log_info(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2) {
    write_at_current_indent(h, level_info, format_message(fmt, a1, a2));
}

void log_info(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2,
              const std::string& a3) {
    write_at_current_indent(h, level_info, format_message(fmt, a1, a2, a3));
}

void log_info_sub(const logger_t& h, const std::string& fmt, const std::string& a1) {
    write_at(h, level_info, 1, format_message(fmt, a1));
}

void log_info_sub(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2) {
    write_at(h, level_info, 1, format_message(fmt, a1, a2));
}

void log_trace(const logger_t& h, const std::string& fmt, const std::string& a1) {
    write_at_current_indent(h, level_trace, format_message(fmt, a1));
}

void log_warning(const logger_t& h, const std::string& text) {
    write_at(h, level_warning, 0, text);
}

void log_warning(const logger_t& h, const std::string& fmt, const std::string& a1) {
    write_at(h, level_warning, 0, format_message(fmt, a1));
}

void log_error(const logger_t& h, const std::string& text) {
    write_at(h, level_error, 0, text);
}

void log_error(const logger_t& h, const std::string& fmt, const std::string& a1) {
    write_at(h, level_error, 0, format_message(fmt, a1));
}

void log_exception(const logger_t& h, const std::exception& e) {
    write_at(h, level_error, 0, exc::exception_text(e));
}

void log_exception(const logger_t& h, const std::string& text, const std::exception& e) {
    write_at(h, level_error, 0, with_exception(text, e));
}

void log_exception(const logger_t& h, const std::string& fmt, const std::string& a1,
                   const std::exception& e) {
    write_at(h, level_error, 0, with_exception(format_message(fmt, a1), e));
}

void log_exception(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2,
                   const std::exception& e) {
    write_at(h, level_error, 0, with_exception(format_message(fmt, a1, a2), e));
}

void log_exception(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2,
                   const std::string& a3, const std::exception& e) {
    write_at(h, level_error, 0, with_exception(format_message(fmt, a1, a2, a3), e));
}

void log_exception(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2,
                   const std::string& a3, const std::string& a4, const std::exception& e) {
    write_at(h, level_error, 0, with_exception(format_message(fmt, a1, a2, a3, a4), e));
}

void log_warning_exception(const logger_t& h, const std::string& text, const std::exception& e) {
    write_at(h, level_warning, 0, with_exception(text, e));
}

void log_indent_in(const logger_t& h) {
    try {
        if (h.log)
            h.log->indent_in();
    } catch (...) {
    }
}

void log_indent_out(const logger_t& h) {
    try {
        if (h.log)
            h.log->indent_out();
    } catch (...) {
    }
}
