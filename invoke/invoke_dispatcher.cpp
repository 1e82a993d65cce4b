#include "invoke/invoke_dispatcher.h"

#include "common/format/format.h"
#include "common/logging/log.h"

namespace wrap {

namespace {

const std::wstring crlf = L"\r\n";

bool ends_with_crlf(const std::wstring& text) {
    return text.size() >= crlf.size() && text.compare(text.size() - crlf.size(), crlf.size(), crlf) == 0;
}

// Joined in storage sized once: the document runs to megabytes.
void trace_call(const std::string& tag, const std::wstring& command, const std::wstring& document) {
    const std::string command_text = to_ansi_nothrow(command);
    const std::string document_text = to_ansi_nothrow(document);
    std::string line;
    line.reserve(tag.size() + command_text.size() + 1 + document_text.size());
    line += tag;
    line += command_text;
    line += ':';
    line += document_text;
    log_trace(logging::rpc_logger(), "%1", line);
}

} // namespace

void IInvokeDispatcher::OnReservedHook(std::shared_ptr<void>, std::shared_ptr<void>) {}

void IInvokeDispatcher::OnSoapEnter(const std::wstring& command, const std::wstring& request) {
    log_trace(logging::rpc_logger(), "%1", std::string());
    trace_call("[SoapEnter] ", command, request);
}

void IInvokeDispatcher::OnSoapExit(const std::wstring& command, const std::wstring& response) {
    // The response runs to megabytes: it is copied only when there is a line end to drop.
    if (ends_with_crlf(response))
        trace_call("[SoapExit] ", command, response.substr(0, response.size() - crlf.size()));
    else
        trace_call("[SoapExit] ", command, response);
}

void IInvokeDispatcher::OnCallFailed(const std::wstring& command, const std::wstring&,
                                     const std::exception& error) {
    log_exception(logging::rpc_logger(), "RPC method call has failed (%1).", to_ansi_nothrow(command), error);
}

} // namespace wrap
