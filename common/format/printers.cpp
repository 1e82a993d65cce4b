// Printers and parsers for the values that go into messages.
#include "common/format/format.h"

#include <cstdio>
#include <sstream>

namespace {
const std::size_t log_text_limit = 128;
} // namespace

std::string bool_to_string(bool value) {
    return value ? "true" : "false";
}

// Lenient on purpose: only "false" (any case) and "0" are false, every other text is true.
bool string_to_bool(const std::string& text) {
    if (iequals(text, "true"))
        return true;
    if (iequals(text, "false"))
        return false;
    return text != "0";
}

std::string num_to_string(std::int32_t value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

std::string num_to_string(std::uint64_t value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

std::string hex_to_string(std::uint32_t value) {
    char buffer[11];
    std::snprintf(buffer, sizeof buffer, "0x%08x", static_cast<unsigned>(value));
    return buffer;
}

// Counted in characters, so that a cut never falls inside one; the text goes through wide text,
// which the conversions can always give.
std::string shorten_for_log(const std::string& text) {
    if (text.size() <= log_text_limit)
        return text;
    const std::wstring characters = to_unicode_nothrow(text);
    if (characters.size() <= log_text_limit)
        return text;
    return to_ansi_nothrow(characters.substr(0, log_text_limit)) +
           "..., length: " + num_to_string(static_cast<std::uint64_t>(characters.size()));
}
