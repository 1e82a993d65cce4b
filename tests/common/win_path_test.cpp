#include "common/win/path.h"

#include <gtest/gtest.h>

using namespace win;

TEST(WinPathText, SplitComponentsAndJoinOfEitherSeparator) {
    EXPECT_EQ(split_path(L"C:\\a\\b.txt"), std::make_pair(std::wstring(L"C:\\a"), std::wstring(L"b.txt")));
    EXPECT_EQ(split_path(L"C:\\a/b"), std::make_pair(std::wstring(L"C:\\a"), std::wstring(L"b")));
    EXPECT_EQ(split_path(L"name"), std::make_pair(std::wstring(), std::wstring(L"name")));
    EXPECT_EQ(split_path(L"C:\\a\\"), std::make_pair(std::wstring(L"C:\\a"), std::wstring()));
    EXPECT_EQ(parent_path(L"\\\\srv\\share\\f"), L"\\\\srv\\share");
    // Components ignore repeated and closing separators.
    const std::vector<std::wstring> expected{L"C:", L"a", L"b"};
    EXPECT_EQ(path_components(L"C:\\a\\\\b\\"), expected);
    EXPECT_EQ(path_components(L"C:/a/b"), expected);
    EXPECT_TRUE(path_components(L"\\\\").empty());
    EXPECT_EQ(path_components(L"\\\\?\\Volume{1}\\x").size(), 3u);
    // A join skips empty parts and takes off one closing separator.
    EXPECT_EQ(path_join(L"C:\\VMs\\", L"vm1"), L"C:\\VMs\\vm1");
    EXPECT_EQ(path_join(L"C:\\VMs", L"", L"*.vhdx"), L"C:\\VMs\\*.vhdx");
    EXPECT_EQ(path_join(L"", L"sub\\", L"f"), L"sub\\f");
    EXPECT_EQ(path_join(L"C:\\", L""), L"C:");
    // What is not the one closing separator stays as it is.
    EXPECT_EQ(path_join(L"a\\\\", L"\\b"), L"a\\\\\\b");
    EXPECT_EQ(path_join(L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy7", L"vms\\a.vhd"),
              L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy7\\vms\\a.vhd");
}

TEST(WinPathText, RootsOfEveryFormAndSharesApartFromDevicePaths) {
    for (const wchar_t* root :
         {L"C:", L"c:\\", L"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000001}\\", L"\\\\srv\\share\\",
          L"\\\\srv\\share", L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy3\\", L"\\\\?\\C:\\", L"/"})
        EXPECT_TRUE(is_root_path(root)) << root;
    for (const wchar_t* not_root : {L"", L"C:\\a", L"\\\\srv", L"\\\\srv\\share\\dir",
                                    L"\\\\?\\Volume{1}\\dir", L"/tmp", L"\\\\?\\GLOBALROOT\\Device"})
        EXPECT_FALSE(is_root_path(not_root)) << not_root;
    // A share is told from device paths.
    EXPECT_TRUE(is_unc_share_path(L"\\\\fs01\\vms\\a.vhdx"));
    EXPECT_FALSE(is_unc_share_path(L"\\\\?\\Volume{1}\\a"));
    EXPECT_FALSE(is_unc_share_path(L"\\\\.\\pipe\\x"));
    EXPECT_FALSE(is_unc_share_path(L"C:\\a"));
    EXPECT_EQ(strip_trailing_separators(L"C:\\a\\\\/"), L"C:\\a");
}
