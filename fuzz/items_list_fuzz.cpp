// The items list document: read into a list that already holds an item, then written and
// read again; and its UTF-8 forms, which must read and write as the wide ones do, whatever the
// characters of the values.
#include "common/exc/convert.h"
#include "common/format/format.h"
#include "documents/files_list.h"
#include "fuzz/fuzz_input.h"

#include <exception>

namespace {

const CFilesListItem earlier_item(L"C:\\VMs", L"*", 1, L"a.vhdx", L"C:\\VMs\\a.vhdx");

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring xml = fuzz::wide_text(fuzz::bytes_of(data, size));
    const CFilesListItem raw(xml, L"*", 0, xml + L"\u00e9", L"<" + xml);
    fuzz::require(SerializeItemsListUtf8({raw}) == to_utf8(SerializeItemsList({raw})),
                  "the list writes the same document as UTF-8 as it does as wide text");

    ItemsList items{earlier_item};
    ItemsList items_utf8{earlier_item};
    bool read_utf8 = true;
    try {
        DeserializeItemsListUtf8(to_utf8(xml), items_utf8);
    } catch (const std::exception&) {
        read_utf8 = false;
    }
    try {
        DeserializeItemsList(xml, items);
    } catch (const std::exception&) {
        fuzz::require(items == ItemsList{earlier_item}, "a failed read leaves the list as it was");
        fuzz::require(!read_utf8, "the list fails to read as UTF-8 where it fails as wide text");
        return 0;
    }
    fuzz::require(read_utf8 && items_utf8 == items, "the list reads the same from UTF-8 as from wide text");
    fuzz::require(!items.empty() && items.front() == earlier_item, "read items go behind the earlier ones");
    const ItemsList read(items.begin() + 1, items.end());
    for (const CFilesListItem& item : read)
        fuzz::require(item.recursive <= 1, "recursive reads as 0 or 1");

    ItemsList again;
    try {
        DeserializeItemsList(SerializeItemsList(read), again);
    } catch (const std::exception&) {
        fuzz::require(false, "a list that was read is written as a document that reads");
    }
    fuzz::require(again == read, "a list survives writing and reading");
    return 0;
}
