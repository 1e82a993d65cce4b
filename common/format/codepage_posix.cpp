// Wide text is UTF-32 here and the ANSI code page is UTF-8, so both code pages share one codec.
// Like the system's conversions called without flags, it never fails: each sequence that does
// not encode a Unicode scalar value becomes U+FFFD and the rest of the text is kept.
// Whole documents of several megabytes pass through here, nearly all of it ASCII: both directions
// size their result up front, write through a pointer, and take runs of ASCII a block at a time.
#include "common/format/codepage.h"

#include "common/format/ascii_runs.h"
#include "compat/unicode.h"

namespace format {

namespace {

using compat::scalar_or_replacement;
using format::is_ascii_block;
constexpr std::size_t ascii_block = format::block;

std::size_t utf8_size_of(std::wstring_view text) {
    std::size_t size = 0;
    std::size_t pos = 0;
    while (pos < text.size()) {
        if (text.size() - pos >= ascii_block && is_ascii_block(text.data() + pos)) {
            size += ascii_block;
            pos += ascii_block;
            continue;
        }
        size += compat::utf8_length(scalar_or_replacement(static_cast<std::uint32_t>(text[pos++])));
    }
    return size;
}

// The text's leading ASCII, narrowed a stage at a time into out, which has room for it: storage
// of megabytes is reserved, not filled with zeros first. Where the ASCII ended.
std::size_t append_ascii_prefix(std::wstring_view text, std::string& out) {
    constexpr std::size_t stage_size = 1024;
    char stage[stage_size];
    std::size_t pos = 0;
    while (pos < text.size()) {
        const std::wstring_view part = text.substr(pos, stage_size);
        const std::size_t narrowed = format::narrow_prefix(part, stage);
        out.append(stage, narrowed);
        pos += narrowed;
        if (narrowed < part.size())
            break;
    }
    return pos;
}

} // namespace

std::optional<std::string> wide_to_multibyte(code_page_t, std::wstring_view text, std::uint32_t&) {
    // Room for ASCII first, which is narrowed as it is judged; only text that turns out to hold
    // more is counted and sized again from there.
    std::string out;
    out.reserve(text.size());
    std::size_t pos = append_ascii_prefix(text, out);
    if (pos == text.size())
        return out;
    out.resize(pos + utf8_size_of(text.substr(pos)));
    char* cursor = out.data() + pos;
    while (pos < text.size()) {
        if (text.size() - pos >= ascii_block && is_ascii_block(text.data() + pos)) {
            cursor = compat::convert(cursor, text.data() + pos);
            pos += ascii_block;
            continue;
        }
        cursor = compat::put_utf8(cursor, scalar_or_replacement(static_cast<std::uint32_t>(text[pos++])));
    }
    return out;
}

std::optional<std::wstring> multibyte_to_wide(code_page_t, std::string_view text, std::uint32_t&) {
    // No sequence yields more characters than it has bytes.
    std::wstring out(text.size(), L'\0');
    wchar_t* cursor = out.data();
    std::size_t pos = 0;
    while (pos < text.size()) {
        if (text.size() - pos >= ascii_block && is_ascii_block(text.data() + pos)) {
            cursor = compat::convert(cursor, text.data() + pos);
            pos += ascii_block;
            continue;
        }
        const compat::decoded_t c = compat::decode_utf8(text.substr(pos));
        *cursor++ = static_cast<wchar_t>(c.value);
        pos += c.units;
    }
    out.resize(static_cast<std::size_t>(cursor - out.data()));
    return out;
}

// Both code pages are UTF-8: only what is not well-formed changes, each bad sequence to U+FFFD as
// the widening would read it. Nearly all text is well-formed and is only judged.
bool recode_utf8_in_place(code_page_t, std::string& text) {
    const std::string_view view(text);
    std::size_t pos = 0;
    while (pos < view.size()) {
        if (view.size() - pos >= ascii_block && is_ascii_block(view.data() + pos)) {
            pos += ascii_block;
            continue;
        }
        const compat::decoded_t c = compat::decode_utf8(view.substr(pos));
        if (!c.well_formed)
            break;
        pos += c.units;
    }
    if (pos == view.size())
        return true;
    std::string repaired(view.substr(0, pos));
    repaired.reserve(view.size() + view.size() / 2);
    char encoded[4];
    while (pos < view.size()) {
        const compat::decoded_t c = compat::decode_utf8(view.substr(pos));
        repaired.append(encoded, compat::put_utf8(encoded, c.value));
        pos += c.units;
    }
    text = std::move(repaired);
    return true;
}

} // namespace format
