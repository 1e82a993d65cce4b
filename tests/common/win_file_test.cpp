#include "common/exc/exc.h"
#include "common/win/file.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace win;

namespace {

std::string read_all(win_file_t& file) {
    std::string text(static_cast<std::size_t>(file_size(file)), '\0');
    file_seek(file, 0, seek_method_t::begin);
    text.resize(file_read(file, text.data(), static_cast<DWORD>(text.size())));
    return text;
}

} // namespace

TEST(FileOperations, WriteSeekReadAndResize) {
    win_test::temp_tree_t tree;
    auto file = file_open(tree.wide("log.txt"));
    EXPECT_EQ(file_write(*file, "hello world", 11), 11u);
    EXPECT_EQ(file_size(*file), 11u);
    EXPECT_EQ(file_seek(*file, -5, seek_method_t::end), 6u);
    EXPECT_EQ(file_seek(*file, 2, seek_method_t::current), 8u);
    file_set_size(*file, 5);
    EXPECT_EQ(read_all(*file), "hello");
    file_flush(*file);
}

TEST(FileOperations, OpeningKeepsWhatIsThere) {
    win_test::temp_tree_t tree;
    tree.add_file("old.txt", "kept");
    auto file = file_open(tree.wide("old.txt"));
    EXPECT_EQ(read_all(*file), "kept");
    EXPECT_EQ(file_seek(*file, 0, seek_method_t::end), 4u);
}

TEST(FileOperations, SecondWriterIsRefusedWithTheSharingCode) {
    win_test::temp_tree_t tree;
    auto first = file_open(tree.wide("busy.log"));
    try {
        file_open(tree.wide("busy.log"));
        FAIL() << "no exception";
    } catch (const exc::win_sys_exc_t& e) {
        EXPECT_EQ(e.code(), static_cast<std::uint32_t>(ERROR_SHARING_VIOLATION));
        EXPECT_EQ(e.messages().back().text, "Failed to create or open file [" +
                                                std::filesystem::path(tree.wide("busy.log")).string() + "].");
    }
    first.reset();
    EXPECT_NO_THROW(file_open(tree.wide("busy.log")));
}

TEST(FileOperations, FailuresNameTheFile) {
    win_test::temp_tree_t tree;
    EXPECT_THROW(file_open(tree.wide("missing\\x.txt")), exc::win_sys_exc_t);
    auto file = file_open(tree.wide("seek.bin"));
    try {
        file_seek(*file, -10, seek_method_t::begin);
        FAIL() << "no exception";
    } catch (const exc::win_sys_exc_t& e) {
        const std::string expected = "Seek operation has failed. File: [" +
                                     std::filesystem::path(tree.wide("seek.bin")).string() +
                                     "]. Distance to move: [-10]. Move method: [FILE_BEGIN].";
        EXPECT_EQ(e.messages().back().text, expected);
    }
}
