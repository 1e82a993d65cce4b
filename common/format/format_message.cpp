// The %1..%4 template formatter. Markers are read the way strtol reads a number, so a marker
// ends at the first character that is no digit and a bad one is copied rather than rejected.
#include "common/format/format.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace {

template <typename CharT> bool is_c_space(CharT c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

template <typename CharT> bool is_digit(CharT c) {
    return c >= '0' && c <= '9';
}

struct marker_t {
    long long number;
    std::size_t length; // characters consumed behind the '%'
};

// strtol at base 10 from text[pos]: leading blanks and a sign, saturating at 32 bits.
template <typename CharT>
std::optional<marker_t> read_marker(std::basic_string_view<CharT> text, std::size_t pos) {
    std::size_t i = pos;
    while (i < text.size() && is_c_space(text[i]))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        negative = text[i] == '-';
        ++i;
    }
    if (i >= text.size() || !is_digit(text[i]))
        return std::nullopt;
    long long value = 0;
    const long long limit = negative ? -static_cast<long long>(INT32_MIN) : INT32_MAX;
    for (; i < text.size() && is_digit(text[i]); ++i) {
        if (value < limit)
            value = std::min(limit, value * 10 + (text[i] - '0'));
    }
    return marker_t{negative ? -value : value, i - pos};
}

template <typename CharT> std::basic_string<CharT> decimal(long long value) {
    const std::string digits = std::to_string(value);
    return std::basic_string<CharT>(digits.begin(), digits.end());
}

template <typename CharT>
std::basic_string<CharT> expand(std::basic_string_view<CharT> fmt,
                                std::span<const std::basic_string_view<CharT>> args) {
    // The template ends at its terminating zero, as a C string would.
    fmt = fmt.substr(0, fmt.find(CharT(0)));
    std::basic_string<CharT> out;
    out.reserve(fmt.size() + 64);
    std::size_t pos = 0;
    while (pos < fmt.size()) {
        const CharT c = fmt[pos++];
        if (c != '%') {
            out += c;
            continue;
        }
        const std::optional<marker_t> marker = read_marker(fmt, pos);
        if (!marker) {
            out += c;
            continue;
        }
        pos += marker->length;
        if (marker->number < 1 || marker->number > static_cast<long long>(args.size())) {
            out += c;
            out += decimal<CharT>(marker->number);
            continue;
        }
        out += args[static_cast<std::size_t>(marker->number - 1)];
    }
    return out;
}

} // namespace

std::string format_message(const std::string& fmt, const std::string& a1) {
    const std::array<std::string_view, 1> args{a1};
    return expand<char>(fmt, args);
}

std::string format_message(const std::string& fmt, const std::string& a1, const std::string& a2) {
    const std::array<std::string_view, 2> args{a1, a2};
    return expand<char>(fmt, args);
}

std::string format_message(const std::string& fmt, const std::string& a1, const std::string& a2,
                           const std::string& a3) {
    const std::array<std::string_view, 3> args{a1, a2, a3};
    return expand<char>(fmt, args);
}

std::string format_message(const std::string& fmt, const std::string& a1, const std::string& a2,
                           const std::string& a3, const std::string& a4) {
    const std::array<std::string_view, 4> args{a1, a2, a3, a4};
    return expand<char>(fmt, args);
}

std::wstring format_message_w(const std::wstring& fmt, const std::wstring& a1) {
    const std::array<std::wstring_view, 1> args{a1};
    return expand<wchar_t>(fmt, args);
}

std::wstring format_message_w(const std::wstring& fmt, const std::wstring& a1, const std::wstring& a2) {
    const std::array<std::wstring_view, 2> args{a1, a2};
    return expand<wchar_t>(fmt, args);
}

std::string format_message(const std::string& fmt, const std::vector<std::string>& args) {
    const std::vector<std::string_view> views(args.begin(), args.end());
    return expand<char>(fmt, views);
}
