// The text of a frame as it travels: UTF-16 little-endian, closed by one U+0000.
#pragma once

#include "invoke/pipe_handler.h"

#include <string>

namespace win::pipes {

struct frame_text_t {
    std::wstring text;
    // Did the bytes carry the closing U+0000? Text behind it is not part of the frame.
    bool terminated = false;
};

// Units that are no valid UTF-16 (a lone surrogate) are kept as they stand, as the
// platform's own wide strings would keep them; an odd last byte is dropped.
frame_text_t DecodeFrameText(const byte_buffer_t& bytes);
// The frame for a text, with its closing U+0000.
byte_buffer_t EncodeFrameText(const std::wstring& text);

} // namespace win::pipes
