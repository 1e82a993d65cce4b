// Copying VM items into the backup folder: where each file lands, what is refused, and the
// progress bar in bytes; and the field check's reading of an item instead, its first and last MiB
// only, and its size against the live file's when there is one to compare with.
#include "client/item_sample_check.h"
#include "client/progress_bar.h"
#include "client/vm_item_copy.h"
#include "test_server.h"
#include "tests/support/failure_lines.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <tuple>

namespace {

namespace fs = std::filesystem;
using client_test::contains;

fs::path fresh_folder(const std::string& name) {
    const fs::path folder = client_test::scratch_folder() / name;
    fs::remove_all(folder);
    fs::create_directories(folder);
    return folder;
}

void write_file(const fs::path& file, const std::string& content) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
}

CFilesListItem item_at(const fs::path& file, const std::wstring& relativePath) {
    return CFilesListItem(L"C:\\VMs\\", L"*", 1, relativePath, file.wstring());
}

client::item_copy_t sampled(const fs::path& file, const fs::path& live) {
    std::error_code ignored;
    return {file.wstring(), file, {}, fs::file_size(file, ignored), live.wstring()};
}

} // namespace

TEST(BackupCopy, ItemsLandBelowTheirVmFolderInTheirRelativeLayoutAndNeverOutside) {
    const fs::path vmDir = "/backup/vm1";
    EXPECT_EQ(client::TargetPathOfItem(vmDir, L"disk.vhdx"), vmDir / "disk.vhdx");
    EXPECT_EQ(client::TargetPathOfItem(vmDir, L"Snapshots\\a\\b.avhdx"),
              vmDir / "Snapshots" / "a" / "b.avhdx");
    EXPECT_EQ(client::TargetPathOfItem(vmDir, L"x/.\\\\y.bin"), vmDir / "x" / "y.bin");
    EXPECT_EQ(client::TargetPathOfItem(vmDir, L"caf\u00e9.vhdx"), vmDir / fs::path(u8"caf\u00e9.vhdx"));
    for (const wchar_t* path :
         {L"", L"\\", L"..\\x", L"a\\..\\..\\x", L"\\etc\\passwd", L"/etc/passwd", L"C:\\x", L"C:x"})
        EXPECT_THROW(client::TargetPathOfItem(vmDir, path), exc::runtime_exc_t) << to_ansi_nothrow(path);
}

TEST(BackupCopy, EveryReachableItemIsCopiedAndTheRestAreNotedOnTheirVmWhenPlannedOrCopied) {
    const fs::path source = fresh_folder("copy-source");
    const fs::path target = fresh_folder("copy-target");
    const std::string big(3 << 20, 'b'); // more than one piece of the copy
    write_file(source / "vm1" / "disk.vhdx", big);
    write_file(source / "vm1" / "Snapshots" / "a.avhdx", "checkpoint");
    write_file(source / "vm2" / "empty.xml", "");
    write_file(source / "vm2" / "vanishing", ""); // empty: the bar still ends at its total

    std::vector<client::vm_copy_t> vms;
    vms.push_back(
        client::PlanVmCopy(L"VM1",
                           {item_at(source / "vm1" / "disk.vhdx", L"disk.vhdx"),
                            item_at(source / "vm1" / "Snapshots" / "a.avhdx", L"Snapshots\\a.avhdx")},
                           target));
    vms.push_back(client::PlanVmCopy(L"VM2",
                                     {item_at(source / "vm2" / "missing.vhdx", L"missing.vhdx"),
                                      item_at(source / "vm2" / "empty.xml", L"empty.xml"),
                                      CFilesListItem(L"Q:\\", L"x", 0, L"x", L"Q:\\x"),
                                      item_at(source / "vm1" / "disk.vhdx", L"empty.xml"),
                                      item_at(source / "vm2" / "vanishing", L"vanishing")},
                                     target));
    ASSERT_TRUE(vms[0].Complete());
    ASSERT_EQ(vms[1].failures.size(), 3u);
    EXPECT_TRUE(contains(vms[1].failures[0], "missing.vhdx"));
    EXPECT_TRUE(contains(vms[1].failures[1], "Q:\\x"));
    EXPECT_TRUE(contains(vms[1].failures[2], "same relative path"));

    // A file that vanishes before its copy fails only itself.
    fs::remove(source / "vm2" / "vanishing");
    std::ostringstream out;
    client::CopyVmItems(vms, out);
    EXPECT_EQ(vms[1].failures.size(), 4u);
    EXPECT_FALSE(fs::exists(target / "VM2" / "vanishing"));
    EXPECT_EQ(client_test::read_file(target / "VM1" / "disk.vhdx"), big);
    EXPECT_EQ(client_test::read_file(target / "VM1" / "Snapshots" / "a.avhdx"), "checkpoint");
    EXPECT_TRUE(fs::is_regular_file(target / "VM2" / "empty.xml"));
    EXPECT_EQ(vms[0].filesCopied, 2u);
    EXPECT_EQ(vms[0].bytesCopied, big.size() + 10);
    EXPECT_EQ(vms[1].filesCopied, 1u);
    EXPECT_EQ(vms[1].bytesCopied, 0u);
    EXPECT_TRUE(contains(out.str(), "100%  3.0 MiB / 3.0 MiB\n")) << out.str();
}

