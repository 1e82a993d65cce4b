// What each platform's DOM file provides beneath common/xml/dom.h, and the
// failure texts both platforms share. Not for use outside common/xml.
#pragma once

#include "common/xml/dom.h"

#include <cstddef>
#include <string>
#include <vector>

namespace xml::detail {

inline constexpr char load_failed_text[] = "Failed to load XML document '%1'.";
inline constexpr char serialize_failed_text[] = "Failed to serialize XML document to string.";

// Adds the line of a failure to create a child element.
[[noreturn]] void rethrow_child_failure(const std::string& name, const std::exception& error);

// A missing attribute arrives as VT_NULL (1).
[[noreturn]] void throw_unexpected_attribute_type(int variant_type, const std::wstring& name);

// The parent's owner document creates the element, which then goes behind the parent's last child.
dom_element_t append_new_element(const dom_node_t& parent, const std::wstring& name);
dom_element_t append_new_element(const dom_node_t& parent, std::string_view ascii_name);
dom_element_t append_new_element(const dom_element_t& parent, std::string_view ascii_name);

// Unwrapped enumerations: the caller adds its context line.
std::vector<dom_element_t> child_elements(const dom_node_t& node);
std::vector<dom_element_t> child_elements_by_tag(const dom_node_t& node, const std::wstring& tag,
                                                 std::size_t limit);

} // namespace xml::detail
