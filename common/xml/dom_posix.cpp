// The DOM over pugixml. Text crosses as UTF-8 inside and as wide strings outside, converted as
// the system's conversions without flags do it, each bad sequence replaced; the messages and
// codes are those of the platform's DOM.
#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/ascii_runs.h"
#include "common/format/format.h"
#include "common/xml/dom_platform.h"
#include "common/xml/nesting_depth.h"
#include "common/xml/xml_text_rules.h"
#include "compat/unicode.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

// A document owns its tree, the text it was parsed from in place, and the views that holders of
// its nodes and elements point to. Those holders share the document's count rather than having
// counts of their own: a request builds a handful of them, a list of thousands one per item, and
// none of them then costs an allocation. The views live as long as the document.
struct dom_node_native_t {
    dom_document_native_t* document = nullptr;
    pugi::xml_node node;
};

struct dom_element_native_t : dom_node_native_t {
    // Where the next lookup of an attribute starts: readers take an element's attributes in the
    // order they stand, an item of a list five of them, and so find each at the first look.
    pugi::xml_attribute next_attribute;
};

namespace {

// Element views at addresses that stay put: the few of a small document inside it, the many of a
// list in blocks that grow as they are needed. A view is made only when it is handed out, since
// making one calls into the parser's library.
class element_views_t {
public:
    element_views_t() = default;
    element_views_t(const element_views_t&) = delete;
    element_views_t& operator=(const element_views_t&) = delete;

    dom_element_native_t& add() {
        if (used_ == capacity_) {
            capacity_ *= 2;
            blocks_.push_back(
                std::make_unique_for_overwrite<std::byte[]>(capacity_ * sizeof(dom_element_native_t)));
            storage_ = blocks_.back().get();
            used_ = 0;
        }
        return *::new (storage_ + sizeof(dom_element_native_t) * used_++) dom_element_native_t;
    }

private:
    static_assert(std::is_trivially_destructible_v<dom_element_native_t>,
                  "views are never destroyed one by one");
    static constexpr std::size_t inline_count = 8;

    alignas(dom_element_native_t) std::byte inline_[inline_count * sizeof(dom_element_native_t)];
    std::byte* storage_ = inline_;
    std::size_t used_ = 0;
    std::size_t capacity_ = inline_count;
    std::vector<std::unique_ptr<std::byte[]>> blocks_;
};

} // namespace

struct dom_document_native_t : std::enable_shared_from_this<dom_document_native_t> {
    std::string source;
    pugi::xml_document tree;
    dom_node_native_t as_node{this, tree};
    element_views_t elements;
};

namespace {

// Comments, processing instructions and the document type are nodes of the document, as on
// the platform. Parsing as a fragment keeps text beside the root, so that it can be refused.
constexpr unsigned int parse_options =
    pugi::parse_default | pugi::parse_comments | pugi::parse_pi | pugi::parse_doctype | pugi::parse_fragment;
constexpr unsigned int save_options = pugi::format_raw | pugi::format_no_declaration;

template <class Native> Native& native_of(const dom_ref_t<Native>& holder) {
    if (holder.empty())
        throw exc::com_exc_t(E_POINTER);
    return *holder.native();
}

dom_element_t make_element(dom_document_native_t& document, pugi::xml_node node) {
    dom_element_native_t& native = document.elements.add();
    native.document = &document;
    native.node = node;
    return dom_element_t(std::shared_ptr<dom_element_native_t>(document.shared_from_this(), &native));
}

// The names the platform gives to nodes that are no elements. A document type is named after
// the root it declares, so a lookup of the root meets it first.
std::string_view node_name_of(const pugi::xml_node& node) {
    switch (node.type()) {
    case pugi::node_doctype: {
        const std::string_view declaration = node.value();
        return declaration.substr(0, declaration.find_first_of(" \t\r\n["));
    }
    case pugi::node_pcdata:
        return "#text";
    case pugi::node_cdata:
        return "#cdata-section";
    case pugi::node_comment:
        return "#comment";
    case pugi::node_document:
        return "#document";
    default:
        return node.name();
    }
}

// Names and values cross to pugixml as zero-terminated UTF-8, for one call each. Nearly all of
// them are short ASCII text, which goes on the stack; wide text that is not goes through the
// conversion.
class c_text_t {
public:
    explicit c_text_t(std::string_view utf8) {
        if (utf8.size() < sizeof(short_)) {
            std::memcpy(short_, utf8.data(), utf8.size());
            use_short(utf8.size());
        } else {
            use_long(std::string(utf8));
        }
    }
    explicit c_text_t(const std::wstring& text) {
        // A zero character ends the text here as it ends the converted one.
        if (text.size() < sizeof(short_) && format::narrow_prefix(text, short_) == text.size())
            use_short(text.size());
        else
            use_long(to_utf8(text));
    }
    c_text_t(const c_text_t&) = delete;
    c_text_t& operator=(const c_text_t&) = delete;

