// The floor of the server benchmark where the server's documents are MSXML's: MSXML alone, over
// COM, parsing and writing the same documents in its own UTF-16, with the Base64 of UTF-8 that the
// arguments carry. It runs in the COM apartment that the benchmark's main thread holds.
#include "bench/server_requests.h"
#include "compat/com_ptr.h"
#include "compat/unique_any.h"
#include "compat/win_types.h"
#include "invoke/base64.h"

#include <benchmark/benchmark.h>
#include <msxml2.h>

#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using compat::com_ptr_t;
using compat::unique_bstr_t;
using namespace server_bench;

// The class the server's documents are made of: the published one, of no particular version.
const CLSID clsid_dom_document = {
    0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

void check(HRESULT hr, const char* call) {
    if (FAILED(hr))
        throw std::runtime_error(std::string(call) + " failed");
}

// A BSTR of the text; the floor never works on a null one.
unique_bstr_t bstr_of(std::wstring_view text) {
    unique_bstr_t result(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    if (!result)
        throw std::bad_alloc();
    return result;
}

// The UTF-8 text made a BSTR without a std::wstring in between.
unique_bstr_t bstr_from_utf8(std::string_view text) {
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    unique_bstr_t result(SysAllocStringLen(nullptr, static_cast<UINT>(size)));
    if (!result)
        throw std::bad_alloc();
    MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), result.get(), size);
    return result;
}

std::wstring_view view_of(const unique_bstr_t& text) {
    return {text.get(), SysStringLen(text.get())};
}

std::string utf8_of(std::wstring_view text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0,
                                         nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), result.data(), size, nullptr,
                        nullptr);
    return result;
}

// A VARIANT that holds a BSTR it does not own, for the calls that take their value so.
VARIANT text_variant(BSTR text) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = text;
    return variant;
}

com_ptr_t<IXMLDOMDocument> new_document() {
    com_ptr_t<IXMLDOMDocument> document;
    check(CoCreateInstance(clsid_dom_document, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                           reinterpret_cast<void**>(document.put())),
          "CoCreateInstance");
    return document;
}

com_ptr_t<IXMLDOMDocument> load(BSTR text) {
    com_ptr_t<IXMLDOMDocument> document = new_document();
    check(document->put_validateOnParse(VARIANT_FALSE), "put_validateOnParse");
    VARIANT_BOOL loaded = VARIANT_FALSE;
    check(document->loadXML(text, &loaded), "loadXML");
    if (loaded != VARIANT_TRUE)
        throw std::runtime_error("loadXML: the document is not well-formed");
    return document;
}

com_ptr_t<IXMLDOMElement> root_of(const com_ptr_t<IXMLDOMDocument>& document) {
    com_ptr_t<IXMLDOMElement> root;
    check(document->get_documentElement(root.put()), "get_documentElement");
    return root;
}

com_ptr_t<IXMLDOMElement> append_element(const com_ptr_t<IXMLDOMDocument>& document, IXMLDOMNode* parent,
                                         BSTR name) {
    com_ptr_t<IXMLDOMElement> element;
    check(document->createElement(name, element.put()), "createElement");
    com_ptr_t<IXMLDOMNode> appended;
    check(parent->appendChild(element.get(), appended.put()), "appendChild");
    return element;
}

void set_attribute(const com_ptr_t<IXMLDOMElement>& element, BSTR name, BSTR value) {
    check(element->setAttribute(name, text_variant(value)), "setAttribute");
}

unique_bstr_t xml_of(const com_ptr_t<IXMLDOMDocument>& document) {
    unique_bstr_t text;
    check(document->get_xml(text.put()), "get_xml");
    return text;
}

com_ptr_t<IXMLDOMNode> first_child(IXMLDOMNode* node) {
    com_ptr_t<IXMLDOMNode> child;
    check(node->get_firstChild(child.put()), "get_firstChild");
    return child;
}

com_ptr_t<IXMLDOMNode> next_sibling(IXMLDOMNode* node) {
    com_ptr_t<IXMLDOMNode> sibling;
    check(node->get_nextSibling(sibling.put()), "get_nextSibling");
    return sibling;
}

com_ptr_t<IXMLDOMElement> as_element(const com_ptr_t<IXMLDOMNode>& node) {
    com_ptr_t<IXMLDOMElement> element;
    check(node.query(IID_IXMLDOMElement, element), "QueryInterface(IXMLDOMElement)");
    return element;
}

