// Read-only access to narrow-text XML documents (the backup specification).
// Names are compared with case; a node keeps its document alive.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class TiXmlDocument;
class TiXmlNode;

// A node of a parsed document, or no node at all (null pointer). Cheap to copy.
struct xml_node_t {
    std::shared_ptr<TiXmlDocument> owner;
    TiXmlNode* node = nullptr;

    xml_node_t() = default;
    xml_node_t(std::shared_ptr<TiXmlDocument> document_owner, TiXmlNode* target);
    // The document itself as a node.
    explicit xml_node_t(const std::shared_ptr<TiXmlDocument>& document);

    bool is_null() const noexcept { return node == nullptr; }
    bool is_element() const noexcept;
};

// Throws when the text is not a well-formed document.
std::shared_ptr<TiXmlDocument> parse_xml(const std::string& text);
// The same for a text that is UTF-8 whatever it declares, such as a document that crossed the pipe:
// character references come out as UTF-8 too.
std::shared_ptr<TiXmlDocument> parse_xml_utf8(const std::string& text);

std::string node_name(const xml_node_t& node);

// A required attribute with a value; throws when it is missing.
std::string get_attr(const xml_node_t& node, const std::string& name);
bool find_attr(const xml_node_t& node, const std::string& name, std::string& value);
std::int32_t get_attr_int(const xml_node_t& node, const std::string& name);

// The first direct child whose name equals the given one exactly, whatever its kind.
xml_node_t get_child(const xml_node_t& node, const std::string& name);
xml_node_t find_child(const xml_node_t& node, const std::string& name);
// Every direct child in document order: comments and text nodes too.
std::vector<xml_node_t> get_children(const xml_node_t& node);
