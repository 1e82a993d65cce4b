#include "invoke/request_text.h"

#include "common/format/format.h"
#include "invoke/pipe_invoke_server.h"

namespace wrap::request_text {

frame_t Decode(const win::pipes::byte_buffer_t& message) {
    return win::pipes::DecodeFrameText(message);
}

std::string Narrow(view_t request) {
    return to_ansi_nothrow(std::wstring(request));
}

const std::wstring& CommandName(std::wstring& storage, view_t command) {
    storage.assign(command);
    return storage;
}

InputArguments_t Load(const frame_t&, view_t document) {
    return InputArguments_t(std::wstring(document));
}

text_t Serialize(const OutputArguments_t& output) {
    return output.Serialize();
}

win::pipes::byte_buffer_t XmlFrame(const text_t& document) {
    return win::pipes::EncodeFrameText(CPipeInvokeSrv::MakeXmlResponse(document));
}

win::pipes::byte_buffer_t ErrorFrame(const std::exception& error) {
    return win::pipes::EncodeFrameText(CPipeInvokeSrv::MakeErrorResponse(error));
}

} // namespace wrap::request_text
