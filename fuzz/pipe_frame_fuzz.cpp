// The bytes of one pipe message: decoded to frame text, split into command and document,
// and encoded again.
#include "fuzz/fuzz_input.h"
#include "invoke/pipe_invoke_server.h"
#include "invoke/pipe_text.h"

#include <algorithm>

namespace {

// Re-encoding gives back the units before the terminator, byte for byte (an odd last
// byte dropped), with one terminator behind them: pairs and lone surrogates alike.
void check_encoding_restores_the_units(const win::pipes::byte_buffer_t& bytes,
                                       const win::pipes::frame_text_t& frame) {
    const win::pipes::byte_buffer_t again = win::pipes::EncodeFrameText(frame.text);
    fuzz::require(again.size() >= 2 && again[again.size() - 2] == 0 && again.back() == 0,
                  "an encoded frame ends with its terminator");
    const std::size_t body = again.size() - 2;
    fuzz::require(body <= bytes.size() && std::equal(again.begin(), again.begin() + body, bytes.begin()),
                  "encoding a decoded frame restores its units");
    const bool stopped_at_terminator = body + 2 <= bytes.size() && bytes[body] == 0 && bytes[body + 1] == 0;
    fuzz::require(frame.terminated == stopped_at_terminator,
                  "terminated means a zero unit followed the text");
    if (!frame.terminated)
        fuzz::require(body == bytes.size() / 2 * 2, "an unterminated frame keeps every whole unit");
}

void check_request_split(const std::wstring& request) {
    std::wstring command;
    std::wstring document;
    if (!wrap::CPipeInvokeSrv::ParseRequest(request, command, document))
        return;
    fuzz::require(command.find(L' ') == std::wstring::npos, "a command name holds no space");
    const std::size_t expected = command.size() + document.size() + 9;
    fuzz::require(request.size() == expected, "command and document are the whole request but prefixes");
    fuzz::require(request.compare(4, command.size(), command) == 0, "the command follows its prefix");
    fuzz::require(request.compare(request.size() - document.size(), document.size(), document) == 0,
                  "the document ends the request");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const win::pipes::byte_buffer_t bytes(data, data + size);
    const win::pipes::frame_text_t frame = win::pipes::DecodeFrameText(bytes);
    fuzz::require(frame.text.find(L'\0') == std::wstring::npos, "frame text stops at its terminator");
    check_encoding_restores_the_units(bytes, frame);
    check_request_split(frame.text);
    return 0;
}
