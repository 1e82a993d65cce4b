#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/logging/log_t.h"
#include "common/monitoring/thread_states.h"

namespace {

void write_line(const logger_t& h, int level, const std::string& text) {
    std::shared_ptr<logging::log_t> log = h.log;
    if (log)
        log->write_at_current_indent(level, h.format.get(), text);
}

} // namespace

log_scope_t::log_scope_t(const logger_t& h, const std::string& text) : handle_(h) {
    open(false, text);
}

log_scope_t::log_scope_t(const logger_t& h, const std::string& fmt, const std::string& a1) : handle_(h) {
    open(false, format_message(fmt, a1));
}

log_scope_t::log_scope_t(const logger_t& h, const std::string& fmt, const std::string& a1,
                         const std::string& a2)
    : handle_(h) {
    open(false, format_message(fmt, a1, a2));
}

log_scope_t::log_scope_t(silent_t, const logger_t& h, const std::string& text) : handle_(h) {
    open(true, text);
}

log_scope_t::log_scope_t(silent_t, const logger_t& h, const std::string& fmt, const std::string& a1)
    : handle_(h) {
    open(true, format_message(fmt, a1));
}

log_scope_t::log_scope_t(silent_t, const logger_t& h, const std::string& fmt, const std::string& a1,
                         const std::string& a2)
    : handle_(h) {
    open(true, format_message(fmt, a1, a2));
}

void log_scope_t::open(bool is_silent, const std::string& text) {
    silent_ = is_silent;
    if (!silent_) {
        write_line(handle_, logging::level_trace, text);
        log_indent_in(handle_);
    }
    text_ = text;
    monitoring::push_step(text_);
}

log_scope_t::~log_scope_t() {
    try {
        monitoring::pop_step();
        if (finished_)
            return;
        // Left by an exception or an early return: the step did not come to its end.
        if (!silent_)
            log_indent_out(handle_);
        write_line(handle_, logging::level_info, text_ + " Failed.");
    } catch (...) {
    }
}

void log_scope_t::ok() {
    finish(text_ + " ok.");
}

void log_scope_t::finish(const std::string& text) {
    if (finished_)
        return;
    finished_ = true;
    if (silent_)
        return;
    log_indent_out(handle_);
    write_line(handle_, logging::level_trace, text);
}

void log_scope_t::finish(const std::string& fmt, const std::string& a1) {
    finish(format_message(fmt, a1));
}

void log_scope_t::finish(const std::string& fmt, const std::string& a1, const std::string& a2) {
    finish(format_message(fmt, a1, a2));
}

void log_scope_t::close_quietly() {
    if (finished_)
        return;
    finished_ = true;
    if (!silent_)
        log_indent_out(handle_);
}

void log_scope_t::set_text(const std::string& text) {
    text_ = text;
    monitoring::push_step(text_);
}
