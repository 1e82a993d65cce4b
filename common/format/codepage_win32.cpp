// The system's code-page conversions, sized first and then filled.
#include "common/format/codepage.h"

#include "compat/win_types.h"

#include <vector>

namespace format_impl {

namespace {

UINT windows_code_page(code_page_t code_page) {
    return code_page == code_page_t::utf8 ? CP_UTF8 : CP_ACP;
}

} // namespace

std::optional<std::string> wide_to_multibyte(code_page_t code_page, std::wstring_view text,
                                             std::uint32_t& error) {
    const UINT cp = windows_code_page(code_page);
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(cp, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    if (size < 1) {
        error = GetLastError();
        return std::nullopt;
    }
    std::vector<char> buffer(static_cast<std::size_t>(size) + 1, '\0');
    if (WideCharToMultiByte(cp, 0, text.data(), length, buffer.data(), size, nullptr, nullptr) < 1) {
        error = GetLastError();
        return std::nullopt;
    }
    return std::string(buffer.data());
}

std::optional<std::wstring> multibyte_to_wide(code_page_t code_page, std::string_view text,
                                              std::uint32_t& error) {
    const UINT cp = windows_code_page(code_page);
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(cp, 0, text.data(), length, nullptr, 0);
    if (size < 1) {
        error = GetLastError();
        return std::nullopt;
    }
    std::vector<wchar_t> buffer(static_cast<std::size_t>(size) + 1, L'\0');
    if (MultiByteToWideChar(cp, 0, text.data(), length, buffer.data(), size) < 1) {
        error = GetLastError();
        return std::nullopt;
    }
    return std::wstring(buffer.data());
}

// Neither code page is UTF-8's own here, or its replacements might differ from the system's.
bool recode_utf8_in_place(code_page_t, std::string&) {
    return false;
}

} // namespace format_impl
