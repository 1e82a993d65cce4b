// Requests as the platform's wide text, which is the frames' own UTF-16 and what its DOM reads.
#include "invoke/pipe_invoke_server.h"

#include "common/format/format.h"
#include "invoke/arguments.h"
#include "invoke/invoke_server_com.h"
#include "invoke/pipe_text.h"

namespace wrap {

win::pipes::byte_buffer_t CPipeInvokeSrv::ExecuteFrame(const win::pipes::byte_buffer_t& message) {
    const win::pipes::frame_text_t request = win::pipes::DecodeFrameText(message);
    return win::pipes::EncodeFrameText(request.terminated ? ExecuteRequest(request.text)
                                                          : RejectRequest(request.text));
}

win::pipes::byte_buffer_t CPipeInvokeSrv::ExecuteFrame(win::pipes::byte_buffer_t&& message) {
    return ExecuteFrame(static_cast<const win::pipes::byte_buffer_t&>(message));
}

std::wstring CPipeInvokeSrv::ExecuteRequest(const std::wstring& request) {
    std::wstring command;
    std::wstring document;
    try {
        if (!ParseRequest(request, command, document))
            throw UnknownRequest(to_ansi_nothrow(request));
        const CRequestComScope com;
        dispatcher->OnSoapEnter(command, document);
        InputArguments_t input(document);
        OutputArguments_t output;
        dispatcher->Invoke(command, input, output);
        const std::wstring response = output.Serialize();
        dispatcher->OnSoapExit(command, response);
        return MakeXmlResponse(response);
    } catch (const std::exception& e) {
        return FailedResponse(command, document, e);
    }
}

} // namespace wrap
