// What a test reads back of what its subject wrote: a whole file, and whether a text holds
// a piece of another.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace test_support {

// The whole content of a file, or nothing when it cannot be read.
inline std::string read_file(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

inline bool contains(const std::wstring& text, const std::wstring& part) {
    return text.find(part) != std::wstring::npos;
}

} // namespace test_support
