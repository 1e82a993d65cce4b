// POSIX only: a full disk is made by mounting a small tmpfs.
// A log rotation on a disk that runs full loses no line and no good archive.
#include "log_test_support.h"

#include "common/exc/exc.h"
#include "common/logging/log_rotation.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace fs = std::filesystem;
using log_test::gunzip;
using log_test::log_file_test;
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
    // Aged once for all attempts, the archive that could not be finished removed, no line lost.
    EXPECT_FALSE(fs::exists(folder_ / "Mirrack.log.gz"));
    EXPECT_EQ(gunzip(folder_ / "Mirrack.log.1.gz"), "newest");
    EXPECT_EQ(gunzip(folder_ / "Mirrack.log.2.gz"), "older");
    EXPECT_FALSE(fs::exists(folder_ / "Mirrack.log.3.gz"));
    log_info(logging::lib_logger(), "while it was full");
    EXPECT_EQ(bodies(), (std::vector<std::string>{"before the disk ran full", "while it was full"}));

    fs::remove(folder_ / "filler");
    check_log_size(receiver);
    EXPECT_EQ(fs::file_size(log_path_), 0u);
    const std::string archived = gunzip(folder_ / "Mirrack.log.gz");
    EXPECT_NE(archived.find("> before the disk ran full\r\n"), std::string::npos) << archived;
    EXPECT_NE(archived.find("> while it was full\r\n"), std::string::npos) << archived;
    EXPECT_EQ(gunzip(folder_ / "Mirrack.log.1.gz"), "newest");
    EXPECT_EQ(gunzip(folder_ / "Mirrack.log.2.gz"), "older");
}
