#include "common/exc/exc.h"
#include "common/win/file.h"
#include "sys_failure.h"
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

TEST(FileOperations, WriteSeekReadResizeReopenAndFailuresThatNameTheFile) {
    win_test::temp_tree_t tree;
    auto file = file_open(tree.wide("log.txt"));
    EXPECT_EQ(file_write(*file, "hello world", 11), 11u);
    EXPECT_EQ(file_size(*file), 11u);
    EXPECT_EQ(file_seek(*file, -5, seek_method_t::end), 6u);
    EXPECT_EQ(file_seek(*file, 2, seek_method_t::current), 8u);
    file_set_size(*file, 5);
    EXPECT_EQ(read_all(*file), "hello");
    file_flush(*file);
    // Opening keeps what is there.
    tree.add_file("old.txt", "kept");
    auto old = file_open(tree.wide("old.txt"));
    EXPECT_EQ(read_all(*old), "kept");
    EXPECT_EQ(file_seek(*old, 0, seek_method_t::end), 4u);
    // Failures name the file.
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
