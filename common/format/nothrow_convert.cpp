// Conversions for text that only goes into a message: a failure must never hide
// the failure being reported, so it becomes a fixed text.
#include "common/format/codepage.h"
#include "common/format/format.h"

namespace format {

namespace {

template <class Out, class CharT, class Convert>
std::optional<Out> up_to_zero(const std::basic_string<CharT>& text, Convert convert) {
    const std::basic_string_view<CharT> input(text.c_str());
    return input.empty() ? std::optional<Out>(Out()) : convert(input);
}

} // namespace

std::optional<std::string> narrow_up_to_zero(code_page_t code_page, const std::wstring& text,
                                             std::uint32_t& error) {
    return up_to_zero<std::string>(
        text, [&](std::wstring_view input) { return wide_to_multibyte(code_page, input, error); });
}

std::optional<std::wstring> widen_up_to_zero(code_page_t code_page, const std::string& text,
                                             std::uint32_t& error) {
    return up_to_zero<std::wstring>(
        text, [&](std::string_view input) { return multibyte_to_wide(code_page, input, error); });
}

} // namespace format

namespace {

template <class Out, class In, class Convert>
Out converted_or(const In& text, Convert convert, const typename Out::value_type* failed) noexcept {
    try {
        std::uint32_t error = 0;
        if (std::optional<Out> out = convert(format::code_page_t::ansi, text, error))
            return std::move(*out);
    } catch (const std::exception&) {
    }
    return failed;
}

} // namespace

std::string to_ansi_nothrow(const std::wstring& text) noexcept {
    return converted_or<std::string>(text, &format::narrow_up_to_zero, "UNICODE->ANSI failed");
}

std::wstring to_unicode_nothrow(const std::string& text) noexcept {
    return converted_or<std::wstring>(text, &format::widen_up_to_zero, L"ANSI -> UNICODE failed.");
}
