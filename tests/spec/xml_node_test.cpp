#include "common/xml/xml_node.h"
#include "tests/support/failure_lines.h"

#include <gtest/gtest.h>

namespace {

xml_node_t root_of(const std::string& text) {
    return get_children(xml_node_t(parse_xml(text))).front();
}

TEST(SpecXmlParsing, SyntaxErrorNamesTheParserErrorAndTheShortenedContent) {
    const std::string text = "<a>" + std::string(200, 'x');
    EXPECT_EQ(failure_lines([&] { parse_xml(text); }),
              (std::vector<std::string>{"XML error: [Error reading Element value.]. Error code: [5].",
                                        "Failed to parse XML content. Source content: [" +
                                            text.substr(0, 128) + "..., length: 203]."}));
    EXPECT_EQ(failure_lines([] { parse_xml(""); }),
              (std::vector<std::string>{"XML error: [Error document empty.]. Error code: [12].",
                                        "Failed to parse XML content. Source content: []."}));
}

// A character cut short by the end of the text must not carry the parser past that end: the
// parser takes the length its lead byte announces, and used to read beyond the buffer (and,
// before a zero inside the text, on behind that zero).
TEST(SpecXmlParsing, TheTextEndsAtItsFirstZeroEvenInsideACharacter) {
    const std::string declared = "<?xml version=\"1.0\"?>";
    for (const std::string cut : {"\xCB", "\xE2\x82", "\xF0"}) {
        EXPECT_ANY_THROW(parse_xml(declared + "<a>" + cut + std::string(1, '\0') + "x</a>"));
        EXPECT_ANY_THROW(parse_xml(declared + "<a b=\"" + cut + std::string(1, '\0') + "\"/>"));
        EXPECT_ANY_THROW(parse_xml(declared + "<a>" + cut));
    }
    EXPECT_EQ(node_name(root_of("<a/>" + std::string(1, '\0') + "<b/>")), "a");
}

std::string nested(std::size_t levels, const std::string& inner = std::string()) {
    std::string text;
    for (std::size_t i = 0; i < levels; ++i)
        text += "<a>";
    text += inner;
    for (std::size_t i = 0; i < levels; ++i)
        text += "</a>";
    return text;
}

// The parser and the tree's destructor recurse once per level: a deep document must be refused
// before either runs, and markup that merely looks like a tag must not count as a level.
TEST(SpecXmlParsing, DocumentsNestedDeeperThanTheLimitAreRefusedWithTheParsersText) {
    for (const std::size_t levels : {std::size_t(257), std::size_t(100000)}) {
        const std::vector<std::string> lines = failure_lines([&] { parse_xml(nested(levels)); });
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_EQ(lines[0], "XML error: [Error parsing Element.]. Error code: [3].");
        EXPECT_EQ(lines[1].rfind("Failed to parse XML content. Source content: [<a><a>", 0), 0u);
    }
    const std::string look_alikes = "<!-- <b> --><![CDATA[<c>]]><?pi <d>?><e x='<f>' y=\"/>\"/>";
    EXPECT_NO_THROW(parse_xml("<?xml version=\"1.0\"?><!DOCTYPE a [<!ELEMENT a ANY>]>" +
                              nested(256, look_alikes + look_alikes)));
    EXPECT_NO_THROW(parse_xml(nested(200, nested(56) + nested(56))));
}

TEST(SpecXmlNodes, IntegersMissingOrUnreadableReportEachOthersTextAndChildrenAreLookedUpExactly) {
    const xml_node_t node = root_of("<a n='42' tail='7 days' bad='abc'/>");
    EXPECT_EQ(get_attr_int(node, "n"), 42);
    EXPECT_EQ(get_attr_int(node, "tail"), 7);
    EXPECT_EQ(failure_lines([&] { get_attr_int(node, "bad"); }),
              std::vector<std::string>{"Attribute value is not specified. Attribute: [bad]."});
    EXPECT_EQ(failure_lines([&] { get_attr_int(node, "missing"); }),
              std::vector<std::string>{"Unexpected type of the attribute. Attribute: [missing]."});
    EXPECT_EQ(failure_lines([&] { get_attr(node, "N"); }),
              std::vector<std::string>{"Attribute value is not specified. Attribute: [N]."});

    // The lookup of a child is exact and takes the first of any kind, in order.
    const xml_node_t parent = root_of("<a><!--VMs--><vms/><VMs id='1'/></a>");
    EXPECT_TRUE(find_child(parent, "Vms").is_null());
    EXPECT_EQ(failure_lines([&] { get_child(parent, "Vms"); }),
              std::vector<std::string>{"There is no node with the specified name: [Vms]."});
    EXPECT_FALSE(get_child(parent, "VMs").is_element()); // the comment comes first
    EXPECT_EQ(failure_lines([] { node_name(xml_node_t()); }),
              std::vector<std::string>{"Unable to retrieve name of the uninitialized node."});
    // Children are comments and text as well, in order.
    std::vector<std::string> children;
    for (const xml_node_t& child : get_children(root_of("<a>text<!--note--><b/></a>")))
        children.push_back(node_name(child) + (child.is_element() ? " element" : ""));
    EXPECT_EQ(children, (std::vector<std::string>{"text", "note", "b element"}));
}

} // namespace
