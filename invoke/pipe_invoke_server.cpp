#include "invoke/pipe_invoke_server.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/win/event.h"
#include "invoke/invoke_server_com.h"
#include "invoke/request_grammar.h"

#include <chrono>
#include <string_view>
#include <thread>
#include <utility>

namespace wrap {

namespace {

const std::wstring xml_response_prefix = L"xml:";

const logger_t& server_logger() {
    return logging::prx_logger();
}

} // namespace

CPipeInvokeSrv::CPipeInvokeSrv(const std::wstring& pipeName, std::shared_ptr<IInvokeDispatcher> commands)
    : stopEvent(std::make_shared<win::win_manual_reset_event_t>()), dispatcher(std::move(commands)) {
    try {
        log_scope_t scope(server_logger(), "Creating instance of invoke server. Pipe name: '%1'.",
                          to_ansi_nothrow(pipeName));
        pipe = win::pipes::CreateNamedPipeEndpoint(format_message_w(L"\\\\.\\pipe\\%1", pipeName));
        scope.ok();
    } catch (const std::exception& e) {
        exc::rethrow_with_message("Failed to create instance of invoke server. Pipe name: '%1'.",
                                  to_ansi_nothrow(pipeName), e);
    }
}

CPipeInvokeSrv::~CPipeInvokeSrv() {
    log_info(server_logger(), "Closing pipe invoke server.");
}

void CPipeInvokeSrv::WaitClientConnection() {
    exc::traced("Failed to create client connection.", [&] {
        log_scope_t scope(server_logger(), "Waiting input connection.");
        pipe->WaitClient(stopEvent, win::pipes::client_wait_limit_ms);
        scope.ok();
    });
}

void CPipeInvokeSrv::DispatchLoop() {
    log_scope_t scope(server_logger(), "Entering into a dispatch loop.");
    while (ProcessCommand())
        std::this_thread::sleep_for(std::chrono::milliseconds(pause_between_commands_ms));
    scope.finish("Leaving dispatch loop.");
}

bool CPipeInvokeSrv::ProcessCommand() {
    return exc::traced("Failed to execute client command.", [&] {
        log_scope_t scope(log_scope_t::silent, server_logger(), "Processing command.");
        win::pipes::byte_buffer_t message;
        if (!pipe->ReadMessage(message)) {
            scope.close_quietly();
            return false;
        }
        const win::pipes::byte_buffer_t response = ExecuteFrame(std::move(message));
        const bool sent = SendResponse(response);
        if (!sent)
            log_warning(server_logger(), "Response '%1' was not sent.",
                        to_ansi_nothrow(win::pipes::DecodeFrameText(response).text));
        scope.close_quietly();
        return sent;
    });
}

win::pipes::byte_buffer_t CPipeInvokeSrv::ExecuteFrame(const win::pipes::byte_buffer_t& message) {
    return Execute(request_text::Decode(message));
}

win::pipes::byte_buffer_t CPipeInvokeSrv::ExecuteFrame(win::pipes::byte_buffer_t&& message) {
    const request_text::frame_t request = request_text::Decode(message);
    win::pipes::byte_buffer_t().swap(message);
    return Execute(request);
}

std::wstring CPipeInvokeSrv::ExecuteRequest(const std::wstring& request) {
    return win::pipes::DecodeFrameText(ExecuteFrame(win::pipes::EncodeFrameText(request))).text;
}

win::pipes::byte_buffer_t CPipeInvokeSrv::Execute(const request_text::frame_t& request) {
    request_text::view_t command;
    request_text::view_t document;
    try {
        if (!request.terminated ||
            !request_grammar::parse(request_text::view_t(request.text), command, document))
            throw exc::runtime_exc_t("Unknown type of request: '%1'.", request_text::Narrow(request.text));
        const CRequestComScope com;
        dispatcher->OnSoapEnter(command, document);
        // Each document goes as soon as it is done with: a request of megabytes is held several
        // times over on its way, and its response as well.
        request_text::text_t response;
        {
            OutputArguments_t output;
            {
                InputArguments_t input(request_text::Load(request, document));
                dispatcher->Invoke(request_text::CommandName(commandName, command), input, output);
            }
            response = request_text::Serialize(output);
        }
        dispatcher->OnSoapExit(command, response);
        return request_text::XmlFrame(response);
    } catch (const std::exception& e) {
        dispatcher->OnCallFailed(command, document, e);
        return request_text::ErrorFrame(e);
    }
}

bool CPipeInvokeSrv::ParseRequest(const std::wstring& request, std::wstring& command,
                                  std::wstring& document) {
    std::wstring_view command_view;
    std::wstring_view document_view;
    if (!request_grammar::parse(std::wstring_view(request), command_view, document_view))
        return false;
    command = command_view;
    document = document_view;
    return true;
}

// Built in place: the document runs to megabytes.
std::wstring CPipeInvokeSrv::MakeXmlResponse(const std::wstring& document) {
    const std::wstring_view body = request_grammar::without_trailing_crlf(std::wstring_view(document));
    std::wstring response;
    response.reserve(xml_response_prefix.size() + body.size());
    response += xml_response_prefix;
    response += body;
    return response;
}

std::wstring CPipeInvokeSrv::MakeErrorResponse(const std::exception& error) {
    std::wstring text = L"n/a";
    if (const char* what = error.what())
        text = to_unicode_nothrow(what);
    return format_message_w(L"err:%1", text);
}

bool CPipeInvokeSrv::SendResponse(const win::pipes::byte_buffer_t& frame) {
    return pipe->WriteMessage(frame);
}

void RunPipeInvokeServer(const std::wstring& pipeName, std::shared_ptr<IInvokeDispatcher> dispatcher) {
    log_scope_t scope(server_logger(), "Start pipe invoker server. PipeName: '%1'.",
                      to_ansi_nothrow(pipeName));
    auto server = std::make_shared<CPipeInvokeSrv>(pipeName, std::move(dispatcher));
    server->WaitClientConnection();
    server->DispatchLoop();
    scope.ok();
    server.reset();
}

} // namespace wrap
