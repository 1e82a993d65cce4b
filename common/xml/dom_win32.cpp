// The DOM over the platform's XML DOM through COM. Needs COM on the calling thread.
#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/xml/dom_platform.h"
#include "common/xml/nesting_depth.h"
#include "common/xml/xml_text_rules.h"
#include "compat/com_ptr.h"
#include "compat/unique_any.h"
#include "compat/win_types.h"

#include <msxml2.h>

using compat::com_ptr_t;

struct dom_document_native_t {
    com_ptr_t<IXMLDOMDocument> ptr;
};
struct dom_element_native_t {
    com_ptr_t<IXMLDOMElement> ptr;
};
struct dom_node_native_t {
    com_ptr_t<IXMLDOMNode> ptr;
};

namespace {

// The published identifiers; no version-specific class is asked for.
const CLSID clsid_dom_document = {
    0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
const IID iid_dom_document = {0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
const IID iid_dom_node = {0x2933BF80, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
const IID iid_dom_element = {0x2933BF86, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

void check(HRESULT hr, const char* message) {
    if (hr != S_OK)
        throw exc::com_exc_t(hr, message);
}

void check(HRESULT hr, const char* fmt, const std::string& argument) {
    if (hr != S_OK)
        throw exc::com_exc_t(hr, fmt, argument);
}

// A BSTR made from our text for the length of one call.
compat::unique_bstr_t bstr_arg(const std::wstring& text) {
    compat::unique_bstr_t value = compat::unique_bstr_t::copy_of(text);
    if (!value)
        throw exc::com_exc_t(E_OUTOFMEMORY);
    return value;
}

class variant_result_t {
public:
    variant_result_t() { VariantInit(&value_); }
    ~variant_result_t() { VariantClear(&value_); }
    variant_result_t(const variant_result_t&) = delete;
    variant_result_t& operator=(const variant_result_t&) = delete;
    VARIANT* put() noexcept { return &value_; }
    const VARIANT& get() const noexcept { return value_; }

private:
    VARIANT value_;
};

template <class Native> const Native& native_of(const dom_ref_t<Native>& holder) {
    if (holder.empty() || !holder.native()->ptr)
        throw exc::com_exc_t(E_POINTER);
    return *holder.native();
}

template <class Holder, class Interface> Holder make_holder(com_ptr_t<Interface> ptr) {
    auto native = std::make_shared<std::remove_pointer_t<decltype(std::declval<Holder>().native())>>();
    native->ptr = std::move(ptr);
    return Holder(std::move(native));
}

com_ptr_t<IXMLDOMNodeList> open_children(const dom_node_t& node, const char* open_failed,
                                         const char* length_failed, long& length) {
    com_ptr_t<IXMLDOMNodeList> children;
    check(native_of(node).ptr->get_childNodes(children.put()), open_failed);
    check(children->get_length(&length), length_failed);
    return children;
}

// The items are taken in order from the list's own position, one step each, where a fetch by
// index may walk from the first child every time and make a long list quadratic. The walk asks
// for every index from 0 in turn; the position is put back to the start before the first one,
// whoever moved it before, and a failure to do so is the first item's.
com_ptr_t<IXMLDOMNode> next_item(const com_ptr_t<IXMLDOMNodeList>& children, long index) {
    HRESULT hr = index == 0 ? children->reset() : S_OK;
    com_ptr_t<IXMLDOMNode> item;
    if (hr == S_OK)
        hr = children->nextNode(item.put());
    check(hr, "Failed to retrieve collection item by its index (%1).",
          num_to_string(static_cast<std::int32_t>(index)));
    return item;
}

} // namespace

dom_document_t dom_create_document() {
    com_ptr_t<IXMLDOMDocument> document;
    check(CoCreateInstance(clsid_dom_document, nullptr, CLSCTX_ALL, iid_dom_document,
                           reinterpret_cast<void**>(document.put())),
          "Failed to create instance of DOMDocument");
    return make_holder<dom_document_t>(std::move(document));
}

namespace {

// A document that declares entities is judged as the other builds judge it before the parser
// sees it: so its entities cannot grow it without bound, and none that names a file or an
// address is ever referred to. Text that does not convert holds a character XML refuses.
bool is_refused_before_parsing(const std::wstring& xml) {
    if (nests_deeper_than(std::wstring_view(xml), max_element_depth))
        return true;
    if (!xml::detail::declares_document_type(std::wstring_view(xml)))
        return false;
    try {
        return xml::detail::judge_xml_text(to_utf8(xml)).refused;
    } catch (const std::exception&) {
        return true;
    }
}

} // namespace

// A parse error comes back as S_FALSE with the flag false, and is reported with that code, as is
// a document refused before parsing. The parser never reads a file or an address that the
// document names: the tool runs as an administrator, and the document comes from the pipe.
dom_document_t dom_load(const std::wstring& xml) {
    if (is_refused_before_parsing(xml))
        throw exc::com_exc_t(S_FALSE, xml::detail::load_failed_text, to_ansi_nothrow(xml));
    const dom_document_t document = dom_create_document();
    IXMLDOMDocument* ptr = native_of(document).ptr.get();
    check(ptr->put_validateOnParse(VARIANT_FALSE), "Failed to disable document validation.");
    check(ptr->put_resolveExternals(VARIANT_FALSE), "Failed to disable resolution of external references.");
    VARIANT_BOOL loaded = VARIANT_FALSE;
    const compat::unique_bstr_t text = bstr_arg(xml);
    const HRESULT hr = ptr->loadXML(text.get(), &loaded);
    if (FAILED(hr) || loaded == VARIANT_FALSE)
        throw exc::com_exc_t(hr, xml::detail::load_failed_text, to_ansi_nothrow(xml));
    return document;
}

std::wstring dom_serialize(const dom_document_t& document) {
    compat::unique_bstr_t text;
    check(native_of(document).ptr->get_xml(text.put()), xml::detail::serialize_failed_text);
    return text.text();
}

// The platform's DOM reads and writes wide text only.
dom_document_t dom_load_utf8(std::string_view xml) {
    return dom_load(from_utf8(std::string(xml)));
}

std::string dom_serialize_utf8(const dom_document_t& document) {
    return to_utf8(dom_serialize(document));
}

// A document is its own owner.
dom_document_t dom_owner_document(const dom_node_t& node) {
    const char* failed = "Failed to retrieve document-owner for the specified node.";
    const com_ptr_t<IXMLDOMNode>& ptr = native_of(node).ptr;
    com_ptr_t<IXMLDOMDocument> document;
    if (ptr.query(iid_dom_document, document) == S_OK)
        return make_holder<dom_document_t>(std::move(document));
    com_ptr_t<IXMLDOMDocument> owner;
    check(ptr->get_ownerDocument(owner.put()), failed);
    check(owner.query(iid_dom_document, document), failed);
    return make_holder<dom_document_t>(std::move(document));
}

dom_node_t dom_as_node(const dom_document_t& document) {
    com_ptr_t<IXMLDOMNode> node;
    check(native_of(document).ptr.query(iid_dom_node, node),
          "Failed to convert IXMLDOMDocument to IXMLDOMNode");
    return make_holder<dom_node_t>(std::move(node));
}

dom_node_t dom_as_node(const dom_element_t& element) {
    com_ptr_t<IXMLDOMNode> node;
    check(native_of(element).ptr.query(iid_dom_node, node),
          "The given DOM element does not support IXMLDOMNode interface.");
    return make_holder<dom_node_t>(std::move(node));
}

void dom_set_attribute(const dom_element_t& element, const std::wstring& name, const std::wstring& value) {
    const compat::unique_bstr_t name_arg = bstr_arg(name);
    const compat::unique_bstr_t value_arg = bstr_arg(value);
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = value_arg.get();
    check(native_of(element).ptr->setAttribute(name_arg.get(), variant),
          "Failed to set value of the attribute '%1'.", to_ansi_nothrow(name));
}

// A missing attribute is no call failure: it arrives as VT_NULL.
std::wstring dom_get_attribute(const dom_element_t& element, const std::wstring& name) {
    const compat::unique_bstr_t name_arg = bstr_arg(name);
    variant_result_t value;
    const HRESULT hr = native_of(element).ptr->getAttribute(name_arg.get(), value.put());
    if (FAILED(hr))
        throw exc::com_exc_t(hr, "Failed to get value of the attribute '%1'.", to_ansi_nothrow(name));
    if (value.get().vt != VT_BSTR)
        xml::detail::throw_unexpected_attribute_type(value.get().vt, name);
    const BSTR text = value.get().bstrVal;
    return text != nullptr ? std::wstring(text, SysStringLen(text)) : L"";
}

std::string dom_get_attribute_utf8(const dom_element_t& element, const std::wstring& name) {
    return to_utf8(dom_get_attribute(element, name));
}

// The platform's DOM keeps wide text: the value is converted first.
void dom_read_attribute_utf8(const dom_element_t& element, const std::wstring& name,
                             const std::function<void(std::string_view)>& read) {
    read(dom_get_attribute_utf8(element, name));
}

// The platform's DOM has no shorter way.
void dom_add_child_with_attribute(const dom_element_t& parent, std::string_view ascii_name,
                                  std::string_view ascii_attribute, const char* value) {
    dom_add_child_with_attribute(parent, ascii_name, ascii_attribute, from_utf8(value));
}

void dom_add_child_with_attribute(const dom_element_t& parent, std::string_view ascii_name,
                                  std::string_view ascii_attribute, const std::wstring& value) {
    dom_set_attribute(dom_add_child(parent, ascii_name),
                      std::wstring(ascii_attribute.begin(), ascii_attribute.end()), value);
}

namespace xml::detail {

dom_element_t append_new_element(const dom_node_t& parent, const std::wstring& name) {
    const dom_document_t owner = dom_owner_document(parent);
    const compat::unique_bstr_t name_arg = bstr_arg(name);
    com_ptr_t<IXMLDOMElement> element;
    const HRESULT hr = native_of(owner).ptr->createElement(name_arg.get(), element.put());
    if (hr != S_OK)
        throw exc::com_exc_t(hr);
    com_ptr_t<IXMLDOMNode> appended;
    check(native_of(parent).ptr->appendChild(element.get(), appended.put()),
          "Failed to append node to the child nodes list.");
    return make_holder<dom_element_t>(std::move(element));
}

dom_element_t append_new_element(const dom_node_t& parent, std::string_view ascii_name) {
    return append_new_element(parent, std::wstring(ascii_name.begin(), ascii_name.end()));
}

dom_element_t append_new_element(const dom_element_t& parent, std::string_view ascii_name) {
    return append_new_element(dom_node_t(parent), ascii_name);
}

std::vector<dom_element_t> child_elements(const dom_node_t& node) {
    long length = 0;
    const com_ptr_t<IXMLDOMNodeList> children =
        open_children(node, "Failed to open nodes collection.",
                      "Failed to define number of the nodes in the collection.", length);
    std::vector<dom_element_t> elements;
    for (long i = 0; i < length; ++i) {
        const com_ptr_t<IXMLDOMNode> item = next_item(children, i);
        if (!item)
            continue;
        com_ptr_t<IXMLDOMElement> element;
        check(item.query(iid_dom_element, element), "Failed to convert XMLDOMNode to XMLDOMElement.");
        elements.push_back(make_holder<dom_element_t>(std::move(element)));
    }
    return elements;
}

std::vector<dom_element_t> child_elements_by_tag(const dom_node_t& node, const std::wstring& tag,
                                                 std::size_t limit) {
    long length = 0;
    const com_ptr_t<IXMLDOMNodeList> children =
        open_children(node, "Failed to open collection of the child nodes.",
                      "Failed to define dimension of the collection.", length);
    std::vector<dom_element_t> elements;
    for (long i = 0; i < length && elements.size() < limit; ++i) {
        const com_ptr_t<IXMLDOMNode> item = next_item(children, i);
        if (!item)
            continue;
        compat::unique_bstr_t name;
        check(item->get_nodeName(name.put()), "Failed to retrieve node name.");
        if (!iequals(name.text(), tag))
            continue;
        com_ptr_t<IXMLDOMElement> element;
        check(item.query(iid_dom_element, element), "XML node does not support IXMLDOMElement interface.");
        elements.push_back(make_holder<dom_element_t>(std::move(element)));
    }
    return elements;
}

} // namespace xml::detail
