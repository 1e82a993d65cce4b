#include "common/exc/exc.h"
#include "common/win/folder.h"
#include "compat/win_types.h"
#include "tests/support/failure_lines.h"
#include "tests/support/under_wine.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>

TEST(FolderCreation, MakesEveryMissingLevelFromTheTopThatTheProbesThenSee) {
    win_test::temp_tree_t tree;
    const std::wstring deep = tree.wide("a\\b\\c\\d") + L"\\\\";
    win::create_folder(deep);
    EXPECT_TRUE(std::filesystem::is_directory(tree.root() / "a/b/c/d"));
    // Again: nothing to do, no failure; nor for a drive alone.
    EXPECT_NO_THROW(win::create_folder(tree.wide("a\\b")));
    EXPECT_NO_THROW(win::create_folder(L"C:"));
    // Probes tell files and folders apart, answer roots as folders and what is not there as false, not
    // a failure: f a file, d a folder, - nothing there.
    tree.add_file("Dir/File.txt");
    std::string kinds;
    for (const std::wstring& path : {deep, tree.wide("Dir\\File.txt"), tree.wide("dir\\"), tree.wide("none"),
                                     std::wstring(L"/"), std::wstring(L"Q:\\nowhere")}) {
        bool is_folder = true;
        kinds += win::path_exists(path, is_folder) ? (is_folder ? 'd' : 'f') : (is_folder ? '?' : '-');
        kinds += win::folder_exists(path) ? 'd' : '-';
    }
    EXPECT_EQ(kinds, "ddf-dd--dd--");
    EXPECT_FALSE(win::path_exists(tree.wide("none\\deeper")));
    EXPECT_TRUE(win::folder_exists(std::filesystem::path(tree.wide("DIR")).string()));
    EXPECT_FALSE(win::folder_exists(L""));
    EXPECT_FALSE(win::folder_exists(L"Q:\\"));
}

// Threads that start together all find the folder made, whichever of them made each level.
TEST(FolderCreation, RacingCreatorsAllSucceed) {
    win_test::temp_tree_t tree;
    const int creators = 8;
    for (int round = 0; round < 20; ++round) {
        const std::wstring deep = tree.wide(std::to_string(round) + "\\a\\b\\c");
        std::latch start(creators);
        std::vector<std::thread> threads;
        for (int i = 0; i < creators; ++i)
            threads.emplace_back([&] {
                start.arrive_and_wait();
                try {
                    win::create_folder(deep);
                } catch (const std::exception& e) {
                    ADD_FAILURE() << e.what();
                }
            });
        for (auto& thread : threads)
            thread.join();
        ASSERT_FALSE(HasFailure()) << "round " << round;
        EXPECT_TRUE(win::folder_exists(deep));
    }
}

// Paths that keep no parent to create, shares without server and share among them.
TEST(FolderCreation, PathsWithoutACreatableParentAFileInTheWayOrAnUnmappedParentFail) {
    // A bare lead of a UNC or device path is named as given, not by what is left of it.
    for (const std::wstring path :
         {L"", L"\\\\srv\\share", L"\\\\server", L"\\\\server\\", L"\\\\", L"\\\\?\\", L"\\\\.\\"}) {
        const std::string shown =
            path == L"\\\\server\\" ? "\\\\server" : std::filesystem::path(path).string();
        EXPECT_EQ(failure_lines([&] { win::create_folder(path); }),
                  (std::vector<std::string>{"Invalid folder path: [" + shown + "].",
                                            "Cannot create folder. Folder path: [" +
                                                std::filesystem::path(path).string() + "]."}));
    }
    // Looking for a folder inside a file is a failure, not the quiet "not there" of errors 2 and 3.
    win_test::temp_tree_t tree;
    tree.add_file("blocker");
    const std::string sub = std::filesystem::path(tree.wide("blocker\\sub")).string();
    // Windows says that the folder's name is invalid (267); Wine's search, that the name is (123).
    const DWORD invalid = test_support::under_wine() ? 123 : 267;
    EXPECT_EQ(failure_lines([&] { win::create_folder(tree.wide("blocker\\sub")); }),
              (std::vector<std::string>{exc::sys_error_text(invalid),
                                        "Failed to check whether folder '" + sub + "' exists.",
                                        "Cannot create folder. Folder path: [" + sub + "]."}));
    // A parent that no volume holds fails at each level. As CreateDirectory says where the parent is
    // missing: the path, not the file. Wine says the file for a drive that no volume holds.
    const DWORD missing = test_support::under_wine() ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
    EXPECT_EQ(failure_lines([] { win::create_folder(L"Q:\\x\\y"); }),
              (std::vector<std::string>{exc::sys_error_text(missing),
                                        "CreateDirectory(Q:\\x) function call failed.",
                                        "Cannot create folder. Folder path: [Q:\\x].",
                                        "Cannot create folder. Folder path: [Q:\\x\\y]."}));
}
