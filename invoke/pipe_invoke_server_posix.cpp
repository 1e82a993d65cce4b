// Requests as UTF-8, converted once from the frame: wide strings are four bytes a character
// here, and the parser, the trace and the serialised response all read or write UTF-8.
#include "invoke/pipe_invoke_server.h"

#include "common/exc/convert.h"
#include "common/xml/dom.h"
#include "invoke/arguments.h"
#include "invoke/invoke_server_com.h"
#include "invoke/pipe_text.h"
#include "invoke/request_grammar.h"

#include <algorithm>
#include <string_view>

namespace wrap {

namespace {

// The command's name is UTF-8 that the frame's conversion made, so it converts without fail;
// the ASCII that names nearly every command widens as it stands, into storage that the previous
// name leaves.
void assign_widened(std::wstring& wide, std::string_view utf8) {
    if (std::all_of(utf8.begin(), utf8.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        wide.assign(utf8.begin(), utf8.end());
    else
        wide = from_utf8(std::string(utf8));
}

std::string_view without_trailing_crlf(std::string_view text) {
    if (text.ends_with("\r\n"))
        text.remove_suffix(2);
    return text;
}

// The platform's parser reads the frame's wide text, which still holds a surrogate without its
// partner where the UTF-8 has U+FFFD, and refuses it.
dom_document_t load_document(const win::pipes::utf8_frame_t& request, std::string_view document) {
    const auto at = static_cast<std::size_t>(document.data() - request.text.data());
    if (request.first_unpaired != std::string::npos && request.first_unpaired >= at)
        dom_refuse_utf8(document);
    return dom_load_utf8(document);
}

} // namespace

win::pipes::byte_buffer_t CPipeInvokeSrv::ExecuteFrame(const win::pipes::byte_buffer_t& message) {
    return ExecuteUtf8(win::pipes::DecodeFrameUtf8(message));
}

win::pipes::byte_buffer_t CPipeInvokeSrv::ExecuteFrame(win::pipes::byte_buffer_t&& message) {
    const win::pipes::utf8_frame_t request = win::pipes::DecodeFrameUtf8(message);
    win::pipes::byte_buffer_t().swap(message);
    return ExecuteUtf8(request);
}

win::pipes::byte_buffer_t CPipeInvokeSrv::ExecuteUtf8(const win::pipes::utf8_frame_t& request) {
    std::string_view command;
    std::string_view document;
    if (!request.terminated)
        return FailedUtf8({}, {}, UnknownRequest(request.text));
    try {
        if (!request_grammar::parse(std::string_view(request.text), command, document))
            throw UnknownRequest(request.text);
        const CRequestComScope com;
        dispatcher->OnSoapEnter(command, document);
        // Each document goes as soon as it is done with: a request of megabytes is held several
        // times over on its way, and its response as well.
        std::string response;
        {
            OutputArguments_t output;
            {
                InputArguments_t input(load_document(request, document));
                assign_widened(commandName, command);
                dispatcher->Invoke(commandName, input, output);
            }
            response = output.SerializeUtf8();
        }
        dispatcher->OnSoapExit(command, response);
        return win::pipes::EncodeFrameUtf8("xml:", without_trailing_crlf(response));
    } catch (const std::exception& e) {
        return FailedUtf8(command, document, e);
    }
}

// The failure's lines go into the frame as they are: a failure to load a document of megabytes
// carries it whole.
win::pipes::byte_buffer_t CPipeInvokeSrv::FailedUtf8(std::string_view command, std::string_view document,
                                                     const std::exception& error) {
    dispatcher->OnCallFailed(command, document, error);
    const char* what = error.what();
    return win::pipes::EncodeFrameUtf8("err:", what != nullptr ? what : "n/a");
}

std::wstring CPipeInvokeSrv::ExecuteRequest(const std::wstring& request) {
    return win::pipes::DecodeFrameText(ExecuteFrame(win::pipes::EncodeFrameText(request))).text;
}

} // namespace wrap
