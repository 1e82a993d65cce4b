// The items list written straight as text, in the form the DOM's serialiser gives it: the
// list runs to megabytes, and the DOM would narrow every value to build its tree, print the
// tree and widen the whole text again.
#include "invoke/files_list_writer.h"

#include "common/format/unicode_units.h"

#include <cstdint>
#include <iterator>

namespace files_list_impl {

namespace {

bool needs_care(wchar_t c) {
    const auto u = static_cast<std::uint32_t>(c);
    return u < 0x20 || c == L'&' || c == L'<' || c == L'"' || !unicode::is_scalar_value(u);
}

// Values run to hundreds of characters, nearly all of them plain: they are judged a block at a
// time, with no branch inside a block, and copied a run at a time.
constexpr std::size_t block = 8;

bool block_needs_care(const wchar_t* text) {
    unsigned care = 0;
    for (std::size_t i = 0; i < block; ++i) {
        const auto u = static_cast<std::uint32_t>(text[i]);
        care |= (u < 0x20) | (u == '&') | (u == '<') | (u == '"') | (u - 0xD800 < 0x800) | (u > 0x10FFFF);
    }
    return care != 0;
}

// Where the plain run that starts at `from` ends.
const wchar_t* plain_run_end(const wchar_t* from, const wchar_t* end) {
    while (end - from >= static_cast<std::ptrdiff_t>(block) && !block_needs_care(from))
        from += block;
    while (from != end && !needs_care(*from))
        ++from;
    return from;
}

// As the serialiser escapes an attribute's value; the value ends at its first zero, as its
// conversion for the DOM ends it, and what is no character becomes U+FFFD as there.
void append_value(std::wstring& out, const std::wstring& value) {
    const wchar_t* it = value.data();
    const wchar_t* const end = it + value.size();
    for (;;) {
        const wchar_t* const plain_end = plain_run_end(it, end);
        out.append(it, plain_end);
        if (plain_end == end || *plain_end == L'\0')
            return;
        const wchar_t c = *plain_end;
        it = plain_end + 1;
        switch (c) {
        case L'&':
            out += L"&amp;";
            break;
        case L'<':
            out += L"&lt;";
            break;
        case L'"':
            out += L"&quot;";
            break;
        default:
            if (c < 0x20) {
                const wchar_t reference[] = {L'&', L'#', static_cast<wchar_t>(L'0' + c / 10),
                                             static_cast<wchar_t>(L'0' + c % 10), L';'};
                out.append(reference, std::size(reference));
            } else {
                out += static_cast<wchar_t>(unicode::replacement_character);
            }
        }
    }
}

void append_attribute(std::wstring& out, const std::wstring& name, const std::wstring& value) {
    out += L' ';
    out += name;
    out += L"=\"";
    append_value(out, value);
    out += L'"';
}

} // namespace

std::wstring write_document(const ItemsList& items) {
    const list_names_t& n = names();
    if (items.empty())
        return L"<" + n.root + L"/>";
    std::size_t estimate = 2 * n.root.size() + 5;
    for (const CFilesListItem& item : items)
        estimate +=
            100 + item.path.size() + item.mask.size() + item.fullPath.size() + item.relativePath.size();
    std::wstring out;
    out.reserve(estimate);
    out += L'<';
    out += n.root;
    out += L'>';
    for (const CFilesListItem& item : items) {
        out += L'<';
        out += n.item;
        append_attribute(out, n.recursive, item.recursive != 0 ? n.true_text : n.false_text);
        append_attribute(out, n.path, item.path);
        append_attribute(out, n.mask, item.mask);
        append_attribute(out, n.full_path, item.fullPath);
        append_attribute(out, n.relative_path, item.relativePath);
        out += L"/>";
    }
    out += L"</";
    out += n.root;
    out += L'>';
    return out;
}

} // namespace files_list_impl
