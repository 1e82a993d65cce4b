#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/xml/dom.h"
#include "tests/invoke/msxml_layout.h"
#include "tests/support/failure_lines.h"

#include <gtest/gtest.h>

namespace {

dom_element_t root_of(const std::wstring& xml) {
    return dom_child_elements(dom_load(xml)).front();
}

TEST(DomLookup, FindsChildrenByTagWithoutRegardToCasePassingOverCommentsThatFailTheListOfAll) {
    const dom_element_t root = root_of(L"<Root><JobName value='a'/><jobname value='b'/></Root>");
    EXPECT_EQ(dom_get_attribute(dom_optional_child(root, L"JOBNAME"), L"value"), L"a");
    EXPECT_EQ(dom_child_elements_by_tag(root, L"jobName", 5).size(), 2u);
    EXPECT_TRUE(dom_optional_child(root, L"Job").empty());
    EXPECT_EQ(failure_lines([&] { dom_required_child(root, L"Job"); }),
              std::vector<std::string>{"There is no child node with the specified name 'Job'."});
    const dom_element_t commented = root_of(L"<Root><A/><!-- note --><B/>text</Root>");
    EXPECT_EQ(failure_lines([&] { dom_child_elements(commented); }, 2),
              (std::vector<std::string>{"Failed to convert XMLDOMNode to XMLDOMElement.",
                                        "Failed to retrieve children of the XML node."}));
    EXPECT_FALSE(dom_optional_child(commented, L"b").empty());
    EXPECT_EQ(
        failure_lines([&] { dom_optional_child(commented, L"#comment"); }, 2),
        (std::vector<std::string>{"XML node does not support IXMLDOMElement interface.",
                                  "Failed to enumerate child nodes having the specified tag '#comment'."}));
}

TEST(DomSerialization, HasNoDeclarationAndKeepsElementOrder) {
    const dom_document_t document = dom_create_document();
    const dom_element_t root = dom_add_child(document, L"Root");
    for (const wchar_t* name : {L"C", L"A", L"B"})
        dom_add_child(root, name);
    dom_set_attribute(dom_add_child(root, L"A"), L"value", L"2");
    EXPECT_EQ(msxml_layout::without_breaks(dom_serialize(document)),
              L"<Root><C/><A/><B/><A value=\"2\"/></Root>");

#ifndef _WIN32 // MSXML keeps the declaration of a loaded document as a node of its own.
    const dom_document_t loaded = dom_load(L"<?xml version=\"1.0\"?>\n<Root>\n  <Z/>\n  <Y/>\n</Root>");
    EXPECT_EQ(dom_serialize(loaded), L"<Root><Z/><Y/></Root>");
#endif
}

// Short ASCII text takes a faster road than long or other text; all of them must come back whole.
TEST(DomAttributes, ValuesOfAnyTextAndLengthSurviveAndAMissingOneReportsTheNullVariantType) {
    // A value ends at its first zero.
    const std::pair<std::wstring, std::wstring> values[] = {
        {L"value", L"a&b<c>\"d'\te\nf \u00e9\u4e2d\U0001F600"},
        {L"a", std::wstring(5000, L'x')},
        {L"b", std::wstring(300, L'y') + L"\u00e9" + std::wstring(300, L'z')},
        {L"c", std::wstring(L"cut") + L'\0' + L"away"}};
    const dom_document_t document = dom_create_document();
    const dom_element_t root = dom_add_child(document, L"Root");
    for (const auto& [name, value] : values)
        dom_set_attribute(root, name, value);
    const dom_element_t loaded = root_of(dom_serialize(document));
    for (const auto& [name, value] : values)
        EXPECT_EQ(dom_get_attribute(loaded, name), value.c_str());
    EXPECT_EQ(
        failure_lines([&] { dom_get_attribute(loaded, L"Value"); }),
        std::vector<std::string>{"Unexpected type (1) of the XML attribute (Value). Expected: 'VT_BSTR'."});
}

std::wstring nested(std::size_t levels) {
    std::wstring text;
    for (std::size_t i = 0; i < levels; ++i)
        text += L"<a>";
    for (std::size_t i = 0; i < levels; ++i)
        text += L"</a>";
    return text;
}

void expect_refused(const std::wstring& xml) {
    try {
        dom_load(xml);
        ADD_FAILURE() << "loaded: " << to_ansi_nothrow(xml.substr(0, 200));
    } catch (const exc::com_exc_t& e) {
        EXPECT_EQ(e.code(), 1) << to_ansi_nothrow(xml.substr(0, 200));
        EXPECT_EQ(e.messages().back().text, "Failed to load XML document '" + to_ansi_nothrow(xml) + "'.");
    }
}

// What the platform's parser refuses must be refused here too, so that a frame gets one answer
// on either build. Blanks around the document move the odd character into the blocks that a long
// document is searched by.
TEST(DomLoading, DeepDocumentsReferencesAndCharactersOutsideXmlAreRefused) {
    // Text that is not one well-formed document, or one nested deeper than the limit.
    for (const std::wstring& xml :
         std::vector<std::wstring>{L"", L"<a>", L"<a/><b/>", L"text", L"<a/>tail", L"<a b='1' b='2'/>",
                                   nested(257), nested(100000)})
        expect_refused(xml);
    EXPECT_NO_THROW(dom_load(L"<r>" + nested(255) + L"<!--x-->" + nested(255) + L"</r>"));
    for (const std::size_t blanks : {0, 40}) {
        const std::wstring lead(blanks, L' ');
        for (const std::wstring& xml : std::vector<std::wstring>{
                 L"<a>&bogus;</a>", L"<a v='&bogus;'/>", L"<a>fish & chips</a>", L"<a>&#1;</a>",
                 L"<a v='&#xD800;'/>", L"<a>&#x110000;</a>", L"<a>&#;</a>", L"<a>\u0001</a>",
                 L"<a v='\u001f'/>", L"<a><!-- \u0002 --></a>", L"<a/>\u0003",
                 L"<!DOCTYPE a [<!ENTITY % p 'x'>]><a>&p;</a>", L"<a v='a<b'/>", L"<a v='<?&#4;'/>",
                 L"<a v='\uFFFE'/>", L"<a>\uFFFF</a>", std::wstring(L"<a v='") + wchar_t(0xDC00) + L"'/>"})
            expect_refused(lead + xml + lead);
        const dom_element_t root = root_of(lead +
                                           L"<a v='&lt;&gt;&amp;&apos;&quot;&#65;&#x1F600;'>\t\r\n"
                                           L"<!-- & --><![CDATA[&bogus;]]><?pi &?></a>" +
                                           lead);
        EXPECT_EQ(dom_get_attribute(root, L"v"), L"<>&'\"A\U0001F600");
    }
}

// The lookup by name passes over a document type that names another root.
dom_element_t named_root(const std::wstring& xml, const wchar_t* name = L"Root") {
    return dom_required_child(dom_load(xml), name);
}

// A document's own entities are read as XML reads them: character references in a literal are
// replaced where it is declared, references to entities where it is used, and inside a value its
// quotes are data and a '<' is refused.
TEST(DomLoading, DeclaredEntitiesAreExpandedWhereTheyAreUsedAndTheDocumentTypeIsANode) {
    const dom_element_t root =
        named_root(L"<!DOCTYPE x [<!ENTITY e 'E'><!ENTITY q '\"&#38;amp;&#39;'>"
                   L"<!ENTITY e 'second'><!ENTITY n '&e;&q;&#38;#60;'><!ENTITY % p 'P'>"
                   L"<!ENTITY t '<b v=\"&e;\"/>'>]><Root a=\"a&e;b\" q=\"&q;\" n='&n;'>&t;</Root>");
    EXPECT_EQ(dom_get_attribute(root, L"a"), L"aEb");
    EXPECT_EQ(dom_get_attribute(root, L"q"), L"\"&'");
    EXPECT_EQ(dom_get_attribute(root, L"n"), L"E\"&'<");
    // In content the reference is a node of its own, named after the entity, and no element.
    EXPECT_TRUE(dom_optional_child(root, L"b").empty());
    EXPECT_EQ(failure_lines([&] { dom_optional_child(root, L"T"); }, 2).front(),
              "XML node does not support IXMLDOMElement interface.");
    for (const wchar_t* refused :
         {L"<!DOCTYPE x [<!ENTITY e '<'>]><a v='&e;'/>",
          L"<!DOCTYPE x [<!ENTITY e '&f;'><!ENTITY f '&e;'>]><a>&e;</a>",
          L"<!DOCTYPE x [<!ENTITY e SYSTEM 'e.txt'>]><a>&e;</a>",
          L"<!DOCTYPE x [<!ENTITY % p SYSTEM 'p.dtd'> %p;]><a/>",
          L"<!DOCTYPE x [<!ENTITY e '&u;'>]><a>&e;</a>", L"<!DOCTYPE x [<!ENTITY e 'x'>]>&e;<a/>"})
        expect_refused(refused);

    // The platform keeps the document type as a node named after the root, ahead of it: the lookup
    // of the root meets that node first and fails as it does for any other node that isn't an element.
    for (const std::wstring xml : {L"<!DOCTYPE InputArguments><InputArguments/>",
                                   L"<!DOCTYPE InputArguments [<!ENTITY e 'x'>]><InputArguments v='&e;'/>"}) {
        const dom_document_t document = dom_load(xml);
        EXPECT_EQ(failure_lines([&] { dom_required_child(document, L"inputarguments"); }, 2),
                  (std::vector<std::string>{
                      "XML node does not support IXMLDOMElement interface.",
                      "Failed to enumerate child nodes having the specified tag 'inputarguments'."}));
        EXPECT_EQ(failure_lines([&] { dom_child_elements(document); }, 2).front(),
                  "Failed to convert XMLDOMNode to XMLDOMElement.");
    }
}

// The growth is bounded by the document's own size. Here n references make a text of H + 3n
// characters H + 100n long: at most 9H / 70 of them stay within ten times.
TEST(DomLoading, EntitiesThatGrowTheDocumentPastTenTimesItsSizeAreRefused) {
    const std::wstring head = L"<!DOCTYPE x [<!ENTITY e '" + std::wstring(100, L'e') + L"'>]><a v='";
    const std::wstring tail = L"'/>";
    const auto with_references = [&](std::size_t count) {
        std::wstring xml = head;
        for (std::size_t i = 0; i < count; ++i)
            xml += L"&e;";
        return xml + tail;
    };
    const std::size_t most = 9 * (head.size() + tail.size()) / 70;
    EXPECT_EQ(dom_get_attribute(named_root(with_references(most), L"a"), L"v"),
              std::wstring(100 * most, L'e'));
    expect_refused(with_references(most + 1));
}

// On either side of the count where the check changes its way, the repeat at the end.
TEST(DomLoading, RepeatedAttributeIsRefusedHoweverManyTheElementHas) {
    for (const int count : {1, 7, 8, 40}) {
        std::wstring attributes;
        for (int i = 0; i < count; ++i)
            attributes += L" a" + std::to_wstring(i) + L"='x'";
        const std::wstring last = L" a" + std::to_wstring(count - 1) + L"='y'";
        EXPECT_NO_THROW(dom_load(L"<Root" + attributes + L"/>")) << count;
        EXPECT_THROW(dom_load(L"<Root" + attributes + L" a0='y'/>"), exc::com_exc_t) << count;
        EXPECT_THROW(dom_load(L"<Root><Child" + attributes + last + L"/></Root>"), exc::com_exc_t) << count;
    }
}

} // namespace
