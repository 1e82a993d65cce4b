// The field check's reading of an item: its first and last MiB only, and its size against
// the live file's when there is one to compare with.
#include "client/item_sample_check.h"
#include "test_server.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

client::item_copy_t item_of(const fs::path& file, const fs::path& live) {
    std::error_code ignored;
    return {file.wstring(), file, {}, fs::file_size(file, ignored), live.wstring()};
}

fs::path file_of(const std::string& name, std::uint64_t size) {
    const fs::path file = client_test::scratch_folder() / "samples" / name;
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << std::string(size, 'x');
    return file;
}

} // namespace

TEST(ItemSampleCheck, ReadsTheFirstAndLastMibOnceEachAndComparesTheLiveSize) {
    const std::uint64_t mib = client::sample_size;
    const fs::path big = file_of("big.vhdx", 3 * mib + 5), small = file_of("small.vmcx", 10);
    const fs::path empty = file_of("empty.vmrs", 0), grown = file_of("grown.vhdx", 3 * mib + 6);
    std::uint64_t told = 0;
    const client::bytes_copied_t tell = [&told](std::uint64_t bytes) { told += bytes; };
    EXPECT_EQ(client::SampleItem(item_of(big, big), tell), 2 * mib);
    EXPECT_EQ(client::SampleItem(item_of(small, "/no/live/file"), tell), 10u);
    EXPECT_EQ(client::SampleItem(item_of(empty, empty), tell), 0u);
    EXPECT_EQ(told, 2 * mib + 10);

    // A live file that grew since the snapshot, and a file gone from the shadow copy.
    try {
        client::SampleItem(item_of(big, grown), tell);
        ADD_FAILURE() << "a size that differs from the live file's must fail";
    } catch (const exc::runtime_exc_t& e) {
        EXPECT_NE(exc::exception_text(e).find("has 3145733 bytes on the shadow copy"), std::string::npos)
            << exc::exception_text(e);
    }
    std::vector<client::vm_copy_t> vms(2);
    vms[0].items = {item_of(big, big), item_of(small, small)};
    vms[1].items = {item_of(client_test::scratch_folder() / "samples" / "gone.vhdx", "")};
    vms[1].items[0].size = 0; // planned empty, then gone: the bar still ends at its total
    std::ostringstream out;
    client::CheckVmItems(vms, out);
    EXPECT_EQ(vms[0].filesCopied, 2u);
    EXPECT_EQ(vms[0].bytesCopied, 2 * mib + 10);
    EXPECT_TRUE(vms[0].Complete());
    ASSERT_EQ(vms[1].failures.size(), 1u);
    EXPECT_NE(vms[1].failures[0].find("Failed to open the file"), std::string::npos) << vms[1].failures[0];
    EXPECT_NE(out.str().find("100%  2.0 MiB / 2.0 MiB\n"), std::string::npos) << out.str();
}
