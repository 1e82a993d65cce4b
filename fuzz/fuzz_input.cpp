#include "fuzz/fuzz_input.h"

#include <cstdio>
#include <cstdlib>

namespace fuzz {

namespace {

// The length of the loose sequence a lead byte starts, with the bits it carries; 0 when
// the byte starts none.
std::size_t sequence_length(unsigned char lead, std::uint32_t& bits) {
    struct form_t {
        unsigned char mask, pattern;
        std::size_t length;
    };
    static constexpr form_t forms[] = {
        {0xE0, 0xC0, 2}, {0xF0, 0xE0, 3}, {0xF8, 0xF0, 4}, {0xFC, 0xF8, 5}, {0xFE, 0xFC, 6}};
    for (const form_t& form : forms) {
        if ((lead & form.mask) == form.pattern) {
            bits = lead & static_cast<unsigned char>(~form.mask);
            return form.length;
        }
    }
    return 0;
}

bool is_continuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

} // namespace

std::wstring wide_text(std::string_view bytes) {
    std::wstring text;
    text.reserve(bytes.size());
    std::size_t pos = 0;
    while (pos < bytes.size()) {
        const auto lead = static_cast<unsigned char>(bytes[pos]);
        std::uint32_t value = 0;
        const std::size_t length = sequence_length(lead, value);
        std::size_t i = 1;
        while (length != 0 && i < length && pos + i < bytes.size() &&
               is_continuation(static_cast<unsigned char>(bytes[pos + i]))) {
            value = (value << 6) | (static_cast<unsigned char>(bytes[pos + i]) & 0x3Fu);
            ++i;
        }
        if (length == 0 || i < length) {
            text.push_back(static_cast<wchar_t>(lead));
            ++pos;
            continue;
        }
        text.push_back(static_cast<wchar_t>(value));
        pos += length;
    }
    return text;
}

std::vector<std::string> split_fields(std::string_view bytes, std::size_t max_fields) {
    std::vector<std::string> fields;
    while (fields.size() + 1 < max_fields) {
        const std::size_t separator = bytes.find(field_separator);
        if (separator == std::string_view::npos)
            break;
        fields.emplace_back(bytes.substr(0, separator));
        bytes.remove_prefix(separator + 1);
    }
    fields.emplace_back(bytes);
    return fields;
}

bool has_no_scalar_value(std::wstring_view text) {
    for (const wchar_t character : text) {
        const auto value = static_cast<std::uint32_t>(character);
        if ((value >= 0xD800 && value <= 0xDFFF) || value > 0x10FFFF)
            return true;
    }
    return false;
}

std::wstring up_to_zero(const std::wstring& text) {
    return std::wstring(text.c_str());
}

std::string up_to_zero(const std::string& text) {
    return std::string(text.c_str());
}

void require(bool holds, const char* property) {
    if (holds)
        return;
    std::fprintf(stderr, "Property broken: %s\n", property);
    std::abort();
}

} // namespace fuzz
