// The snapshot ID list document: read into a list that already holds an ID, then written
// and read again.
#include "common/format/format.h"
#include "documents/snapshot_ids.h"
#include "fuzz/fuzz_input.h"

#include <cstring>
#include <exception>

namespace {

const GUID earlier_id = {0x11111111, 0x2222, 0x3333, {0x44, 0x44, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55}};

bool same_ids(const SnapshotIdList& a, const SnapshotIdList& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(GUID)) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring xml = fuzz::wide_text(fuzz::bytes_of(data, size));
    SnapshotIdList ids{earlier_id};
    try {
        DeserializeSnapshotIds(xml, ids);
    } catch (const std::exception&) {
        fuzz::require(same_ids(ids, SnapshotIdList{earlier_id}), "a failed read leaves the list as it was");
        return 0;
    }
    fuzz::require(!ids.empty() && same_ids({ids.front()}, {earlier_id}),
                  "read IDs go behind the earlier ones");
    const SnapshotIdList read(ids.begin() + 1, ids.end());

    SnapshotIdList again;
    try {
        DeserializeSnapshotIds(SerializeSnapshotIds(read), again);
    } catch (const std::exception&) {
        fuzz::require(false, "a list that was read is written as a document that reads");
    }
    fuzz::require(same_ids(again, read), "a list survives writing and reading");
    return 0;
}
