// What the text conversions ask of the platform. Inputs hold no zero character; the caller
// has already cut them at the first one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace format {

enum class code_page_t { ansi, utf8 };

// nullopt on failure, with the platform's error code in `error`.
std::optional<std::string> wide_to_multibyte(code_page_t code_page, std::wstring_view text,
                                             std::uint32_t& error);
std::optional<std::wstring> multibyte_to_wide(code_page_t code_page, std::string_view text,
                                              std::uint32_t& error);

// The same for text up to its first zero character: empty text converts without a platform call.
std::optional<std::string> narrow_up_to_zero(code_page_t code_page, const std::wstring& text,
                                             std::uint32_t& error);
std::optional<std::wstring> widen_up_to_zero(code_page_t code_page, const std::string& text,
                                             std::uint32_t& error);

// Recodes UTF-8 text (no zero in it) in place into the given code page, as widening and narrowing
// it in turn would, where that needs no wide text between; false, the text untouched, where it does.
bool recode_utf8_in_place(code_page_t code_page, std::string& text);

} // namespace format
