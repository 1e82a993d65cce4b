// The text of a frame as it travels: UTF-16 little-endian, closed by one U+0000.
#pragma once

#include "invoke/pipe_handler.h"

#include <string>
#include <string_view>

namespace win::pipes {

template <class Text> struct frame_of_t {
    Text text;
    // Did the bytes carry the closing U+0000? Text behind it is not part of the frame.
    bool terminated = false;
};
using frame_text_t = frame_of_t<std::wstring>;
// The frame's text as UTF-8, which the XML parser and the log read, without wide strings
// between. What is not well-formed becomes U+FFFD, as the system's conversions without flags
// make it: a surrogate without its partner, and for each bad UTF-8 sequence its maximal subpart.
struct utf8_frame_t : frame_of_t<std::string> {
    // Where the first surrogate without its partner stood, as the offset of its U+FFFD in text;
    // npos for none. XML refuses such a character, which the wide text would still hold.
    std::size_t first_unpaired = std::string::npos;
};

// Units that are no valid UTF-16 (a lone surrogate) are kept as they stand, as the
// platform's own wide strings would keep them; an odd last byte is dropped.
frame_text_t DecodeFrameText(const byte_buffer_t& bytes);
// The frame for a text, with its closing U+0000.
byte_buffer_t EncodeFrameText(const std::wstring& text);

// An odd last byte is dropped.
utf8_frame_t DecodeFrameUtf8(const byte_buffer_t& bytes);
// The frame for a text given in two parts (a prefix and a document, say), with its closing U+0000.
byte_buffer_t EncodeFrameUtf8(std::string_view head, std::string_view body = std::string_view());

} // namespace win::pipes
