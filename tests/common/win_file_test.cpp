// The file, handle and path-text wrappers.
#include "common/exc/exc.h"
#include "common/win/file.h"
#include "common/win/handle.h"
#include "common/win/path.h"
#include "common/win/registry.h"
#include "sys_failure.h"
#include "tests/support/failure_lines.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using namespace win;

namespace {

std::vector<int> g_closed;

struct fake_traits {
    using pointer = int;
    static pointer invalid() noexcept { return -1; }
    static bool is_valid(pointer p) noexcept { return p >= 0; }
    static void close(pointer p) noexcept { g_closed.push_back(p); }
};
using fake_handle_t = unique_any_t<fake_traits>;

std::string read_all(win_file_t& file) {
    std::string text(static_cast<std::size_t>(file_size(file)), '\0');
    file_seek(file, 0, seek_method_t::begin);
    text.resize(file_read(file, text.data(), static_cast<DWORD>(text.size())));
    return text;
}

} // namespace

TEST(FileOperations, WriteSeekReadResizeReopenAndFailuresThatNameTheFile) {
    win_test::temp_tree_t tree;
    auto file = file_open(tree.wide("log.txt"));
    EXPECT_EQ(file_write(*file, "hello world", 11), 11u);
    EXPECT_EQ(file_seek(*file, -5, seek_method_t::end), 6u);
    EXPECT_EQ(file_seek(*file, 2, seek_method_t::current), 8u);
    file_set_size(*file, 5);
    EXPECT_EQ(read_all(*file), "hello");
    file_flush(*file);
    // Opening keeps what is there.
    tree.add_file("old.txt", "kept");
    auto old = file_open(tree.wide("old.txt"));
    EXPECT_EQ(read_all(*old), "kept");
    const std::string busy = std::filesystem::path(tree.wide("busy.log")).string();
    auto first = file_open(tree.wide("busy.log"));
    // A second writer is refused with the sharing code until the first has gone.
    EXPECT_EQ(sys_failure([&] { file_open(tree.wide("busy.log")); }),
              std::to_string(ERROR_SHARING_VIOLATION) + " Failed to create or open file [" + busy + "].");
    // 131: a seek before the start, as Windows numbers it.
    EXPECT_EQ(sys_failure([&] { file_seek(*first, -10, seek_method_t::begin); }),
              "131 Seek operation has failed. File: [" + busy +
                  "]. Distance to move: [-10]. Move method: [FILE_BEGIN].");
    first.reset();
    EXPECT_NO_THROW(file_open(tree.wide("busy.log")));
    EXPECT_THROW(file_open(tree.wide("missing\\x.txt")), exc::win_sys_exc_t);
}

TEST(HandleOwnership, EachValueIsClosedOnceByItsLastOwner) {
    g_closed.clear();
    {
        fake_handle_t a(1);
        fake_handle_t b(2);
        a = std::move(b);
        fake_handle_t c(std::move(a));
        fake_handle_t& same = c;
        c = std::move(same);
        EXPECT_EQ(g_closed, std::vector<int>{1});
    }
    EXPECT_EQ(g_closed, (std::vector<int>{1, 2}));

    // Release gives the value up; put closes the old one first.
    fake_handle_t d(4);
    EXPECT_EQ(d.release(), 4);
    fake_handle_t e(5);
    *e.put() = 6;
    EXPECT_EQ(g_closed, (std::vector<int>{1, 2, 5}));
    EXPECT_EQ(e.get(), 6);
    // A kernel handle that is empty or invalid means none.
    EXPECT_FALSE(win_handle_t().valid());
    win_handle_t invalid(invalid_handle());
    EXPECT_FALSE(invalid.valid());
    EXPECT_EQ(failure_lines([&] { (void)invalid.handle(); }),
              std::vector<std::string>{"Handle object is not initialized."});
}

TEST(WinPathText, SplitJoinRootsOfEveryFormAndSharesApartFromDevicePaths) {
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
    // Roots of every form, and shares apart from device paths.
    for (const wchar_t* root :
         {L"C:", L"c:\\", L"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000001}\\", L"\\\\srv\\share\\",
          L"\\\\srv\\share", L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy3\\", L"\\\\?\\C:\\", L"/"})
        EXPECT_TRUE(is_root_path(root)) << root;
    for (const wchar_t* not_root : {L"", L"C:\\a", L"\\\\srv", L"\\\\srv\\share\\dir",
                                    L"\\\\?\\Volume{1}\\dir", L"/tmp", L"\\\\?\\GLOBALROOT\\Device"})
        EXPECT_FALSE(is_root_path(not_root)) << not_root;
    EXPECT_TRUE(is_unc_share_path(L"\\\\fs01\\vms\\a.vhdx"));
    for (const wchar_t* not_share : {L"\\\\?\\Volume{1}\\a", L"\\\\.\\pipe\\x", L"C:\\a"})
        EXPECT_FALSE(is_unc_share_path(not_share)) << not_share;
    EXPECT_EQ(strip_trailing_separators(L"C:\\a\\\\/"), L"C:\\a");
}