    const char* c_str() const noexcept { return text_; }

private:
    void use_short(std::size_t size) {
        short_[size] = '\0';
        text_ = short_;
    }
    void use_long(std::string text) {
        long_ = std::move(text);
        text_ = long_.c_str();
    }

    char short_[256];
    std::string long_;
    const char* text_ = nullptr;
};

// ASCII widens as it stands; anything else goes through the conversion.
std::wstring widen_value(const char* value) {
    const std::string_view text(value);
    std::wstring wide(text.size(), L'\0');
    if (format::widen_prefix(text, wide.data()) != text.size())
        return from_utf8(std::string(text));
    return wide;
}

// The platform refuses what pugixml lets through: no root, several roots, text beside the root.
bool has_single_root(const pugi::xml_document& document) {
    int roots = 0;
    for (pugi::xml_node child = document.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element)
            ++roots;
        else if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
            return false;
    }
    return roots == 1;
}

// A few attributes are compared pair by pair, by their first byte before the rest; many are
// sorted first, so that no element costs the square of its attribute count.
bool has_duplicate_attribute(const pugi::xml_node& element) {
    constexpr std::size_t pairwise_limit = 8;
    const char* few[pairwise_limit];
    std::size_t count = 0;
    pugi::xml_attribute a = element.first_attribute();
    for (; a && count < pairwise_limit; a = a.next_attribute())
        few[count++] = a.name();
    if (!a) {
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t j = i + 1; j < count; ++j)
                if (few[i][0] == few[j][0] && std::strcmp(few[i], few[j]) == 0)
                    return true;
        return false;
    }
    std::vector<std::string_view> names(few, few + count);
    for (; a; a = a.next_attribute())
        names.emplace_back(a.name());
    std::sort(names.begin(), names.end());
    return std::adjacent_find(names.begin(), names.end()) != names.end();
}

// The checks of well-formedness that pugixml leaves out, and the platform's limit of depth.
bool is_well_formed(const pugi::xml_document& document) {
    if (!has_single_root(document))
        return false;
    // Only elements have children: every node above the current one is an element.
    std::size_t elements_above = 0;
    for (pugi::xml_node node = document.document_element(); node;) {
        if (has_duplicate_attribute(node))
            return false;
        if (node.first_child()) {
            if (++elements_above >= max_element_depth && node.find_child([](const pugi::xml_node& child) {
                    return child.type() == pugi::node_element;
                }))
                return false;
            node = node.first_child();
            continue;
        }
        while (node && !node.next_sibling()) {
            node = node.parent();
            --elements_above;
        }
        if (node)
            node = node.next_sibling();
    }
    return true;
}

// pugixml hands the text over in pieces of a few kilobytes. They are kept as they come and
// joined once, at their exact size: a string grown piece by piece is copied anew at every
// doubling, megabytes at a time for a large document. A short document comes in one piece,
// which is handed over as it is.
struct pieces_writer_t : pugi::xml_writer {
    std::string first;
    std::vector<std::string> more;
    std::size_t size = 0;

    void write(const void* data, std::size_t length) override {
        if (size == 0)
            first.assign(static_cast<const char*>(data), length);
        else
            more.emplace_back(static_cast<const char*>(data), length);
        size += length;
    }

