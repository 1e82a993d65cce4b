// The platform-neutral part of the DOM access: composition and context lines.
#include "common/xml/dom.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/xml/dom_platform.h"

namespace xml::detail {

void rethrow_child_failure(const std::string& name, const std::exception& error) {
    exc::rethrow_with_trace("Failed to create child node '%1'.", name, error);
}

void throw_unexpected_attribute_type(int variant_type, const std::wstring& name) {
    throw exc::runtime_exc_t("Unexpected type (%1) of the XML attribute (%2). Expected: 'VT_BSTR'.",
                             num_to_string(static_cast<std::int32_t>(variant_type)), to_ansi_nothrow(name));
}

} // namespace xml::detail

void dom_refuse_utf8(std::string_view xml) {
    throw exc::com_exc_t(S_FALSE, xml::detail::load_failed_text, std::string(xml));
}

dom_node_t::dom_node_t(const dom_document_t& document) : dom_node_t(dom_as_node(document)) {}

dom_node_t::dom_node_t(const dom_element_t& element) : dom_node_t(dom_as_node(element)) {}

namespace {

// The name is made fit for the message only when there is a failure to report.
template <class Parent, class Name, class ShowName>
dom_element_t add_child(const Parent& parent, const Name& name, const ShowName& show_name) {
    try {
        return xml::detail::append_new_element(parent, name);
    } catch (const std::exception& e) {
        xml::detail::rethrow_child_failure(show_name(), e);
    }
}

} // namespace

dom_element_t dom_add_child(const dom_node_t& parent, const std::wstring& name) {
    return add_child(parent, name, [&] { return to_ansi_nothrow(name); });
}

dom_element_t dom_add_child(const dom_node_t& parent, std::string_view ascii_name) {
    return add_child(parent, ascii_name, [&] { return std::string(ascii_name); });
}

dom_element_t dom_add_child(const dom_element_t& parent, std::string_view ascii_name) {
    return add_child(parent, ascii_name, [&] { return std::string(ascii_name); });
}

GUID dom_get_guid_attribute(const dom_element_t& element, const std::wstring& name) {
    try {
        return string_to_guid(dom_get_attribute(element, name));
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to retrieve value of the GUID attribute. Attribute name: '%1'.",
                                to_ansi_nothrow(name), e);
    }
}

std::vector<dom_element_t> dom_child_elements(const dom_node_t& node) {
    return exc::traced("Failed to retrieve children of the XML node.",
                       [&] { return xml::detail::child_elements(node); });
}

std::vector<dom_element_t> dom_child_elements_by_tag(const dom_node_t& node, const std::wstring& tag,
                                                     std::size_t limit) {
    try {
        return xml::detail::child_elements_by_tag(node, tag, limit);
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to enumerate child nodes having the specified tag '%1'.",
                                to_ansi_nothrow(tag), e);
    }
}

dom_element_t dom_required_child(const dom_node_t& node, const std::wstring& tag) {
    std::vector<dom_element_t> found = dom_child_elements_by_tag(node, tag, 1);
    if (found.empty())
        throw exc::exc_base_t(
            format_message("There is no child node with the specified name '%1'.", to_ansi_nothrow(tag)));
    return found.front();
}

dom_element_t dom_optional_child(const dom_node_t& node, const std::wstring& tag) {
    std::vector<dom_element_t> found = dom_child_elements_by_tag(node, tag, 1);
    return found.empty() ? dom_element_t() : found.front();
}
