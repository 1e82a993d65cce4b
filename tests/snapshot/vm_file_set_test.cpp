// The file set of a VM: searches through the wildcard rules, and auxiliary files.
#include "snapshot_test_support.h"

#include "snapshot/vm_file_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace snapshot_test;

namespace {

std::set<std::wstring> relative_paths(const ItemsList& items) {
    std::set<std::wstring> paths;
    for (const auto& item : items)
        paths.insert(item.relativePath);
    return paths;
}

} // namespace

TEST(VmFileSet, SearchesEnterOnlyDirectoriesTheirMaskMatchesAndReportNoDirectory) {
    hyperv_host_t host;
    ItemsList all, avhdx, nowhere;
    impl::SearchFiles(all, L"%VmRoot%\\local\\", L"*", true, L"");
    impl::SearchFiles(avhdx, L"C:\\VMs\\local\\", L"*.avhdx", true, L"");
    impl::SearchFiles(nowhere, L"C:\\VMs\\nowhere\\", L"*", true, L"");

    EXPECT_EQ(relative_paths(all),
              (std::set<std::wstring>{L"local.vhdx", L"local_1.avhdx", L"Disks\\inner.avhdx", L"Snapfile.bin",
                                      L"notes.txt", L"Snapshots\\Snap-a.vmrs", L"Snapshots\\other.txt",
                                      L"Snapshots\\Snapdeep\\Snap-b.vmrs", L"Snapshots\\Deep\\Snap-c.vmrs"}));
    const auto inner =
        std::find_if(all.begin(), all.end(), [](auto& i) { return i.relativePath[0] == L'D'; });
    ASSERT_NE(inner, all.end());
    EXPECT_EQ(*inner, CFilesListItem(L"%VmRoot%\\local\\", L"*", 1, L"Disks\\inner.avhdx",
                                     L"C:\\VMs\\local\\Disks\\inner.avhdx"));
    EXPECT_EQ(relative_paths(avhdx), (std::set<std::wstring>{L"local_1.avhdx"}));
    EXPECT_TRUE(nowhere.empty());
}

TEST(VmFileSet, AFailedSearchNamesEveryLevelOfTheWalkAndAuxFilesAreAddedOnceUnchecked) {
    hyperv_host_t host(R"(<Fault op="FindNextFileW" match="Snapdeep" err="5"/>)");
    ItemsList items;
    const auto lines =
        failure_lines([&] { impl::SearchFiles(items, L"%VmRoot%\\local\\", L"Snap*", true, L""); });
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines[1],
              "File search operation has failed. Search mask: [C:\\VMs\\local\\Snapshots\\Snapdeep\\Snap*].");
    const std::string level =
        "Failed to search the directory [%VmRoot%\\local\\] for a file [Snap*]. Is search recursive: [true].";
    EXPECT_EQ(std::vector<std::string>(lines.end() - 3, lines.end()), std::vector<std::string>(3, level));
    // Aux files are added once, by path equality, without being checked.
    ItemsList listed{CFilesListItem(L"C:\\VMs\\", L"a.vhdx", 0, L"a.vhdx", L"C:\\VMs\\a.vhdx")};
    impl::AddAuxFiles(listed,
                      {"c:\\vms\\\\A.VHDX", "C:\\VMs\\notes.txt", "C:\\VMs\\notes.txt\\", "bare.txt"});
    EXPECT_EQ(listed,
              (ItemsList{CFilesListItem(L"C:\\VMs\\", L"a.vhdx", 0, L"a.vhdx", L"C:\\VMs\\a.vhdx"),
                         CFilesListItem(L"C:\\VMs", L"notes.txt", 0, L"notes.txt", L"C:\\VMs\\notes.txt"),
                         CFilesListItem(L"", L"bare.txt", 0, L"bare.txt", L"bare.txt")}));
}
