#include "common/logging/log.h"
#include "common/logging/log_t.h"

namespace logging {

namespace {

logger_t make_handle(std::shared_ptr<log_t> log, const std::string& tag) {
    return logger_t{std::move(log), std::make_shared<format::line_format_t>(tag)};
}

} // namespace

const logger_t& lib_logger() {
    static const logger_t handle = make_handle(main_log(), "");
    return handle;
}

const logger_t& tool_logger() {
    static const logger_t handle = make_handle(main_log(), "Mirrack");
    return handle;
}

const logger_t& prx_logger() {
    static const logger_t handle = make_handle(main_log(), "prx");
    return handle;
}

const logger_t& rpc_logger() {
    static const logger_t handle = make_handle(main_log(), "rpc");
    return handle;
}

const logger_t& dbg_logger() {
    static const logger_t handle = make_handle(debug_log(), "dbg");
    return handle;
}

const logger_t& startup_logger() {
    static const logger_t handle = make_handle(main_log(), "");
    return handle;
}

} // namespace logging
