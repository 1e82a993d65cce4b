#include "invoke/invoke_dispatcher.h"

#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/logging/log_t.h"

namespace wrap {

namespace {

// Joined in storage sized once, and handed to the log as the message itself: the document runs to
// megabytes, and the template "%1" would only copy it once more.
void trace_call(std::string_view tag, std::string_view command, std::string_view document) {
    std::string line;
    line.reserve(tag.size() + command.size() + 1 + document.size());
    line += tag;
    line += command;
    line += ':';
    line += document;
    const logger_t& rpc = logging::rpc_logger();
    if (const std::shared_ptr<logging::log_t> log = rpc.log)
        log->write_at_current_indent(logging::level_trace, rpc.format.get(), line);
}

std::string_view without_trailing_crlf(std::string_view text) {
    if (text.ends_with("\r\n"))
        text.remove_suffix(2);
    return text;
}

} // namespace

void IInvokeDispatcher::OnReservedHook(std::shared_ptr<void>, std::shared_ptr<void>) {}

void IInvokeDispatcher::OnSoapEnter(const std::wstring& command, const std::wstring& request) {
    OnSoapEnter(to_ansi_nothrow(command), to_ansi_nothrow(request));
}

void IInvokeDispatcher::OnSoapExit(const std::wstring& command, const std::wstring& response) {
    OnSoapExit(to_ansi_nothrow(command), to_ansi_nothrow(response));
}

void IInvokeDispatcher::OnSoapEnter(std::string_view command, std::string_view request) {
    log_trace(logging::rpc_logger(), "%1", std::string());
    trace_call("[SoapEnter] ", command, request);
}

void IInvokeDispatcher::OnSoapExit(std::string_view command, std::string_view response) {
    trace_call("[SoapExit] ", command, without_trailing_crlf(response));
}

void IInvokeDispatcher::OnCallFailed(const std::wstring& command, const std::wstring& request,
                                     const std::exception& error) {
    OnCallFailed(to_ansi_nothrow(command), to_ansi_nothrow(request), error);
}

void IInvokeDispatcher::OnCallFailed(std::string_view command, std::string_view,
                                     const std::exception& error) {
    log_exception(logging::rpc_logger(), "RPC method call has failed (%1).", std::string(command), error);
}

} // namespace wrap
