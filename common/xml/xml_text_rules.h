// What XML 1.0 refuses in a document's text that pugixml lets through, and the one thing it does
// that pugixml leaves undone: characters outside the language's set (U+0001, U+FFFF, an encoded
// surrogate), a '<' inside an attribute's value, references to entities that nothing defines or
// that name a file or an address, and the expansion of the entities the document declares itself.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace xml::detail {

// How much larger than its own text a document may grow by the expansion of its entities: far
// above any real document, far below what a few lines of entities of entities make (gigabytes).
inline constexpr std::size_t max_entity_growth = 10;

struct xml_text_verdict_t {
    bool refused = false;
    // The text with the references to its declared entities replaced, where it has any.
    std::optional<std::string> expanded;
};

// The UTF-8 text of a whole document, before it is parsed. Nothing outside the text is ever read:
// an entity declared as a file or an address is refused where it is referred to, and a document
// type's external part is never looked at.
xml_text_verdict_t judge_xml_text(std::string_view utf8);

// Does the text declare a document type, and so may declare entities? Cheap.
template <class Char> bool declares_document_type(std::basic_string_view<Char> text) {
    static constexpr Char doctype[] = {'<', '!', 'D', 'O', 'C', 'T', 'Y', 'P', 'E', 0};
    return text.find(doctype) != text.npos;
}

} // namespace xml::detail
