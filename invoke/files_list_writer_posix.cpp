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
    return c < 0x20 || c == L'&' || c == L'<' || c == L'"' ||
           !unicode::is_scalar_value(static_cast<std::uint32_t>(c));
}

// As the serialiser escapes an attribute's value; the value ends at its first zero, as its
// conversion for the DOM ends it, and what is no character becomes U+FFFD as there.
void append_value(std::wstring& out, const std::wstring& value) {
    auto plain_start = value.begin();
    for (auto it = value.begin();; ++it) {
        if (it != value.end() && !needs_care(*it))
            continue;
        out.append(plain_start, it);
        if (it == value.end() || *it == L'\0')
            return;
        plain_start = it + 1;
        switch (*it) {
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
            if (*it < 0x20) {
                const wchar_t reference[] = {L'&', L'#', static_cast<wchar_t>(L'0' + *it / 10),
                                             static_cast<wchar_t>(L'0' + *it % 10), L';'};
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
