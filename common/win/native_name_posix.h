// Names as the system stores them (bytes, UTF-8 by convention) and as the wrappers show them
// (wide).
#pragma once

#include <string>

namespace win {

// Bytes that are not UTF-8 are taken one by one, so that no name is lost.
std::wstring wide_from_native_name(const char* name);

// A name given as bytes, such as a token of the command line, carried whole in wide text: each
// byte of a sequence that is not UTF-8 stands as one of the lone surrogates U+DC80 to U+DCFF.
// Every text conversion shows those as U+FFFD, and native_name_bytes gives back the bytes.
std::wstring wide_from_name_bytes(const std::string& bytes);
std::string native_name_bytes(const std::wstring& name);

} // namespace win
