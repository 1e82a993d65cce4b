// File names as the file system stores them (bytes, UTF-8 by convention) and
// as the wrappers show them (wide).
#pragma once

#include <string>

namespace win {

// Bytes that are not UTF-8 are taken one by one, so that no name is lost.
std::wstring wide_from_native_name(const char* name);

} // namespace win