    std::string joined() {
        if (more.empty())
            return std::move(first);
        std::string text;
        text.reserve(size);
        text += first;
        for (const std::string& piece : more)
            text += piece;
        return text;
    }
};

} // namespace

dom_document_t dom_create_document() {
    return dom_document_t(std::make_shared<dom_document_native_t>());
}

namespace {

// The document parses its source in place; the message of a failure shows the text as it was
// given, which the caller still has.
template <class ShowGiven>
dom_document_t load_source(std::shared_ptr<dom_document_native_t> document, const ShowGiven& show_given) {
    xml::detail::xml_text_verdict_t verdict = xml::detail::judge_xml_text(document->source);
    if (verdict.refused)
        throw exc::com_exc_t(S_FALSE, xml::detail::load_failed_text, show_given());
    if (verdict.expanded)
        document->source = std::move(*verdict.expanded);
    const pugi::xml_parse_result parsed = document->tree.load_buffer_inplace(
        document->source.data(), document->source.size(), parse_options, pugi::encoding_utf8);
    if (!parsed || !is_well_formed(document->tree))
        throw exc::com_exc_t(S_FALSE, xml::detail::load_failed_text, show_given());
    return dom_document_t(std::move(document));
}

std::string serialized(const dom_document_t& document) {
    pieces_writer_t writer;
    native_of(document).tree.print(writer, "", save_options, pugi::encoding_utf8);
    return writer.joined();
}

} // namespace

dom_document_t dom_load(const std::wstring& xml) {
    auto document = std::make_shared<dom_document_native_t>();
    // A surrogate without its partner is no character of XML, and the conversion would make it
    // U+FFFD: the text is refused as the platform's parser refuses it.
    if (!std::all_of(xml.begin(), xml.end(),
                     [](wchar_t c) { return compat::is_scalar_value(static_cast<std::uint32_t>(c)); }))
        throw exc::com_exc_t(S_FALSE, xml::detail::load_failed_text, to_ansi_nothrow(xml));
    try {
        document->source = to_utf8(xml);
    } catch (const std::exception& e) {
        exc::rethrow_with_trace(xml::detail::load_failed_text, to_ansi_nothrow(xml), e);
    }
    return load_source(std::move(document), [&] { return to_ansi_nothrow(xml); });
}

dom_document_t dom_load_utf8(std::string_view xml) {
    auto document = std::make_shared<dom_document_native_t>();
    document->source.assign(xml);
    return load_source(std::move(document), [&] { return std::string(xml); });
}

std::wstring dom_serialize(const dom_document_t& document) {
    return exc::traced(xml::detail::serialize_failed_text, [&] { return from_utf8(serialized(document)); });
}

std::string dom_serialize_utf8(const dom_document_t& document) {
    return exc::traced(xml::detail::serialize_failed_text, [&] { return serialized(document); });
}

dom_document_t dom_owner_document(const dom_node_t& node) {
    return dom_document_t(native_of(node).document->shared_from_this());
}

dom_node_t dom_as_node(const dom_document_t& document) {
    dom_document_native_t& native = native_of(document);
    return dom_node_t(std::shared_ptr<dom_node_native_t>(native.shared_from_this(), &native.as_node));
}

dom_node_t dom_as_node(const dom_element_t& element) {
    dom_element_native_t& native = native_of(element);
    return dom_node_t(std::shared_ptr<dom_node_native_t>(native.document->shared_from_this(), &native));
}

namespace {

// The attribute goes in before its value is converted: a value that cannot be converted
// leaves it there, empty.
pugi::xml_attribute attribute_to_set(const dom_element_t& element, const char* name) {
    pugi::xml_node node = native_of(element).node;
    pugi::xml_attribute attribute = node.attribute(name);
    if (!attribute)
        attribute = node.append_attribute(name);
    return attribute;
}

const char* attribute_value(const dom_element_t& element, const std::wstring& name) {
    dom_element_native_t& native = native_of(element);
    const pugi::xml_attribute attribute =
        native.node.attribute(c_text_t(name).c_str(), native.next_attribute);
    if (!attribute)
        xml::detail::throw_unexpected_attribute_type(1, name);
    return attribute.value();
}

} // namespace

