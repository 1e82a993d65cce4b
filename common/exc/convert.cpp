// Conversions between wide text, the ANSI code page and UTF-8. Text counts up to its first zero
// character, as it does for the platform calls that take it with its terminator.
#include "common/exc/convert.h"

#include "common/exc/exc.h"
#include "common/format/codepage.h"

#include <utility>

namespace {

using format::code_page_t;

std::string narrow(code_page_t code_page, const std::wstring& text, const char* failure) {
    std::uint32_t error = 0;
    std::optional<std::string> result = format::narrow_up_to_zero(code_page, text, error);
    if (!result)
        throw exc::win_sys_exc_t(failure, error);
    return std::move(*result);
}

std::wstring widen(code_page_t code_page, const std::string& text, const char* failure) {
    std::uint32_t error = 0;
    std::optional<std::wstring> result = format::widen_up_to_zero(code_page, text, error);
    if (!result)
        throw exc::win_sys_exc_t(failure, text, error);
    return std::move(*result);
}

std::string recode_utf8(code_page_t code_page, const std::string& source) {
    std::string text = source.substr(0, source.find('\0'));
    if (format::recode_utf8_in_place(code_page, text))
        return text;
    const std::wstring wide = from_utf8(text);
    return code_page == code_page_t::utf8 ? to_utf8(wide) : to_ansi(wide);
}

} // namespace

std::string to_ansi(const std::wstring& text) {
    return narrow(code_page_t::ansi, text, "Unicode string cannot be converted to multibyte string.");
}

std::wstring to_unicode(const std::string& text) {
    return widen(code_page_t::ansi, text,
                 "Multibyte string cannot be converted to unicode string. Source string: [%1].");
}

std::string to_utf8(const std::wstring& text) {
    return narrow(code_page_t::utf8, text, "Unicode string cannot be converted to UTF8 string.");
}

std::wstring from_utf8(const std::string& text) {
    return widen(code_page_t::utf8, text,
                 "Multibyte UTF8 string cannot be converted to unicode string. Source string: [%1].");
}

std::string utf8_round_trip(const std::string& text) {
    return recode_utf8(code_page_t::utf8, text);
}

std::string utf8_to_ansi(const std::string& text) {
    return recode_utf8(code_page_t::ansi, text);
}
