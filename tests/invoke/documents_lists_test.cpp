#include "common/format/format.h"
#include "invoke/files_list.h"
#include "invoke/snapshot_ids.h"
#include "tests/invoke/documents_test_lines.h"

#include <gtest/gtest.h>

namespace {

ItemsList sample_items() {
    return {
        CFilesListItem(L"C:\\VMs\\a", L"*.vhdx", 1, L"disk 1.vhdx", L"C:\\VMs\\a\\disk 1.vhdx"),
        CFilesListItem(L"C:\\VMs\\a", L"vm.xml", 0, L"vm.xml", L"\\\\?\\GLOBALROOT\\Device\\X\\a&b<c>.xml"),
        CFilesListItem(L"D:\\", L"\u00e9*", 1, L"sub\\\u00e9t\u00e9", L"D:\\sub\\\u00e9t\u00e9")};
}

std::wstring files_list_with(const std::wstring& recursive) {
    return L"<FilesList><File Recursive=\"" + recursive +
           L"\" Path=\"p\" Mask=\"m\" FullPath=\"f\" RelativePath=\"r\"/></FilesList>";
}

TEST(ItemsListDocument, ItemsKeepOrderAndFieldsThroughTheRoundTrip) {
    ItemsList read;
    DeserializeItemsList(SerializeItemsList(sample_items()), read);
    EXPECT_EQ(read, sample_items());
}

TEST(ItemsListDocument, WritesAttributesInTheirFixedOrder) {
    EXPECT_EQ(SerializeItemsList({CFilesListItem(L"p", L"m", 7, L"r", L"f")}),
              L"<FilesList><File Recursive=\"true\" Path=\"p\" Mask=\"m\" FullPath=\"f\" RelativePath=\"r\"/>"
              L"</FilesList>");
}

TEST(ItemsListDocument, EmptyListIsTheRootAlone) {
    EXPECT_EQ(SerializeItemsList({}), L"<FilesList/>");
    ItemsList read;
    DeserializeItemsList(L"<FilesList></FilesList>", read);
    EXPECT_TRUE(read.empty());
}

TEST(ItemsListDocument, RecursiveIsTrueOnlyForTheWordTrue) {
    const std::pair<const wchar_t*, std::uint32_t> cases[] = {
        {L"true", 1}, {L"TRUE", 1}, {L"1", 0}, {L"false", 0}, {L"", 0}};
    for (const auto& [text, expected] : cases) {
        ItemsList read;
        DeserializeItemsList(files_list_with(text), read);
        ASSERT_EQ(read.size(), 1u);
        EXPECT_EQ(read[0].recursive, expected);
    }
}

TEST(ItemsListDocument, ReadingAppendsAndTakesChildrenOfAnyName) {
    ItemsList read = {CFilesListItem(L"x", L"x", 0, L"x", L"x")};
    DeserializeItemsList(
        L"<fileslist><Other Recursive='true' Path='p' Mask='m' FullPath='f' RelativePath='r'/>"
        L"</fileslist>",
        read);
    ASSERT_EQ(read.size(), 2u);
    EXPECT_EQ(read[1], CFilesListItem(L"p", L"m", 1, L"r", L"f"));
}

TEST(ItemsListDocument, MissingAttributeFailsTheWholeListAndLeavesItAsItWas) {
    ItemsList read = sample_items();
    const std::wstring xml =
        L"<FilesList><File Recursive='true' Path='p' Mask='m' FullPath='f' RelativePath='r'/>"
        L"<File Recursive='true' Path='p' Mask='m' FullPath='f'/></FilesList>";
    EXPECT_EQ(failure_lines([&] { DeserializeItemsList(xml, read); }),
              (std::vector<std::string>{
                  "Unexpected type (1) of the XML attribute (RelativePath). Expected: 'VT_BSTR'.",
                  "Failed to de-serialize XML to the items list."}));
    EXPECT_EQ(read, sample_items());
}

TEST(ItemsListDocument, CommentBetweenItemsIsAFailure) {
    ItemsList read;
    EXPECT_EQ(failure_lines([&] { DeserializeItemsList(L"<FilesList><!-- x --></FilesList>", read); }, 3),
              (std::vector<std::string>{"Failed to convert XMLDOMNode to XMLDOMElement.",
                                        "Failed to retrieve children of the XML node.",
                                        "Failed to de-serialize XML to the items list."}));
}

TEST(SnapshotIdsDocument, IdsKeepOrderThroughTheRoundTrip) {
    const SnapshotIdList ids = {string_to_guid(std::wstring(L"{6b29fc40-ca47-1067-b31d-00dd010662da}")),
                                GUID_NULL,
                                string_to_guid(std::wstring(L"{00000001-0002-0003-0405-060708090a0b}"))};
    const std::wstring xml = SerializeSnapshotIds(ids);
    EXPECT_EQ(xml.rfind(L"<SnapshotIDs><ID value=\"{6b29fc40-ca47-1067-b31d-00dd010662da}\"/>", 0), 0u);
    SnapshotIdList read;
    DeserializeSnapshotIds(xml, read);
    EXPECT_EQ(read, ids);
}

TEST(SnapshotIdsDocument, EmptyListIsTheRootAlone) {
    EXPECT_EQ(SerializeSnapshotIds({}), L"<SnapshotIDs/>");
}

TEST(SnapshotIdsDocument, BadIdNamesTheAttributeAndTheList) {
    SnapshotIdList read;
    EXPECT_EQ(
        failure_lines([&] { DeserializeSnapshotIds(L"<SnapshotIDs><X value='bad'/></SnapshotIDs>", read); },
                      3),
        (std::vector<std::string>{"Failed to convert string [bad] to UUID.",
                                  "Failed to retrieve value of the GUID attribute. Attribute name: 'value'.",
                                  "Failed to de-serialize VSS IDs list from XML."}));
    EXPECT_TRUE(read.empty());
}

TEST(SnapshotIdsDocument, MissingRootIsNamed) {
    SnapshotIdList read;
    EXPECT_EQ(failure_lines([&] { DeserializeSnapshotIds(L"<IDs/>", read); }),
              (std::vector<std::string>{"There is no child node with the specified name 'SnapshotIDs'.",
                                        "Failed to de-serialize VSS IDs list from XML."}));
}

} // namespace
