// The items list document: read into a list that already holds an item, then written and
// read again.
#include "fuzz/fuzz_input.h"
#include "invoke/files_list.h"

#include <exception>

namespace {

const CFilesListItem earlier_item(L"C:\\VMs", L"*", 1, L"a.vhdx", L"C:\\VMs\\a.vhdx");

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring xml = fuzz::wide_text(fuzz::bytes_of(data, size));
    ItemsList items{earlier_item};
    try {
        DeserializeItemsList(xml, items);
    } catch (const std::exception&) {
        fuzz::require(items == ItemsList{earlier_item}, "a failed read leaves the list as it was");
        return 0;
    }
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
