// The text a request is read in, which is where the platforms' servers differ. Windows reads
// the frames' own UTF-16, which is what its wide strings and its DOM hold. Elsewhere wide
// strings are four bytes a character, and the parser, the trace and the serialised response
// all read or write UTF-8: the frame is converted to UTF-8 once and nothing is widened.
#pragma once

#include "invoke/arguments.h"
#include "invoke/pipe_text.h"

#include <exception>
#include <string>
#include <string_view>

namespace wrap::request_text {

#ifdef _WIN32
using char_t = wchar_t;
using frame_t = win::pipes::frame_text_t;
#else
using char_t = char;
using frame_t = win::pipes::utf8_frame_t;
#endif
using view_t = std::basic_string_view<char_t>;
using text_t = std::basic_string<char_t>;

frame_t Decode(const win::pipes::byte_buffer_t& message);
// The request as a failure line names it.
std::string Narrow(view_t request);
// The command's wide name, put into storage that the previous name leaves.
const std::wstring& CommandName(std::wstring& storage, view_t command);
// document is a part of request.text.
InputArguments_t Load(const frame_t& request, view_t document);
text_t Serialize(const OutputArguments_t& output);
win::pipes::byte_buffer_t XmlFrame(const text_t& document);
win::pipes::byte_buffer_t ErrorFrame(const std::exception& error);

} // namespace wrap::request_text
