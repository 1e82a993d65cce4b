// The system's code-page conversions, sized first and then filled.
#include "common/format/codepage.h"

#include "compat/win_types.h"

#include <vector>

namespace format {

namespace {

UINT windows_code_page(code_page_t code_page) {
    return code_page == code_page_t::utf8 ? CP_UTF8 : CP_ACP;
}

// The conversion asked for its size, then made into a buffer of that size and a closing zero.
// convert(nullptr, 0) answers the size; any answer below one is the system's refusal.
template <typename Text, typename Convert>
std::optional<Text> sized_then_filled(Convert convert, std::uint32_t& error) {
    const int size = convert(nullptr, 0);
    std::vector<typename Text::value_type> buffer(static_cast<std::size_t>(size < 1 ? 0 : size) + 1);
    if (size < 1 || convert(buffer.data(), size) < 1) {
        error = GetLastError();
        return std::nullopt;
    }
    return Text(buffer.data());
}

} // namespace

std::optional<std::string> wide_to_multibyte(code_page_t code_page, std::wstring_view text,
                                             std::uint32_t& error) {
    return sized_then_filled<std::string>(
        [&](char* out, int size) {
            return WideCharToMultiByte(windows_code_page(code_page), 0, text.data(),
                                       static_cast<int>(text.size()), out, size, nullptr, nullptr);
        },
        error);
}

std::optional<std::wstring> multibyte_to_wide(code_page_t code_page, std::string_view text,
                                              std::uint32_t& error) {
    return sized_then_filled<std::wstring>(
        [&](wchar_t* out, int size) {
            return MultiByteToWideChar(windows_code_page(code_page), 0, text.data(),
                                       static_cast<int>(text.size()), out, size);
        },
        error);
}

// Neither code page is UTF-8's own here, or its replacements might differ from the system's.
bool recode_utf8_in_place(code_page_t, std::string&) {
    return false;
}

} // namespace format