// The names and constant values the rounds write, made BSTRs once as a program that writes them
// on every request would keep them.
struct texts_t {
    unique_bstr_t value = bstr_of(L"value");
    unique_bstr_t output_arguments = bstr_of(L"OutputArguments");
    unique_bstr_t in_paths = bstr_of(L"InPathsXML");
    unique_bstr_t out_paths = bstr_of(L"OutPathsXML");
    unique_bstr_t files_list = bstr_of(L"FilesList");
    unique_bstr_t file = bstr_of(L"File");
    unique_bstr_t item_attributes[5] = {bstr_of(L"Recursive"), bstr_of(L"Path"), bstr_of(L"Mask"),
                                        bstr_of(L"FullPath"), bstr_of(L"RelativePath")};
    // The status's arguments and their values.
    unique_bstr_t status[6][2] = {
        {bstr_of(L"SnapshotId"), bstr_of(L"{1c2b3a49-5d6e-4f70-8192-a3b4c5d6e7f8}")},
        {bstr_of(L"ErrDescription"), bstr_of(L"")},
        {bstr_of(L"IsCompleted"), bstr_of(L"true")},
        {bstr_of(L"IsSucceeded"), bstr_of(L"true")},
        {bstr_of(L"CreationTime"), bstr_of(L"134000000000000000")},
        {bstr_of(L"CompletedTime"), bstr_of(L"134000000100000000")}};
};

// One round of the floor in a function of its own, as the server's round is, so that a profiler
// can count each alone.
[[gnu::noinline]] unique_bstr_t msxml_status_round(const std::wstring& request, const texts_t& texts) {
    const com_ptr_t<IXMLDOMDocument> input = load(bstr_of(request).get());
    benchmark::DoNotOptimize(root_of(input));
    const com_ptr_t<IXMLDOMDocument> output = new_document();
    const com_ptr_t<IXMLDOMElement> root = append_element(output, output.get(), texts.output_arguments.get());
    for (const auto& [name, value] : texts.status)
        set_attribute(append_element(output, root.get(), name.get()), texts.value.get(), value.get());
    return xml_of(output);
}

// The argument's element among the root's children, by its name as MSXML reports it.
com_ptr_t<IXMLDOMElement> argument_of(const com_ptr_t<IXMLDOMDocument>& document, const unique_bstr_t& name) {
    const com_ptr_t<IXMLDOMElement> root = root_of(document);
    for (com_ptr_t<IXMLDOMNode> child = first_child(root.get()); child; child = next_sibling(child.get())) {
        unique_bstr_t child_name;
        check(child->get_nodeName(child_name.put()), "get_nodeName");
        if (view_of(child_name) == view_of(name))
            return as_element(child);
    }
    throw std::runtime_error("the request has no such argument");
}

std::string attribute_utf8(const com_ptr_t<IXMLDOMElement>& element, BSTR name) {
    VARIANT value;
    VariantInit(&value);
    check(element->getAttribute(name, &value), "getAttribute");
    std::string text = value.vt == VT_BSTR ? utf8_of({value.bstrVal, SysStringLen(value.bstrVal)}) : "";
    VariantClear(&value);
    return text;
}

[[gnu::noinline]] unique_bstr_t msxml_files_list_round(const std::wstring& request, const texts_t& texts) {
    const com_ptr_t<IXMLDOMDocument> input = load(bstr_of(request).get());
    const std::string list_text =
        wrap::base64_decode(attribute_utf8(argument_of(input, texts.in_paths), texts.value.get()));
    const com_ptr_t<IXMLDOMDocument> list = load(bstr_from_utf8(list_text).get());

    const com_ptr_t<IXMLDOMDocument> out_list = new_document();
    const com_ptr_t<IXMLDOMElement> out_root =
        append_element(out_list, out_list.get(), texts.files_list.get());
    const com_ptr_t<IXMLDOMElement> list_root = root_of(list);
    for (com_ptr_t<IXMLDOMNode> file = first_child(list_root.get()); file; file = next_sibling(file.get())) {
        const com_ptr_t<IXMLDOMElement> element = as_element(file);
        const com_ptr_t<IXMLDOMElement> copy = append_element(out_list, out_root.get(), texts.file.get());
        for (const unique_bstr_t& name : texts.item_attributes) {
            VARIANT value;
            VariantInit(&value);
            check(element->getAttribute(name.get(), &value), "getAttribute");
            const HRESULT set = copy->setAttribute(name.get(), value);
            VariantClear(&value);
            check(set, "setAttribute");
        }
    }
    const unique_bstr_t encoded = bstr_from_utf8(wrap::base64_encode(utf8_of(view_of(xml_of(out_list)))));

    const com_ptr_t<IXMLDOMDocument> output = new_document();
    const com_ptr_t<IXMLDOMElement> root = append_element(output, output.get(), texts.output_arguments.get());
    set_attribute(append_element(output, root.get(), texts.out_paths.get()), texts.value.get(),
                  encoded.get());
    return xml_of(output);
}

void BM_MsxmlAlone_GetAsyncOpStatus(benchmark::State& state) {
    const std::wstring request = document_of(small_request);
    const texts_t texts;
    try {
        for (auto _ : state)
            benchmark::DoNotOptimize(msxml_status_round(request, texts));
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
}
BENCHMARK(BM_MsxmlAlone_GetAsyncOpStatus)->Unit(benchmark::kMicrosecond);

void BM_MsxmlAlone_FilesList(benchmark::State& state) {
    const std::wstring request = document_of(files_list_request(static_cast<int>(state.range(0))));
    const texts_t texts;
    try {
        for (auto _ : state)
            benchmark::DoNotOptimize(msxml_files_list_round(request, texts));
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_MsxmlAlone_FilesList)->Arg(2500)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);

} // namespace
