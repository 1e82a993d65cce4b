// The items list written straight as text, in the form the DOM's serialiser gives it: the
// list runs to megabytes, and the DOM would take every value apart to build its tree and print
// the tree again. The same walk writes wide text and UTF-8, the form the list crosses the pipe in.
#include "invoke/files_list_writer.h"

#include "common/format/ascii_runs.h"
#include "common/format/unicode_units.h"
#include "compat/utf8_codec.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace files_list_impl {

namespace {

bool is_escaped(std::uint32_t u) {
    return u < 0x20 || u == '&' || u == '<' || u == '"';
}

// Wide text takes every character as it stands but those the serialiser escapes and those that
// are no characters.
struct wide_output_t {
    using string_type = std::wstring;

    static bool is_plain(std::uint32_t u) { return !is_escaped(u) && unicode::is_scalar_value(u); }
    static void append_run(std::wstring& out, const wchar_t* from, const wchar_t* to) {
        out.append(from, to);
    }
    static void append_character(std::wstring& out, std::uint32_t u) {
        out += static_cast<wchar_t>(unicode::scalar_or_replacement(u));
    }
};

// UTF-8 takes ASCII as it stands and encodes the rest.
struct utf8_output_t {
    using string_type = std::string;

    static bool is_plain(std::uint32_t u) { return u < 0x80 && !is_escaped(u); }
    static void append_run(std::string& out, const wchar_t* from, const wchar_t* to) {
        constexpr std::size_t stage_size = 256;
        char stage[stage_size];
        while (from != to) {
            const std::size_t count = std::min<std::size_t>(stage_size, static_cast<std::size_t>(to - from));
            format_impl::ascii::narrow_prefix(std::wstring_view(from, count), stage);
            out.append(stage, count);
            from += count;
        }
    }
    static void append_character(std::string& out, std::uint32_t u) {
        char encoded[4];
        out.append(encoded, compat::utf8::put(encoded, unicode::scalar_or_replacement(u)));
    }
};

// Values run to hundreds of characters, nearly all of them plain: they are judged a block at a
// time, with no branch inside a block, and copied a run at a time.
constexpr std::size_t block = 8;

template <class Output> bool block_is_plain(const wchar_t* text) {
    bool plain = true;
    for (std::size_t i = 0; i < block; ++i)
        plain &= Output::is_plain(static_cast<std::uint32_t>(text[i]));
    return plain;
}

// Where the plain run that starts at `from` ends.
template <class Output> const wchar_t* plain_run_end(const wchar_t* from, const wchar_t* end) {
    while (end - from >= static_cast<std::ptrdiff_t>(block) && block_is_plain<Output>(from))
        from += block;
    while (from != end && Output::is_plain(static_cast<std::uint32_t>(*from)))
        ++from;
    return from;
}

template <class String> void append_ascii(String& out, std::string_view text) {
    out.append(text.begin(), text.end());
}

// As the serialiser escapes an attribute's value; the value ends at its first zero, as its
// conversion for the DOM ends it, and what is no character becomes U+FFFD as there.
template <class Output> void append_value(typename Output::string_type& out, const std::wstring& value) {
    const wchar_t* it = value.data();
    const wchar_t* const end = it + value.size();
    for (;;) {
        const wchar_t* const plain_end = plain_run_end<Output>(it, end);
        Output::append_run(out, it, plain_end);
        if (plain_end == end || *plain_end == L'\0')
            return;
        const auto c = static_cast<std::uint32_t>(*plain_end);
        it = plain_end + 1;
        switch (c) {
        case '&':
            append_ascii(out, "&amp;");
            break;
        case '<':
            append_ascii(out, "&lt;");
            break;
        case '"':
            append_ascii(out, "&quot;");
            break;
        default:
            if (c < 0x20) {
                const char reference[] = {'&', '#', static_cast<char>('0' + c / 10),
                                          static_cast<char>('0' + c % 10), ';'};
                append_ascii(out, std::string_view(reference, std::size(reference)));
            } else {
                Output::append_character(out, c);
            }
        }
    }
}

template <class Output>
void append_attribute(typename Output::string_type& out, std::string_view name, const std::wstring& value) {
    out += ' ';
    append_ascii(out, name);
    append_ascii(out, "=\"");
    append_value<Output>(out, value);
    out += '"';
}

template <class Output> typename Output::string_type write(const ItemsList& items) {
    typename Output::string_type out;
    if (items.empty()) {
        append_ascii(out, "<FilesList/>");
        return out;
    }
    std::size_t estimate = 23;
    for (const CFilesListItem& item : items)
        estimate +=
            100 + item.path.size() + item.mask.size() + item.fullPath.size() + item.relativePath.size();
    out.reserve(estimate);
    append_ascii(out, "<FilesList>");
    const std::wstring true_text = L"true";
    const std::wstring false_text = L"false";
    for (const CFilesListItem& item : items) {
        append_ascii(out, "<File");
        append_attribute<Output>(out, "Recursive", item.recursive != 0 ? true_text : false_text);
        append_attribute<Output>(out, "Path", item.path);
        append_attribute<Output>(out, "Mask", item.mask);
        append_attribute<Output>(out, "FullPath", item.fullPath);
        append_attribute<Output>(out, "RelativePath", item.relativePath);
        append_ascii(out, "/>");
    }
    append_ascii(out, "</FilesList>");
    return out;
}

} // namespace

std::wstring write_document(const ItemsList& items) {
    return write<wide_output_t>(items);
}

std::string write_document_utf8(const ItemsList& items) {
    return write<utf8_output_t>(items);
}

} // namespace files_list_impl
