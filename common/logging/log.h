// Log calls and log blocks: what nearly all code of the system uses to log.
#pragma once

#include <exception>
#include <memory>
#include <string>

namespace logging {

class log_t;

namespace format {
// The prefix of every line of a handle: empty for an empty tag, else the tag and "| ".
struct line_format_t {
    std::string prefix;
    explicit line_format_t(const std::string& tag) : prefix(tag.empty() ? std::string() : tag + "| ") {}
};
} // namespace format

// A logger handle: the shared log and the component's line format.
struct logger_t {
    std::shared_ptr<log_t> log;
    std::shared_ptr<format::line_format_t> format;
};

// The handles of the system, one per component.
const logger_t& lib_logger();     // empty tag: the common library
const logger_t& tool_logger();    // "Mirrack": the tool's own code
const logger_t& prx_logger();     // "prx": the pipe invoke server
const logger_t& rpc_logger();     // "rpc": the command trace of the invoke server
const logger_t& dbg_logger();     // "dbg": the debug receiver's own log; nobody writes to it
const logger_t& startup_logger(); // the start-up banner's handle, empty tag

} // namespace logging

using logging::logger_t;

void log_info(const logger_t& h, const std::string& text);
void log_info(const logger_t& h, const std::string& fmt, const std::string& a1);
void log_info(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2);
void log_info(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2,
              const std::string& a3);
void log_info_sub(const logger_t& h, const std::string& fmt, const std::string& a1);
void log_info_sub(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2);
void log_trace(const logger_t& h, const std::string& fmt, const std::string& a1);
void log_warning(const logger_t& h, const std::string& text);
void log_warning(const logger_t& h, const std::string& fmt, const std::string& a1);
void log_error(const logger_t& h, const std::string& text);
void log_error(const logger_t& h, const std::string& fmt, const std::string& a1);
void log_exception(const logger_t& h, const std::exception& e);
void log_exception(const logger_t& h, const std::string& text, const std::exception& e);
void log_exception(const logger_t& h, const std::string& fmt, const std::string& a1, const std::exception& e);
void log_exception(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2,
                   const std::exception& e);
void log_exception(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2,
                   const std::string& a3, const std::exception& e);
void log_exception(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2,
                   const std::string& a3, const std::string& a4, const std::exception& e);
void log_warning_exception(const logger_t& h, const std::string& text, const std::exception& e);
void log_indent_in(const logger_t& h);
void log_indent_out(const logger_t& h);

// A log block: logs a step, and on leaving marks it " ok.", a given line, or " Failed.".
class log_scope_t {
public:
    struct silent_t {};
    static constexpr silent_t silent{};

    log_scope_t(const logger_t& h, const std::string& text);
    log_scope_t(const logger_t& h, const std::string& fmt, const std::string& a1);
    log_scope_t(const logger_t& h, const std::string& fmt, const std::string& a1, const std::string& a2);
    log_scope_t(silent_t, const logger_t& h, const std::string& text);
    log_scope_t(silent_t, const logger_t& h, const std::string& fmt, const std::string& a1);
    log_scope_t(silent_t, const logger_t& h, const std::string& fmt, const std::string& a1,
                const std::string& a2);
    ~log_scope_t();
    log_scope_t(const log_scope_t&) = delete;
    log_scope_t& operator=(const log_scope_t&) = delete;

    void ok();
    void finish(const std::string& text);
    void finish(const std::string& fmt, const std::string& a1);
    void finish(const std::string& fmt, const std::string& a1, const std::string& a2);
    void close_quietly();
    void set_text(const std::string& text);

private:
    void open(bool is_silent, const std::string& text);
    bool finished_ = false;
    bool silent_ = false;
    logger_t handle_;
    std::string text_;
};