void dom_set_attribute(const dom_element_t& element, const std::wstring& name, const std::wstring& value) {
    try {
        pugi::xml_attribute attribute = attribute_to_set(element, c_text_t(name).c_str());
        attribute.set_value(c_text_t(value).c_str());
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to set value of the attribute '%1'.", to_ansi_nothrow(name), e);
    }
}

std::wstring dom_get_attribute(const dom_element_t& element, const std::wstring& name) {
    return widen_value(attribute_value(element, name));
}

std::string dom_get_attribute_utf8(const dom_element_t& element, const std::wstring& name) {
    return std::string(attribute_value(element, name));
}

void dom_read_attribute_utf8(const dom_element_t& element, const std::wstring& name,
                             const std::function<void(std::string_view)>& read) {
    read(attribute_value(element, name));
}

namespace {

pugi::xml_node appended_child(pugi::xml_node parent, const char* name) {
    pugi::xml_node element = parent.append_child(name);
    if (!element)
        throw exc::com_exc_t(E_FAIL, "Failed to append node to the child nodes list.");
    return element;
}

// The parser's own nodes, with no view or holder between: a response is built from a handful of
// these on every request.
pugi::xml_attribute appended_child_attribute(const dom_element_t& parent, std::string_view ascii_name,
                                             std::string_view ascii_attribute) {
    pugi::xml_node child;
    try {
        child = appended_child(native_of(parent).node, c_text_t(ascii_name).c_str());
    } catch (const std::exception& e) {
        xml::detail::rethrow_child_failure(std::string(ascii_name), e);
    }
    return child.append_attribute(c_text_t(ascii_attribute).c_str());
}

} // namespace

void dom_add_child_with_attribute(const dom_element_t& parent, std::string_view ascii_name,
                                  std::string_view ascii_attribute, const char* value) {
    appended_child_attribute(parent, ascii_name, ascii_attribute).set_value(value);
}

void dom_add_child_with_attribute(const dom_element_t& parent, std::string_view ascii_name,
                                  std::string_view ascii_attribute, const std::wstring& value) {
    appended_child_attribute(parent, ascii_name, ascii_attribute).set_value(c_text_t(value).c_str());
}

namespace xml::detail {

namespace {

dom_element_t append_to(dom_node_native_t& parent, const char* name) {
    return make_element(*parent.document, appended_child(parent.node, name));
}

} // namespace

dom_element_t append_new_element(const dom_node_t& parent, const std::wstring& name) {
    return append_to(native_of(parent), c_text_t(name).c_str());
}

dom_element_t append_new_element(const dom_node_t& parent, std::string_view ascii_name) {
    return append_to(native_of(parent), c_text_t(ascii_name).c_str());
}

dom_element_t append_new_element(const dom_element_t& parent, std::string_view ascii_name) {
    return append_to(native_of(parent), c_text_t(ascii_name).c_str());
}

std::vector<dom_element_t> child_elements(const dom_node_t& node) {
    const dom_node_native_t& parent = native_of(node);
    std::vector<dom_element_t> elements;
    for (pugi::xml_node child = parent.node.first_child(); child; child = child.next_sibling()) {
        if (child.type() != pugi::node_element)
            throw exc::com_exc_t(E_NOINTERFACE, "Failed to convert XMLDOMNode to XMLDOMElement.");
        elements.push_back(make_element(*parent.document, child));
    }
    return elements;
}

std::vector<dom_element_t> child_elements_by_tag(const dom_node_t& node, const std::wstring& tag,
                                                 std::size_t limit) {
    const dom_node_native_t& parent = native_of(node);
    const c_text_t tag_utf8(tag);
    std::vector<dom_element_t> elements;
    for (pugi::xml_node child = parent.node.first_child(); child && elements.size() < limit;
         child = child.next_sibling()) {
        if (!compat::iequals(node_name_of(child), tag_utf8.c_str()))
            continue;
        if (child.type() != pugi::node_element)
            throw exc::com_exc_t(E_NOINTERFACE, "XML node does not support IXMLDOMElement interface.");
        elements.push_back(make_element(*parent.document, child));
    }
    return elements;
}

} // namespace xml::detail
