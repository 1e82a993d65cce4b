// Wide text is UTF-32 here and the ANSI code page is UTF-8, so both code pages share one strict
// codec: what does not encode a Unicode scalar value fails as the system's conversions do.
// Whole documents of several megabytes pass through here, nearly all of it ASCII: both directions
// size their result up front, write through a pointer, and take runs of ASCII a block at a time.
#include "common/format/codepage.h"

#include "common/format/ascii_runs.h"
#include "compat/utf8_codec.h"

namespace format_impl {

namespace {

using compat::utf8::decode_at;
using compat::utf8::is_scalar_value;
using format_impl::ascii::is_ascii_block;
using format_impl::ascii::put_block;
constexpr std::size_t ascii_block = format_impl::ascii::block;

const std::uint32_t no_unicode_translation = 1113;
// The UTF-8 size of the text; nullopt when a character is no scalar value.
std::optional<std::size_t> utf8_size_of(std::wstring_view text) {
    std::size_t size = 0;
    std::size_t pos = 0;
    while (pos < text.size()) {
        if (text.size() - pos >= ascii_block && is_ascii_block(text.data() + pos)) {
            size += ascii_block;
            pos += ascii_block;
            continue;
        }
        const auto c = static_cast<std::uint32_t>(text[pos++]);
        if (!is_scalar_value(c))
            return std::nullopt;
        size += compat::utf8::encoded_length(c);
    }
    return size;
}

} // namespace

std::optional<std::string> wide_to_multibyte(code_page_t, std::wstring_view text, std::uint32_t& error) {
    // Sized for ASCII first, which is narrowed as it is judged; only text that turns out to hold
    // more is counted and sized again from there.
    std::string out(text.size(), '\0');
    std::size_t pos = ascii::narrow_prefix(text, out.data());
    if (pos == text.size())
        return out;
    const std::optional<std::size_t> rest_size = utf8_size_of(text.substr(pos));
    if (!rest_size) {
        error = no_unicode_translation;
        return std::nullopt;
    }
    out.resize(pos + *rest_size);
    char* cursor = out.data() + pos;
    while (pos < text.size()) {
        if (text.size() - pos >= ascii_block && is_ascii_block(text.data() + pos)) {
            cursor = put_block(cursor, text.data() + pos);
            pos += ascii_block;
            continue;
        }
        cursor = compat::utf8::put(cursor, static_cast<std::uint32_t>(text[pos++]));
    }
    return out;
}

std::optional<std::wstring> multibyte_to_wide(code_page_t, std::string_view text, std::uint32_t& error) {
    // No sequence yields more characters than it has bytes.
    std::wstring out(text.size(), L'\0');
    wchar_t* cursor = out.data();
    std::size_t pos = 0;
    while (pos < text.size()) {
        if (text.size() - pos >= ascii_block && is_ascii_block(text.data() + pos)) {
            cursor = put_block(cursor, text.data() + pos);
            pos += ascii_block;
            continue;
        }
        const auto lead = static_cast<unsigned char>(text[pos]);
        if (lead < 0x80) {
            *cursor++ = static_cast<wchar_t>(lead);
            ++pos;
            continue;
        }
        const std::optional<std::uint32_t> c = decode_at(text, pos);
        if (!c) {
            error = no_unicode_translation;
            return std::nullopt;
        }
        *cursor++ = static_cast<wchar_t>(*c);
    }
    out.resize(static_cast<std::size_t>(cursor - out.data()));
    return out;
}

} // namespace format_impl
