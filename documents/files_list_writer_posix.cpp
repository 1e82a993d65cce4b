// The items list written straight as text, in the form the DOM's serialiser gives it: the
// list runs to megabytes, and the DOM would take every value apart to build its tree and print
// the tree again. The same walk writes wide text and UTF-8, the form the list crosses the pipe in.
#include "documents/files_list_writer.h"

#include "compat/text_blocks.h"
#include "compat/unicode.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string_view>

namespace documents::detail {

namespace {

bool is_escaped(std::uint32_t u) {
    return u < 0x20 || u == '&' || u == '<' || u == '"';
}

// The text is written through a pointer into storage made ready an item at a time for the most
// that the item can take, six characters for each of its own (the longest escape); the first
// estimate leaves enough behind the last item that the storage seldom grows.
template <class Char> class text_cursor_t {
public:
    text_cursor_t(std::basic_string<Char>& out, std::size_t estimate) : out_(out) {
        out_.resize(estimate);
        at = out_.data();
    }

    void make_room(std::size_t count) {
        const auto used = static_cast<std::size_t>(at - out_.data());
        if (out_.size() - used < count) {
            out_.resize(std::max(2 * out_.size(), used + count));
            at = out_.data() + used;
        }
    }
    void put(std::string_view ascii) { at = std::copy(ascii.begin(), ascii.end(), at); }
    void put(Char c) { *at++ = c; }
    void finish() { out_.resize(static_cast<std::size_t>(at - out_.data())); }

    Char* at = nullptr;

private:
    std::basic_string<Char>& out_;
};

// Wide text takes every character as it stands but those the serialiser escapes and those that
// are no characters.
struct wide_output_t {
    using char_type = wchar_t;

    static bool is_plain(std::uint32_t u) { return !is_escaped(u) && compat::is_scalar_value(u); }
    static void put_other(text_cursor_t<wchar_t>& out, std::uint32_t u) {
        out.put(static_cast<wchar_t>(compat::scalar_or_replacement(u)));
    }
    static const wchar_t* copy_plain(const wchar_t* from, const wchar_t* end, text_cursor_t<wchar_t>& out) {
        while (from != end && is_plain(static_cast<std::uint32_t>(*from)))
            out.put(*from++);
        return from;
    }
};

// UTF-8 takes ASCII as it stands and encodes the rest.
struct utf8_output_t {
    using char_type = char;

    static bool is_plain(std::uint32_t u) { return u < 0x80 && !is_escaped(u); }
    static void put_other(text_cursor_t<char>& out, std::uint32_t u) {
        out.at = compat::put_utf8(out.at, compat::scalar_or_replacement(u));
    }

    // Values run to hundreds of characters, nearly all of them plain: a block at a time is
    // narrowed into the storage (made ready for more than that), judged there, and the cursor
    // then moves over the plain ones alone.
    static const wchar_t* copy_plain(const wchar_t* from, const wchar_t* end, text_cursor_t<char>& out) {
        using compat::block;
        while (static_cast<std::size_t>(end - from) >= block) {
            compat::narrow_wide(from, out.at);
            const unsigned other =
                compat::bytes_outside(out.at, 0x20, 0x7F) | compat::bytes_among<'&', '<', '"'>(out.at);
            const auto plain_count = static_cast<std::size_t>(std::countr_zero(other | 1u << block));
            from += plain_count;
            out.at += plain_count;
            if (plain_count < block)
                return from;
        }
        while (from != end && is_plain(static_cast<std::uint32_t>(*from)))
            out.put(static_cast<char>(*from++));
        return from;
    }
};

// As the serialiser escapes an attribute's value; the value ends at its first zero, as its
// conversion for the DOM ends it, and what is no character becomes U+FFFD as there.
template <class Output>
void put_value(text_cursor_t<typename Output::char_type>& out, const std::wstring& value) {
    const wchar_t* it = value.data();
    const wchar_t* const end = it + value.size();
    for (;;) {
        it = Output::copy_plain(it, end, out);
        if (it == end || *it == L'\0')
            return;
        const auto c = static_cast<std::uint32_t>(*it++);
        switch (c) {
        case '&':
            out.put("&amp;");
            break;
        case '<':
            out.put("&lt;");
            break;
        case '"':
            out.put("&quot;");
            break;
        default:
            if (c < 0x20) {
                const char reference[] = {'&', '#', static_cast<char>('0' + c / 10),
                                          static_cast<char>('0' + c % 10), ';'};
                out.put(std::string_view(reference, sizeof reference));
            } else {
                Output::put_other(out, c);
            }
        }
    }
}

template <class Output>
void put_attribute(text_cursor_t<typename Output::char_type>& out, std::string_view name,
                   const std::wstring& value) {
    out.put(' ');
    out.put(name);
    out.put("=\"");
    put_value<Output>(out, value);
    out.put('"');
}

// What an item's text takes beside its values, at the most.
constexpr std::size_t item_frame = 100;
constexpr std::size_t longest_escape = 6;

std::size_t values_size(const CFilesListItem& item) {
    return item.path.size() + item.mask.size() + item.fullPath.size() + item.relativePath.size();
}

template <class Output> std::basic_string<typename Output::char_type> write(const ItemsList& items) {
    using string_type = std::basic_string<typename Output::char_type>;
    string_type text;
    std::size_t estimate = 2 * item_frame;
    for (const CFilesListItem& item : items)
        estimate += item_frame + values_size(item);
    text_cursor_t<typename Output::char_type> out(text, estimate);
    const list_names_t& n = names();
    if (items.empty()) {
        out.put('<');
        out.put(ascii::root);
        out.put("/>");
        out.finish();
        return text;
    }
    out.put('<');
    out.put(ascii::root);
    out.put('>');
    for (const CFilesListItem& item : items) {
        out.make_room(item_frame + longest_escape * values_size(item));
        out.put('<');
        out.put(ascii::item);
        put_attribute<Output>(out, ascii::recursive, item.recursive != 0 ? n.true_text : n.false_text);
        put_attribute<Output>(out, ascii::path, item.path);
        put_attribute<Output>(out, ascii::mask, item.mask);
        put_attribute<Output>(out, ascii::full_path, item.fullPath);
        put_attribute<Output>(out, ascii::relative_path, item.relativePath);
        out.put("/>");
    }
    out.make_room(item_frame);
    out.put("</");
    out.put(ascii::root);
    out.put('>');
    out.finish();
    return text;
}

} // namespace

std::wstring write_document(const ItemsList& items) {
    return write<wide_output_t>(items);
}

std::string write_document_utf8(const ItemsList& items) {
    return write<utf8_output_t>(items);
}

} // namespace documents::detail
