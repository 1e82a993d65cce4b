// Read-write access to the wide-text documents that cross the pipe. Element
// names are matched without regard to case (A-Z fold); children keep their order.
// The platform's DOM stands behind the holders; they are thin, shared references.
#pragma once

#include "compat/win_types.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A counted reference to one platform DOM object; empty for none.
template <class Native> class dom_ref_t {
public:
    dom_ref_t() = default;
    explicit dom_ref_t(std::shared_ptr<Native> native) : native_(std::move(native)) {}

    bool empty() const noexcept { return !native_; }
    Native* native() const noexcept { return native_.get(); }

private:
    std::shared_ptr<Native> native_;
};

struct dom_document_native_t;
struct dom_element_native_t;
struct dom_node_native_t;

class dom_document_t : public dom_ref_t<dom_document_native_t> {
public:
    using dom_ref_t::dom_ref_t;
};

class dom_element_t : public dom_ref_t<dom_element_native_t> {
public:
    using dom_ref_t::dom_ref_t;
};

// The node view of a document or an element; converting may throw.
class dom_node_t : public dom_ref_t<dom_node_native_t> {
public:
    using dom_ref_t::dom_ref_t;
    dom_node_t(const dom_document_t& document);
    dom_node_t(const dom_element_t& element);
};

dom_document_t dom_create_document();
// No validation; a text that is not well-formed throws.
dom_document_t dom_load(const std::wstring& xml);
// No XML declaration; element order as built or loaded.
std::wstring dom_serialize(const dom_document_t& document);
// The same over UTF-8 text, for text that is UTF-8 already on its way in or out (the frames):
// no round trip through wide strings where the platform's DOM reads UTF-8 itself.
dom_document_t dom_load_utf8(std::string_view xml);
std::string dom_serialize_utf8(const dom_document_t& document);
// The load's failure for UTF-8 text whose wide form held a character that XML refuses and that
// the conversion to UTF-8 could not keep (a surrogate without its partner).
[[noreturn]] void dom_refuse_utf8(std::string_view xml);

dom_document_t dom_owner_document(const dom_node_t& node);
dom_node_t dom_as_node(const dom_document_t& document);
dom_node_t dom_as_node(const dom_element_t& element);

// Appends a new element behind the parent's last child.
dom_element_t dom_add_child(const dom_node_t& parent, const std::wstring& name);
// The same for a name that is ASCII text of the code, as argument names are.
dom_element_t dom_add_child(const dom_node_t& parent, std::string_view ascii_name);
dom_element_t dom_add_child(const dom_element_t& parent, std::string_view ascii_name);
// An element with one attribute appended to the parent, both named in ASCII text of the code: the
// form of nearly every argument of a response, which needs no holder of the element.
void dom_add_child_with_attribute(const dom_element_t& parent, std::string_view ascii_name,
                                  std::string_view ascii_attribute, const char* value);
void dom_add_child_with_attribute(const dom_element_t& parent, std::string_view ascii_name,
                                  std::string_view ascii_attribute, const std::wstring& value);

void dom_set_attribute(const dom_element_t& element, const std::wstring& name, const std::wstring& value);
// A missing attribute throws (its variant type is VT_NULL).
std::wstring dom_get_attribute(const dom_element_t& element, const std::wstring& name);
// The value as UTF-8, for values that go on as UTF-8, such as whole documents carried in an
// attribute: no round trip through wide text.
std::string dom_get_attribute_utf8(const dom_element_t& element, const std::wstring& name);
// The value as UTF-8 lent to `read` for the length of the call: a document carried in an attribute
// is read where the platform keeps it as UTF-8, without a copy of its own.
void dom_read_attribute_utf8(const dom_element_t& element, const std::wstring& name,
                             const std::function<void(std::string_view)>& read);
GUID dom_get_guid_attribute(const dom_element_t& element, const std::wstring& name);

// Every child as an element: a comment or text child is a failure, not a skip.
std::vector<dom_element_t> dom_child_elements(const dom_node_t& node);
// Children named tag (without regard to case), at most limit of them; others are passed over.
std::vector<dom_element_t> dom_child_elements_by_tag(const dom_node_t& node, const std::wstring& tag,
                                                     std::size_t limit);
dom_element_t dom_required_child(const dom_node_t& node, const std::wstring& tag);
// An empty element when there is none.
dom_element_t dom_optional_child(const dom_node_t& node, const std::wstring& tag);
