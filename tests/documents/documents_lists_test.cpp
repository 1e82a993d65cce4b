#include "common/exc/convert.h"
#include "common/xml/dom.h"
#include "documents/files_list.h"
#include "documents/snapshot_ids.h"
#include "tests/invoke/msxml_layout.h"
#include "tests/support/failure_lines.h"

#include <gtest/gtest.h>

namespace {

ItemsList sample_items() {
    return {
        CFilesListItem(L"C:\\VMs\\a", L"*.vhdx", 1, L"disk 1.vhdx", L"C:\\VMs\\a\\disk 1.vhdx"),
        CFilesListItem(L"C:\\VMs\\a", L"vm.xml", 0, L"vm.xml", L"\\\\?\\GLOBALROOT\\Device\\X\\a&b<c>.xml"),
        CFilesListItem(L"D:\\", L"\u00e9*", 1, L"sub\\\u00e9t\u00e9", L"D:\\sub\\\u00e9t\u00e9")};
}

TEST(ItemsListDocument, ItemsKeepOrderAndFieldsThroughTheRoundTrip) {
    ItemsList read = {CFilesListItem(L"x", L"x", 0, L"x", L"x")};
    DeserializeItemsList(SerializeItemsList(sample_items()), read);
    EXPECT_EQ(ItemsList(read.begin() + 1, read.end()), sample_items());
    ItemsList read_utf8;
    DeserializeItemsListUtf8(SerializeItemsListUtf8(sample_items()), read_utf8);
    EXPECT_EQ(read_utf8, sample_items());
    EXPECT_EQ(msxml_layout::without_breaks(SerializeItemsList({CFilesListItem(L"p", L"m", 7, L"r", L"f")})),
              L"<FilesList><File Recursive=\"true\" Path=\"p\" Mask=\"m\" FullPath=\"f\" RelativePath=\"r\"/>"
              L"</FilesList>");
    EXPECT_EQ(msxml_layout::without_breaks(SerializeItemsList({})), L"<FilesList/>");
    DeserializeItemsList(L"<FilesList/>", read);
    EXPECT_EQ(read.size(), sample_items().size() + 1);
}

// The list may be written without the DOM, for speed, as wide text or as UTF-8: it must read
// exactly as the DOM writes it, wherever an awkward character falls among the plain ones.
TEST(ItemsListDocument, IsWrittenAsTheDomWritesIt) {
    std::wstring awkward = L"a&b<c>d\"e'f\tg\nh\ri\u0001j\u001fk\u00e9\u4e2d\U0001F600\x7f";
    if constexpr (sizeof(wchar_t) == 4) {
        // Wide strings of four bytes can hold what is no character: a lone surrogate, values
        // beyond U+10FFFF and those that read as negative.
        awkward += static_cast<wchar_t>(0xD800);
        awkward += static_cast<wchar_t>(0x110000);
        awkward += static_cast<wchar_t>(-0x7FFFFF00);
    }
    std::wstring spread;
    for (std::size_t i = 0; i < awkward.size(); ++i)
        spread += std::wstring(i % 19, L'x') + awkward[i];
    const ItemsList items = {CFilesListItem(awkward, L"*.*", 0, L"", awkward + L'\0' + L"cut"),
                             CFilesListItem(L"p", L"m", 2, spread, spread + L"/" + spread)};
    const dom_document_t document = dom_create_document();
    const dom_element_t root = dom_add_child(document, L"FilesList");
    for (const CFilesListItem& item : items) {
        const dom_element_t file = dom_add_child(root, L"File");
        dom_set_attribute(file, L"Recursive", item.recursive != 0 ? L"true" : L"false");
        dom_set_attribute(file, L"Path", item.path);
        dom_set_attribute(file, L"Mask", item.mask);
        dom_set_attribute(file, L"FullPath", item.fullPath);
        dom_set_attribute(file, L"RelativePath", item.relativePath);
    }
    EXPECT_EQ(SerializeItemsList(items), dom_serialize(document));
    EXPECT_EQ(SerializeItemsListUtf8(items), dom_serialize_utf8(document));
}

TEST(ItemsListDocument, RecursiveIsTrueOnlyForTheWordTrueAndABadItemFailsTheWholeList) {
    const std::pair<const wchar_t*, std::uint32_t> cases[] = {
        {L"TRUE", 1}, {L"1", 0}, {L"false", 0}, {L"", 0}};
    for (const auto& [text, expected] : cases) {
        ItemsList read;
        DeserializeItemsList(std::wstring(L"<fileslist><AnyName Recursive=\"") + text +
                                 L"\" Path=\"p\" Mask=\"m\" FullPath=\"f\" RelativePath=\"r\"/></fileslist>",
                             read);
        EXPECT_EQ(read, ItemsList{CFilesListItem(L"p", L"m", expected, L"r", L"f")});
    }
    ItemsList read = sample_items();
    const std::wstring missing =
        L"<FilesList><File Recursive='true' Path='p' Mask='m' FullPath='f' "
        L"RelativePath='r'/><File Recursive='true' Path='p' Mask='m' FullPath='f'/></FilesList>";
    EXPECT_EQ(failure_lines([&] { DeserializeItemsList(missing, read); }),
              (std::vector<std::string>{
                  "Unexpected type (1) of the XML attribute (RelativePath). Expected: 'VT_BSTR'.",
                  "Failed to de-serialize XML to the items list."}));
    EXPECT_EQ(failure_lines([&] { DeserializeItemsList(L"<FilesList><!-- x --></FilesList>", read); }, 3),
              (std::vector<std::string>{"Failed to convert XMLDOMNode to XMLDOMElement.",
                                        "Failed to retrieve children of the XML node.",
                                        "Failed to de-serialize XML to the items list."}));
    EXPECT_EQ(read, sample_items());
}

TEST(SnapshotIdsDocument, IdsKeepOrderThroughTheRoundTripAndABadIdNamesTheAttributeAndTheList) {
    const SnapshotIdList ids = {string_to_guid(std::wstring(L"{6b29fc40-ca47-1067-b31d-00dd010662da}")),
                                GUID_NULL};
    const std::wstring xml = msxml_layout::without_breaks(SerializeSnapshotIds(ids));
    EXPECT_EQ(xml, L"<SnapshotIDs><ID value=\"{6b29fc40-ca47-1067-b31d-00dd010662da}\"/>"
                   L"<ID value=\"{00000000-0000-0000-0000-000000000000}\"/></SnapshotIDs>");
    SnapshotIdList read;
    DeserializeSnapshotIds(xml, read);
    EXPECT_EQ(read, ids);
    read.clear();
    EXPECT_EQ(
        failure_lines([&] { DeserializeSnapshotIds(L"<SnapshotIDs><X value='bad'/></SnapshotIDs>", read); },
                      3),
        (std::vector<std::string>{"Failed to convert string [bad] to UUID.",
                                  "Failed to retrieve value of the GUID attribute. Attribute name: 'value'.",
                                  "Failed to de-serialize VSS IDs list from XML."}));
    EXPECT_TRUE(read.empty());
}

} // namespace
