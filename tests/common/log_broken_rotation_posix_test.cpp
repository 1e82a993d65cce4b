// POSIX only: the failing reads and cuts are the simulated host's.
// A log rotation whose archive breaks off halfway, however often, loses no line and no good
// archive, and leaves nothing under an archive's name.
#include "log_test_support.h"
#include "win_temp_tree.h"

#include "common/exc/exc.h"
#include "common/logging/log_rotation.h"

namespace fs = std::filesystem;
using log_test::gunzip;
using log_test::lines_t;
using log_test::log_file_test;
using log_test::names_in;
using log_test::write_archive;
using logging::receiver::check_log_size;

// The log cannot be read on behind its first mebibyte once part of it has gone into the archive;
// then, on the next attempt, not at all; then it cannot be cut once its archive is whole.
TEST_F(log_file_test, a_rotation_that_breaks_off_leaves_no_archive_and_loses_no_line) {
    write_archive(folder_ / "Mirrack.log.gz", "newest");
    write_archive(folder_ / "Mirrack.log.1.gz", "older");
    const std::string long_line(1024, 'x');
    for (int i = 0; i < 1100; ++i)
        log_info(logging::lib_logger(), long_line);
    log_info(logging::lib_logger(), "the last line");
    const auto size = fs::file_size(log_path_);
    ASSERT_GT(size, 0x100000u);
    logging::receiver::set_log_size_limit_for_tests(1);
    auto receiver = logging::main_log()->receiver();
    {
        win_test::selected_host_t host(
            R"(<Host name="T"><Fault op="ReadFile" match="Mirrack.log" nth="2" err="1117"/></Host>)");
        EXPECT_THROW(check_log_size(receiver), exc::exc_base_t);
        host.describe(R"(<Host name="T"><Fault op="ReadFile" match="Mirrack.log" err="1117"/></Host>)");
        EXPECT_THROW(check_log_size(receiver), exc::exc_base_t);
        // A whole archive whose lines the log cannot let go of goes too.
        host.describe(R"(<Host name="T"><Fault op="SetEndOfFile" match="Mirrack.log" err="5"/></Host>)");
        EXPECT_THROW(check_log_size(receiver), exc::exc_base_t);
    }
    // The archives written before are aged once however often it failed.
    EXPECT_EQ(names_in(folder_), (lines_t{"Mirrack.log", "Mirrack.log.1.gz", "Mirrack.log.2.gz"}));
    EXPECT_EQ(gunzip(folder_ / "Mirrack.log.1.gz"), "newest");
    EXPECT_EQ(gunzip(folder_ / "Mirrack.log.2.gz"), "older");
    EXPECT_EQ(fs::file_size(log_path_), size);
    log_info(logging::lib_logger(), "while it failed");

    check_log_size(receiver);
    EXPECT_EQ(fs::file_size(log_path_), 0u);
    lines_t archived(1100, long_line);
    archived.insert(archived.end(), {"the last line", "while it failed"});
    EXPECT_EQ(log_test::bodies_of(gunzip(folder_ / "Mirrack.log.gz")), archived);
    EXPECT_FALSE(fs::exists(folder_ / "Mirrack.log.3.gz"));
}
