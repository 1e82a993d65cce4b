// POSIX only: the translation of errno into the Win32 codes that Windows reports itself.
// The Win32 code and text that a failing platform call reports, by the situation that made it
// fail, as Windows words it.
#include "common/exc/exc.h"
#include "common/win/errno_posix.h"
#include "common/win/file.h"
#include "common/win/folder.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include <unistd.h>

namespace {

struct situation_t {
    const char* name;
    std::function<void(const win_test::temp_tree_t&)> fail;
    std::uint32_t code;
    const char* text;
};

const situation_t situations[] = {
    {"file_where_a_folder_is_expected",
     [](const win_test::temp_tree_t& tree) {
         tree.add_file("file");
         win::file_open(tree.wide("file\\inner"));
     },
     3, "The system cannot find the path specified.\r\n"},
    {"folder_opened_as_a_file",
     [](const win_test::temp_tree_t& tree) {
         tree.add_folder("folder");
         win::file_open(tree.wide("folder"));
     },
     5, "Access is denied.\r\n"},
    {"name_too_long",
     [](const win_test::temp_tree_t& tree) { win::create_folder(tree.wide(std::string(300, 'n'))); }, 206,
     "The filename or extension is too long.\r\n"},
    {"link_loop",
     [](const win_test::temp_tree_t& tree) {
         ASSERT_EQ(::symlink("loop", (tree.root() / "loop").c_str()), 0);
         win::file_open(tree.wide("loop"));
     },
     1921, "The name of the file cannot be resolved by the system.\r\n"},
};

} // namespace

TEST(FailingCallText, EachSituationGivesTheWindowsCodeAndText) {
    for (const situation_t& s : situations) {
        win_test::temp_tree_t tree;
        try {
            s.fail(tree);
            ADD_FAILURE() << s.name << ": no failure";
        } catch (const exc::win_sys_exc_t& e) {
            EXPECT_EQ(e.code(), s.code) << s.name;
            EXPECT_EQ(e.messages().front().text, s.text) << s.name;
        }
    }
}

// No errno may reach the last-resort text, which only says that the code is unknown; and the
// "not there" codes stay for the errnos that mean it.
TEST(FailingCallText, EveryErrnoHasAWindowsCodeWithItsText) {
    for (int error = 1; error < 134; ++error) {
        const DWORD code = win::win32_error_from_errno(error);
        const std::string text = exc::sys_error_text(code);
        EXPECT_EQ(text.find("Error code:"), std::string::npos) << error << " " << std::strerror(error);
        if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND) {
            EXPECT_TRUE(error == ENOENT || error == ENOTDIR || error == ECONNREFUSED) << std::strerror(error);
        }
    }
    EXPECT_EQ(exc::sys_error_text(win::win32_error_from_errno(EROFS)), "The media is write protected.\r\n");
    EXPECT_EQ(exc::sys_error_text(win::win32_error_from_errno(ENOTEMPTY)), "The directory is not empty.\r\n");
    EXPECT_EQ(exc::sys_error_text(win::win32_error_from_errno(EXDEV)),
              "The system cannot move the file to a different disk drive.\r\n");
    EXPECT_EQ(win::win32_error_from_errno(EDQUOT), win::win32_error_from_errno(ENOSPC));
}