TEST(BackupProgress, TheBarShowsBytesAndItsShareOfTheTotalRedrawnInPlaceAtEachPercentOrWrittenAtEachTenth) {
    EXPECT_EQ(client::ByteProgressText(0, 2048, 10), "[----------]   0%  0 B / 2.0 KiB");
    EXPECT_EQ(client::ByteProgressText(1024, 2048, 10), "[#####-----]  50%  1.0 KiB / 2.0 KiB");
    EXPECT_EQ(client::ByteProgressText(2047, 2048, 10), "[#########-]  99%  2.0 KiB / 2.0 KiB");
    EXPECT_EQ(client::ByteProgressText(0, 0, 4), "[####] 100%  0 B / 0 B");
    EXPECT_EQ(client::FormatByteCount(1023), "1023 B");
    EXPECT_EQ(client::FormatByteCount(5ull << 30), "5.0 GiB");
    // In place: 0% to 100% and one line end; written: 0%, 10% ... 100%, a line each.
    for (const auto& [inPlace, returns, lines] : {std::tuple{true, 101, 1}, std::tuple{false, 0, 11}}) {
        std::ostringstream out;
        client::CByteProgressBar bar(out, 1000, inPlace);
        for (int i = 0; i < 1000; ++i)
            bar.Advance(1);
        bar.Finish();
        bar.Finish();
        const std::string text = out.str();
        EXPECT_EQ(bar.Done(), 1000u);
        EXPECT_EQ(std::count(text.begin(), text.end(), '\r'), returns) << inPlace;
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), lines) << inPlace;
    }
}

TEST(ItemSampleCheck, ReadsTheFirstAndLastMibOnceEachAndComparesTheLiveSize) {
    const std::uint64_t mib = client::sample_size;
    const fs::path samples = fresh_folder("samples");
    const fs::path big = samples / "big.vhdx", small = samples / "small.vmcx", empty = samples / "empty.vmrs",
                   grown = samples / "grown.vhdx";
    write_file(big, std::string(3 * mib + 5, 'x'));
    write_file(small, std::string(10, 'x'));
    write_file(empty, "");
    write_file(grown, std::string(3 * mib + 6, 'x'));
    std::uint64_t told = 0;
    const client::bytes_copied_t tell = [&told](std::uint64_t bytes) { told += bytes; };
    EXPECT_EQ(client::SampleItem(sampled(big, big), tell), 2 * mib);
    EXPECT_EQ(client::SampleItem(sampled(small, "/no/live/file"), tell), 10u);
    EXPECT_EQ(client::SampleItem(sampled(empty, empty), tell), 0u);
    EXPECT_EQ(told, 2 * mib + 10);

    // A live file that grew since the snapshot, and a file gone from the shadow copy.
    const std::string grew =
        testing::PrintToString(failure_lines([&] { client::SampleItem(sampled(big, grown), tell); }));
    EXPECT_TRUE(contains(grew, "has 3145733 bytes on the shadow copy")) << grew;
    std::vector<client::vm_copy_t> vms(2);
    vms[0].items = {sampled(big, big), sampled(small, small)};
    vms[1].items = {sampled(samples / "gone.vhdx", "")};
    vms[1].items[0].size = 0; // planned empty, then gone: the bar still ends at its total
    std::ostringstream out;
    client::CheckVmItems(vms, out);
    EXPECT_EQ(vms[0].filesCopied, 2u);
    EXPECT_EQ(vms[0].bytesCopied, 2 * mib + 10);
    EXPECT_TRUE(vms[0].Complete());
    ASSERT_EQ(vms[1].failures.size(), 1u);
    EXPECT_TRUE(contains(vms[1].failures[0], "Failed to open the file")) << vms[1].failures[0];
    EXPECT_TRUE(contains(out.str(), "100%  2.0 MiB / 2.0 MiB\n")) << out.str();
}
