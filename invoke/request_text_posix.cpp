#include "invoke/request_text.h"

#include "common/exc/convert.h"
#include "common/format/format.h"
#include "common/xml/dom.h"
#include "invoke/request_grammar.h"

#include <algorithm>

namespace wrap::request_text {

frame_t Decode(const win::pipes::byte_buffer_t& message) {
    return win::pipes::DecodeFrameUtf8(message);
}

std::string Narrow(view_t request) {
    return std::string(request);
}

// The command's name is UTF-8 that the frame's conversion made, so it converts without fail;
// the ASCII that names nearly every command widens as it stands.
const std::wstring& CommandName(std::wstring& storage, view_t command) {
    if (std::all_of(command.begin(), command.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        storage.assign(command.begin(), command.end());
    else
        storage = from_utf8(std::string(command));
    return storage;
}

// The platform's parser reads the frame's wide text, which still holds a surrogate without its
// partner where the UTF-8 has U+FFFD, and refuses it.
InputArguments_t Load(const frame_t& request, view_t document) {
    const auto at = static_cast<std::size_t>(document.data() - request.text.data());
    if (request.first_unpaired != std::string::npos && request.first_unpaired >= at)
        dom_refuse_utf8(document);
    return InputArguments_t(dom_load_utf8(document));
}

text_t Serialize(const OutputArguments_t& output) {
    return output.SerializeUtf8();
}

win::pipes::byte_buffer_t XmlFrame(const text_t& document) {
    return win::pipes::EncodeFrameUtf8("xml:", request_grammar::without_trailing_crlf(view_t(document)));
}

// The failure's lines go into the frame as they are: a failure to load a document of megabytes
// carries it whole.
win::pipes::byte_buffer_t ErrorFrame(const std::exception& error) {
    const char* what = error.what();
    return win::pipes::EncodeFrameUtf8("err:", what != nullptr ? what : "n/a");
}

} // namespace wrap::request_text
