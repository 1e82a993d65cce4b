// Items move to the shadow copy of their volume; the result answers per VM.
#include "snapshot_test_support.h"

#include "snapshot/shadow_paths.h"

#include <gtest/gtest.h>

using namespace snapshot_test;

TEST(ShadowPaths, ItemsOnTheOldVolumeInAnyCaseMoveToTheNewOneOthersStayAndTheResultAnswersPerVm) {
    const std::wstring oldVolume = L"\\\\?\\Volume{aa}\\";
    const std::wstring device = L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy7";
    ItemsList items{CFilesListItem(L"p", L"m", 0, L"r", L"\\\\?\\VOLUME{AA}\\VMs\\a.vhdx"),
                    CFilesListItem(L"p", L"m", 0, L"r", oldVolume),
                    CFilesListItem(L"p", L"m", 0, L"r", L"\\\\?\\Volume{bb}\\VMs\\a.vhdx")};
    impl::MapVmItems(items, oldVolume, device);
    EXPECT_EQ(items[0].fullPath, device + L"\\VMs\\a.vhdx");
    EXPECT_EQ(items[1].fullPath, device);
    EXPECT_EQ(items[2].fullPath, L"\\\\?\\Volume{bb}\\VMs\\a.vhdx");
    EXPECT_EQ(items[0].relativePath, L"r");
    // The result lists a VM by its id and refuses others.
    const GUID known = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    const GUID unknown = {9, 9, 9, {9, 9, 9, 9, 9, 9, 9, 9}};
    CVssSnapshotResult result(std::make_shared<impl::CSnapshotInfo>(),
                              {{known, {CFilesListItem(L"p", L"m", 0, L"r", L"f")}}});
    EXPECT_NE(result.ListVmFiles(known).find("FullPath=\"f\""), std::string::npos);
    EXPECT_EQ(failure_lines([&] { result.ListVmFiles(unknown); }),
              std::vector<std::string>{"Cannot find VM with ID: [{00000009-0009-0009-0909-090909090909}]"});
}
