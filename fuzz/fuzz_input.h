// What every fuzz target needs of its input: the bytes as narrow or wide text, split into
// fields, and a check that stops the run when a property of the code does not hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

// The separator of fields: a byte that UTF-8 text never holds.
inline constexpr char field_separator = '\xFF';

inline std::string_view bytes_of(const std::uint8_t* data, std::size_t size) {
    return std::string_view(reinterpret_cast<const char*>(data), size);
}

// UTF-8 read loosely: a lead byte with its continuation bytes gives its value even when
// overlong, a surrogate or beyond U+10FFFF (old 5- and 6-byte forms included); any other
// byte stands for itself. Seed files read as the text they show, and the fuzzer still
// reaches wide characters that no valid text holds.
std::wstring wide_text(std::string_view bytes);

// At most max_fields pieces; the last one keeps any further separators.
std::vector<std::string> split_fields(std::string_view bytes, std::size_t max_fields);

// Does any character lie in the surrogate range or beyond U+10FFFF?
bool has_no_scalar_value(std::wstring_view text);

// The text up to its first zero character, as the C-string readers see it.
std::wstring up_to_zero(const std::wstring& text);
std::string up_to_zero(const std::string& text);

// Aborts with the property's words when it does not hold, so that libFuzzer keeps the input.
void require(bool holds, const char* property);

} // namespace fuzz
