// How deep the elements of a document's text nest, told without parsing it. The parsers that
// recurse once per level run out of stack long before any real document is deep, so they are
// shown only text that nests no deeper than the limit. A text that is not well-formed may be
// miscounted; the parser refuses it anyway.
#pragma once

#include <cstddef>
#include <string_view>

inline constexpr std::size_t max_element_depth = 256;

namespace xml::detail {

template <class Char>
std::size_t end_of(std::basic_string_view<Char> text, std::size_t from, const Char* close) {
    const std::size_t found = text.find(close, from);
    return found == text.npos ? text.size() : found + std::char_traits<Char>::length(close);
}

template <class Char> bool starts_at(std::basic_string_view<Char> text, std::size_t pos, const char* ascii) {
    for (; *ascii != '\0'; ++ascii, ++pos)
        if (pos >= text.size() || text[pos] != static_cast<Char>(*ascii))
            return false;
    return true;
}

// Behind the '>' that closes a tag begun at `pos`; quoted values and, for a document type, its
// bracketed internal subset may hold a '>' of their own.
template <class Char>
std::size_t end_of_tag(std::basic_string_view<Char> text, std::size_t pos, bool& empty) {
    Char quote = 0;
    int brackets = 0;
    for (; pos < text.size(); ++pos) {
        const Char c = text[pos];
        if (quote != 0) {
            if (c == quote)
                quote = 0;
        } else if (c == Char('"') || c == Char('\'')) {
            quote = c;
        } else if (c == Char('[')) {
            ++brackets;
        } else if (c == Char(']')) {
            brackets -= brackets > 0 ? 1 : 0;
        } else if (c == Char('>') && brackets == 0) {
            empty = text[pos - 1] == Char('/');
            return pos + 1;
        }
    }
    empty = true;
    return pos;
}

} // namespace xml::detail

template <class Char> bool nests_deeper_than(std::basic_string_view<Char> text, std::size_t limit) {
    using namespace xml::detail;
    static constexpr Char comment_end[] = {'-', '-', '>', 0};
    static constexpr Char cdata_end[] = {']', ']', '>', 0};
    static constexpr Char instruction_end[] = {'?', '>', 0};
    std::size_t depth = 0;
    std::size_t pos = 0;
    while ((pos = text.find(Char('<'), pos)) != text.npos) {
        bool empty = false;
        if (starts_at(text, pos, "<!--")) {
            pos = end_of(text, pos + 4, comment_end);
        } else if (starts_at(text, pos, "<![CDATA[")) {
            pos = end_of(text, pos + 9, cdata_end);
        } else if (starts_at(text, pos, "<?")) {
            pos = end_of(text, pos + 2, instruction_end);
        } else if (starts_at(text, pos, "</")) {
            depth -= depth > 0 ? 1 : 0;
            pos = end_of_tag(text, pos + 2, empty);
        } else if (starts_at(text, pos, "<!")) {
            pos = end_of_tag(text, pos + 2, empty);
        } else {
            pos = end_of_tag(text, pos + 1, empty);
            if (!empty && ++depth > limit)
                return true;
        }
    }
    return false;
}
