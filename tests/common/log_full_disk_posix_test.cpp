// POSIX only: a full disk is made by mounting a small tmpfs, a failing read by the simulated host.
// A log rotation whose archive breaks off halfway loses no line and no good archive, and leaves
// nothing under an archive's name.
#include "log_test_support.h"
#include "win_temp_tree.h"

#include "common/exc/exc.h"
#include "common/logging/log_rotation.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace fs = std::filesystem;
using log_test::gunzip;
using log_test::log_file_test;
using log_test::names_in;
using log_test::write_archive;
using logging::receiver::check_log_size;

namespace {

// The log on a small file system of its own, so that its disk can run full. Mounting needs the
// right to; where it is missing, the tests are skipped.
class full_disk_test : public log_file_test {
protected:
    void SetUp() override {
        log_file_test::SetUp();
        logging::main_log()->install(nullptr, false);
        if (::mount("tmpfs", folder_.c_str(), "tmpfs", 0, "size=1m") != 0)
            GTEST_SKIP() << "cannot mount a tmpfs: " << std::strerror(errno);
        mounted_ = true;
        logging::install_log_file(log_path_.string());
    }

    void TearDown() override {
        logging::main_log()->install(nullptr, false);
        if (mounted_)
            ::umount2(folder_.c_str(), MNT_DETACH);
        log_file_test::TearDown();
    }

    // Takes every free block; what the file system has left is gone with the filler.
    void fill_disk() const {
        const int fd = ::open((folder_ / "filler").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ASSERT_GE(fd, 0);
        const std::string block(65536, 'f');
        while (::write(fd, block.data(), block.size()) > 0) {
        }
        ::close(fd);
    }

    bool mounted_ = false;
};

// The archives written before the rotation, aged once however often it failed.
void expect_good_archives_aged_once(const fs::path& folder) {
    EXPECT_EQ(gunzip(folder / "Mirrack.log.1.gz"), "newest");
    EXPECT_EQ(gunzip(folder / "Mirrack.log.2.gz"), "older");
    EXPECT_FALSE(fs::exists(folder / "Mirrack.log.3.gz"));
}

} // namespace

TEST_F(full_disk_test, a_rotation_that_fails_keeps_the_lines_and_the_good_archives_where_they_are) {
    write_archive(folder_ / "Mirrack.log.gz", "newest");
    write_archive(folder_ / "Mirrack.log.1.gz", "older");
    logging::receiver::set_log_size_limit_for_tests(1);
    log_info(logging::lib_logger(), "before the disk ran full");
    fill_disk();
    auto receiver = logging::main_log()->receiver();
    for (int attempt = 0; attempt < 3; ++attempt)
        EXPECT_THROW(check_log_size(receiver), exc::exc_base_t) << attempt;
    // Aged once for all attempts, the archive that could not be finished gone, no line lost.
    EXPECT_EQ(names_in(folder_),
              (std::vector<std::string>{"Mirrack.log", "Mirrack.log.1.gz", "Mirrack.log.2.gz", "filler"}));
    expect_good_archives_aged_once(folder_);
    log_info(logging::lib_logger(), "while it was full");
    EXPECT_EQ(bodies(), (std::vector<std::string>{"before the disk ran full", "while it was full"}));

    fs::remove(folder_ / "filler");
    check_log_size(receiver);
    EXPECT_EQ(fs::file_size(log_path_), 0u);
    const std::string archived = gunzip(folder_ / "Mirrack.log.gz");
    EXPECT_NE(archived.find("> before the disk ran full\r\n"), std::string::npos) << archived;
    EXPECT_NE(archived.find("> while it was full\r\n"), std::string::npos) << archived;
    expect_good_archives_aged_once(folder_);
}

// The same break without a mount: the log cannot be read on behind its first mebibyte, by a
// fault of the file layer, when part of it has gone into the archive.
TEST_F(log_file_test, a_rotation_that_breaks_off_halfway_leaves_no_archive_and_loses_no_line) {
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
    }
    EXPECT_EQ(names_in(folder_),
              (std::vector<std::string>{"Mirrack.log", "Mirrack.log.1.gz", "Mirrack.log.2.gz"}));
    expect_good_archives_aged_once(folder_);
    EXPECT_EQ(fs::file_size(log_path_), size);

    check_log_size(receiver);
    EXPECT_EQ(fs::file_size(log_path_), 0u);
    EXPECT_NE(gunzip(folder_ / "Mirrack.log.gz").find("> the last line\r\n"), std::string::npos);
    expect_good_archives_aged_once(folder_);
}
