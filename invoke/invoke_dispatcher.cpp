#include "invoke/invoke_dispatcher.h"

#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/logging/log_t.h"
#include "invoke/request_grammar.h"

namespace wrap {

namespace {

// The log that the trace goes to, if anything is written yet: before that, a document of megabytes
// would be joined into a line for nothing. The handle holds the log for the process's life.
logging::log_t* trace_log() {
    logging::log_t* const log = logging::rpc_logger().log.get();
    return log != nullptr && log->has_receiver() ? log : nullptr;
}

// Joined in storage sized once, and handed to the log as the message itself: the document runs to
// megabytes, and the template "%1" would only copy it once more.
void trace_call(logging::log_t* log, std::string_view tag, std::string_view command,
                std::string_view document) {
    std::string line;
    line.reserve(tag.size() + command.size() + 1 + document.size());
    line += tag;
    line += command;
    line += ':';
    line += document;
    log->write_at_current_indent(logging::level_trace, logging::rpc_logger().format.get(), line);
}

} // namespace

void IInvokeDispatcher::OnReservedHook(std::shared_ptr<void>, std::shared_ptr<void>) {}

void IInvokeDispatcher::OnSoapEnter(std::wstring_view command, std::wstring_view request) {
    OnSoapEnter(to_ansi_nothrow(std::wstring(command)), to_ansi_nothrow(std::wstring(request)));
}

void IInvokeDispatcher::OnSoapExit(std::wstring_view command, std::wstring_view response) {
    OnSoapExit(to_ansi_nothrow(std::wstring(command)), to_ansi_nothrow(std::wstring(response)));
}

void IInvokeDispatcher::OnSoapEnter(std::string_view command, std::string_view request) {
    if (logging::log_t* const log = trace_log()) {
        log_trace(logging::rpc_logger(), "%1", std::string());
        trace_call(log, "[SoapEnter] ", command, request);
    }
}

void IInvokeDispatcher::OnSoapExit(std::string_view command, std::string_view response) {
    if (logging::log_t* const log = trace_log())
        trace_call(log, "[SoapExit] ", command, request_grammar::without_trailing_crlf(response));
}

void IInvokeDispatcher::OnCallFailed(std::wstring_view command, std::wstring_view request,
                                     const std::exception& error) {
    OnCallFailed(to_ansi_nothrow(std::wstring(command)), to_ansi_nothrow(std::wstring(request)), error);
}

void IInvokeDispatcher::OnCallFailed(std::string_view command, std::string_view,
                                     const std::exception& error) {
    log_exception(logging::rpc_logger(), "RPC method call has failed (%1).", std::string(command), error);
}

} // namespace wrap
