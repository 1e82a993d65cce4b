#include "common/xml/xml_node.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/xml/nesting_depth.h"

#include <tinyxml.h>

#include <cstdio>

namespace {

[[noreturn]] void throw_document_error(const TiXmlDocument& document) {
    const char* description = document.ErrorDesc();
    const std::string code = num_to_string(static_cast<std::int32_t>(document.ErrorId()));
    if (description != nullptr && *description != '\0')
        throw exc::exc_base_t(format_message("XML error: [%1]. Error code: [%2].", description, code));
    throw exc::exc_base_t(format_message("XML error: [%1].", code));
}

// The parser steps over a UTF-8 character by the length its lead byte announces, also when the
// text ends inside that character. Zeros behind the text stop it wherever such a step lands, so
// that it never reads beyond the buffer; the text still ends at its first zero.
constexpr std::size_t longest_utf8_step = 4;

std::string with_zeros_behind(const std::string& text) {
    std::string padded(text.c_str());
    padded.append(longest_utf8_step, '\0');
    return padded;
}

const TiXmlAttribute* find_attribute(const xml_node_t& node, const std::string& name) {
    const TiXmlElement* element = node.node != nullptr ? node.node->ToElement() : nullptr;
    if (element == nullptr)
        return nullptr;
    for (const TiXmlAttribute* a = element->FirstAttribute(); a != nullptr; a = a->Next())
        if (name == a->Name())
            return a;
    return nullptr;
}

} // namespace

xml_node_t::xml_node_t(std::shared_ptr<TiXmlDocument> document_owner, TiXmlNode* target)
    : owner(std::move(document_owner)), node(target) {}

xml_node_t::xml_node_t(const std::shared_ptr<TiXmlDocument>& document)
    : owner(document), node(document.get()) {}

bool xml_node_t::is_element() const noexcept {
    return node != nullptr && node->ToElement() != nullptr;
}

namespace {

std::shared_ptr<TiXmlDocument> parse_guarded(const std::string& text, TiXmlEncoding encoding) {
    try {
        auto document = std::make_shared<TiXmlDocument>();
        const std::string padded = with_zeros_behind(text);
        // The parser recurses once per level, and so does the tree's destructor.
        if (nests_deeper_than(std::string_view(padded.data(), padded.size() - longest_utf8_step),
                              max_element_depth))
            document->SetError(TiXmlBase::TIXML_ERROR_PARSING_ELEMENT, nullptr, nullptr,
                               TIXML_ENCODING_UNKNOWN);
        else
            document->Parse(padded.c_str(), nullptr, encoding);
        if (document->Error())
            throw_document_error(*document);
        return document;
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to parse XML content. Source content: [%1].", shorten_for_log(text),
                                e);
    }
}

} // namespace

std::shared_ptr<TiXmlDocument> parse_xml(const std::string& text) {
    return parse_guarded(text, TIXML_ENCODING_UNKNOWN);
}

std::shared_ptr<TiXmlDocument> parse_xml_utf8(const std::string& text) {
    return parse_guarded(text, TIXML_ENCODING_UTF8);
}

std::string node_name(const xml_node_t& node) {
    if (node.is_null())
        throw exc::runtime_exc_t("Unable to retrieve name of the uninitialized node.");
    return node.node->ValueStr();
}

bool find_attr(const xml_node_t& node, const std::string& name, std::string& value) {
    const TiXmlAttribute* attribute = find_attribute(node, name);
    if (attribute == nullptr)
        return false;
    value = attribute->ValueStr();
    return true;
}

std::string get_attr(const xml_node_t& node, const std::string& name) {
    std::string value;
    if (!find_attr(node, name, value))
        throw exc::runtime_exc_t("Attribute value is not specified. Attribute: [%1].", name);
    return value;
}

// The two failure texts are swapped on purpose: callers match them as they are.
std::int32_t get_attr_int(const xml_node_t& node, const std::string& name) {
    const TiXmlAttribute* attribute = find_attribute(node, name);
    if (attribute == nullptr)
        throw exc::runtime_exc_t("Unexpected type of the attribute. Attribute: [%1].", name);
    int value = 0;
    if (std::sscanf(attribute->Value(), "%d", &value) != 1)
        throw exc::runtime_exc_t("Attribute value is not specified. Attribute: [%1].", name);
    return value;
}

xml_node_t find_child(const xml_node_t& node, const std::string& name) {
    if (node.is_null())
        return xml_node_t(node.owner, nullptr);
    for (TiXmlNode* child = node.node->FirstChild(); child != nullptr; child = child->NextSibling())
        if (child->ValueStr() == name)
            return xml_node_t(node.owner, child);
    return xml_node_t(node.owner, nullptr);
}

xml_node_t get_child(const xml_node_t& node, const std::string& name) {
    xml_node_t child = find_child(node, name);
    if (child.is_null())
        throw exc::runtime_exc_t("There is no node with the specified name: [%1].", name);
    return child;
}

std::vector<xml_node_t> get_children(const xml_node_t& node) {
    if (node.is_null())
        throw exc::runtime_exc_t("Unable to enumerate children of the uninitialized node.");
    std::vector<xml_node_t> children;
    for (TiXmlNode* child = node.node->FirstChild(); child != nullptr; child = child->NextSibling())
        children.emplace_back(node.owner, child);
    return children;
}
