#include "client/item_sample_check.h"

#include "client/shadow_item_path.h"
#include "common/exc/exc.h"
#include "common/format/format.h"

#include <algorithm>
#include <fstream>

namespace client {

namespace {

void read_piece(std::ifstream& in, const item_copy_t& item, std::uint64_t offset, std::uint64_t length,
                const bytes_copied_t& read) {
    std::vector<char> piece(static_cast<std::size_t>(length));
    in.seekg(static_cast<std::streamoff>(offset));
    if (!in.read(piece.data(), static_cast<std::streamsize>(length)))
        throw exc::runtime_exc_t("Failed to read the file [%1] at byte %2.", to_ansi_nothrow(item.fullPath),
                                 std::to_string(offset));
    if (read)
        read(length);
}

// A live file that can't be reached (a proxy sees no live volume) or read is not compared.
void compare_with_live_file(const item_copy_t& item, std::uint64_t size) {
    const std::optional<std::filesystem::path> live = LocalPathOfItem(item.livePath);
    std::error_code error;
    const std::uint64_t liveSize = live ? std::filesystem::file_size(*live, error) : 0;
    if (!live || error || liveSize == size)
        return;
    throw exc::runtime_exc_t("The file [" + to_ansi_nothrow(item.fullPath) + "] has " + std::to_string(size) +
                             " bytes on the shadow copy, and [" + to_ansi_nothrow(item.livePath) + "] has " +
                             std::to_string(liveSize) + " on the live volume.");
}

} // namespace

std::uint64_t SampledBytes(std::uint64_t size) {
    return std::min(size, 2 * sample_size);
}

std::uint64_t SampleItem(const item_copy_t& item, const bytes_copied_t& read) {
    std::ifstream in(item.source, std::ios::binary | std::ios::ate);
    if (!in)
        throw exc::runtime_exc_t("Failed to open the file [%1] for reading.", to_ansi_nothrow(item.fullPath));
    const std::streamoff end = in.tellg();
    if (end < 0)
        throw exc::runtime_exc_t("Failed to find the size of the file [%1].", to_ansi_nothrow(item.fullPath));
    const auto size = static_cast<std::uint64_t>(end);
    const std::uint64_t head = std::min(size, sample_size);
    read_piece(in, item, 0, head, read);
    const std::uint64_t tail = SampledBytes(size) - head;
    read_piece(in, item, size - tail, tail, read);
    compare_with_live_file(item, size);
    return head + tail;
}

void CheckVmItems(std::vector<vm_copy_t>& vms, std::ostream& out) {
    ProcessVmItems(vms, out, &SampleItem, [](const item_copy_t& item) { return SampledBytes(item.size); });
}

} // namespace client
