// The performance logger: which codes are enabled, records that reach the file
// when the buffer is full, and failures that empty the buffer.
#include "common/logging/perf_logger.h"
#include "log_test_support.h"

#include <gtest/gtest.h>

#include <cstring>

using logging::perf::perf_logger_t;
using logging::perf::perf_record_t;

namespace {

using perf_logger_test = log_test::log_file_test;

// Word 1 enables bit 3: code 0x103 (set size) and every code whose low five bits are 3 in 0x100-0x1FF.
std::vector<std::uint32_t> set_size_only() {
    return {0, 1u << 3};
}

} // namespace

// The process's table is empty, so no file operation is timed; a code selects its word and bit; a full
// buffer goes to the file in a folder of its own unless it cannot be written.
TEST_F(perf_logger_test, CodesSelectTheirWordAndBitAndAFullBufferGoesToTheFileUnlessItCannotBeWritten) {
    for (std::uint32_t code : {win::file_op::write, win::file_op::read, win::file_op::seek,
                               win::file_op::set_size, win::file_op::flush, 0u, 0xFFFFFFFFu})
        EXPECT_FALSE(logging::perf::perf_logger().enabled(code)) << code;
    logging::perf::note_file_operation(win::file_op::write);
    EXPECT_EQ(logging::perf::perf_logger().buffered(), 0u);
    perf_logger_t selective(set_size_only(), L"");
    EXPECT_TRUE(selective.enabled(win::file_op::set_size));
    EXPECT_TRUE(selective.enabled(0x123)); // bit 3 of word 1 again
    EXPECT_FALSE(selective.enabled(win::file_op::flush));
    EXPECT_FALSE(selective.enabled(0x003)); // word 0
    EXPECT_FALSE(selective.enabled(0x203)); // beyond the table
    selective.note(win::file_op::flush);
    EXPECT_EQ(selective.buffered(), 0u);
    const auto folder = folder_ / "perf" / "logs";
    {
        perf_logger_t logger(set_size_only(), folder.wstring(), 3);
        for (int i = 0; i < 4; ++i)
            logger.note(win::file_op::set_size);
        EXPECT_EQ(logger.buffered(), 1u);
        EXPECT_EQ(std::filesystem::file_size(folder / "perflog.bin"), 3 * sizeof(perf_record_t));
    }
    // The last record follows when the logger ends.
    const std::string data = log_test::read_file(folder / "perflog.bin");
    ASSERT_EQ(data.size(), 4 * sizeof(perf_record_t));
    perf_record_t record;
    std::memcpy(&record, data.data(), sizeof record);
    EXPECT_EQ(record.code, win::file_op::set_size);
    EXPECT_EQ(record.thread_id, static_cast<std::uint32_t>(win::current_thread_id()));
    // A folder or file that cannot be written empties the buffer.
    perf_logger_t no_folder(set_size_only(), L"", 1);
    no_folder.note(win::file_op::set_size);
    EXPECT_EQ(no_folder.buffered(), 0u);
    EXPECT_TRUE(log_has("Performance logger failed to create directory."));

    // A folder where the file should be.
    std::filesystem::create_directories(folder_ / "perf" / "perflog.bin");
    perf_logger_t no_file(set_size_only(), (folder_ / "perf").wstring(), 1);
    no_file.note(win::file_op::set_size);
    EXPECT_EQ(no_file.buffered(), 0u);
    EXPECT_TRUE(
        log_has("Unable to flush performance log data. Perflog buffer will be erased, data will be lost."));
}
