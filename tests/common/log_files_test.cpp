// The log file: its folder, its name when locked, its size limit and the ageing of its archives; many
// threads writing through rotations, every message arriving once, whole, with its lines marked, in its
// writer's order.
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log_names.h"
#include "common/logging/prepare_log.h"
#include "common/logging/win_log_file.h"
#include "common/logging/zip_writer.h"
#include "log_test_support.h"
#include "tests/support/failure_lines.h"

#include <algorithm>
#include <map>
#include <regex>
#include <sstream>
#include <thread>

namespace fs = std::filesystem;
using log_test::bodies_of;
using log_test::gunzip;
using log_test::lines_t;
using log_test::log_file_test;
using log_test::read_file;
using log_test::write_archive;
using logging::receiver::aged_name;
using logging::receiver::check_log_size;
using logging::receiver::numbered_log_name;

// The names that the rotations and the openings below do not meet.
TEST(log_file_names, archives_by_age_and_numbered_names_of_locked_logs) {
    EXPECT_EQ(aged_name("Mirrack.log.GZ", "gz", 3), "Mirrack.log.3.gz");
    EXPECT_EQ(aged_name("Mirrack.log", "gz", 1), "Mirrack.log.1");
    EXPECT_EQ(aged_name("noextension", "gz", 4), "noextension.4");

    EXPECT_EQ(numbered_log_name("Mirrack.LOG", 7), "Mirrack.7.log");
    EXPECT_EQ(numbered_log_name("trace", 1), "trace.1.log");
    EXPECT_EQ(numbered_log_name("dot.", 2), "dot.2");
}

// The log grows through its own receiver: on Windows no other writer may touch the file it holds.
TEST_F(log_file_test, rotation_starts_at_the_real_limit) {
    EXPECT_EQ(logging::receiver::log_size_limit, 15728640u);
    auto receiver = logging::main_log()->receiver();
    receiver->write(std::string(logging::receiver::log_size_limit - 1 - fs::file_size(log_path_), 'x'));
    check_log_size(receiver);
    EXPECT_FALSE(fs::exists(folder_ / "Mirrack.log.gz"));
    receiver->write("y");
    check_log_size(receiver);
    EXPECT_EQ(fs::file_size(log_path_), 0u);
    const std::string archived = gunzip(folder_ / "Mirrack.log.gz");
    EXPECT_EQ(archived.size(), logging::receiver::log_size_limit);
    EXPECT_EQ(archived.substr(archived.size() - 2), "xy");
}

TEST_F(log_file_test, twelve_rotations_keep_ten_aged_archives_behind_the_newest) {
    logging::receiver::set_log_size_limit_for_tests(1);
    auto receiver = logging::main_log()->receiver();
    for (int generation = 0; generation < 12; ++generation) {
        log_info(logging::tool_logger(), "generation %1", std::to_string(generation));
        check_log_size(receiver);
    }
    log_info(logging::tool_logger(), "after");
    EXPECT_EQ(bodies(), (lines_t{"Mirrack| after"}));
    for (int age = 0; age <= 10; ++age)
        EXPECT_EQ(bodies_of(gunzip(aged_name((folder_ / "Mirrack.log.gz").string(), "gz", age))),
                  lines_t{"Mirrack| generation " + std::to_string(11 - age)});
    EXPECT_FALSE(fs::exists(folder_ / "Mirrack.log.11.gz"));
}

TEST_F(log_file_test, size_is_looked_at_every_thousandth_message) {
    logging::receiver::set_log_size_limit_for_tests(1);
    for (int i = 1; i < logging::messages_between_size_checks; ++i)
        log_info(logging::lib_logger(), "message %1", std::to_string(i));
    EXPECT_FALSE(fs::exists(folder_ / "Mirrack.log.gz"));
    log_info(logging::lib_logger(), "the thousandth");
    log_info(logging::lib_logger(), "the next");
    EXPECT_EQ(bodies(), (lines_t{"the next"}));
    const std::string archived = gunzip(folder_ / "Mirrack.log.gz");
    EXPECT_NE(archived.find("> message 1\r\n"), std::string::npos);
    EXPECT_NE(archived.find("> the thousandth\r\n"), std::string::npos);
}

TEST_F(log_file_test, failed_rotation_keeps_logging_at_the_end_of_the_file) {
    logging::receiver::set_log_size_limit_for_tests(1);
    log_info(logging::lib_logger(), "kept");
    // The archives must age, and the oldest name holds something that cannot be removed.
    write_archive(folder_ / "Mirrack.log.gz", "newest");
    fs::create_directories(folder_ / "Mirrack.log.10.gz" / "content");
    EXPECT_THROW(check_log_size(logging::main_log()->receiver()), exc::exc_base_t);
    log_info(logging::lib_logger(), "appended");
    EXPECT_EQ(bodies(), (lines_t{"kept", "appended"}));
}

// Folders are made, an old log at its limit is rotated first, a log that another writer holds gives
// way to a numbered name, and a folder that can't be made has no fallback.
TEST(log_file_opening, folders_are_made_old_logs_rotated_held_logs_numbered_and_bad_folders_refused) {
    const win_test::temp_tree_t tree;
    const fs::path& folder = tree.root();
    const fs::path path = folder / "deep" / "er" / "Mirrack.log";
    logging::receiver::prepare_log(path.string())->write("old line\r\n");
    logging::receiver::set_log_size_limit_for_tests(5);
    auto reopened = logging::receiver::prepare_log(path.string());
    logging::receiver::set_log_size_limit_for_tests(logging::receiver::log_size_limit);
    reopened->write("new line\r\n");
    EXPECT_EQ(read_file(path), "new line\r\n");
    EXPECT_EQ(gunzip(folder / "deep" / "er" / "Mirrack.log.gz"), "old line\r\n");
    reopened.reset();
    {
        win::win_log_file_t holder((folder / "Mirrack.log").string());
        win::win_log_file_t second_holder((folder / "Mirrack.1.log").string());
        EXPECT_THROW(win::win_log_file_t((folder / "Mirrack.log").string()), exc::file_locked_exc_t);
        auto receiver = logging::receiver::prepare_log((folder / "Mirrack.log").string());
        EXPECT_EQ(receiver->path(), (folder / "Mirrack.2.log").string());
        win::win_log_file_t text_holder((folder / "run.txt").string());
        EXPECT_EQ(logging::receiver::prepare_log((folder / "run.txt").string())->path(),
                  (folder / "run.txt.1.log").string());
    }
    std::ofstream(folder / "plain", std::ios::binary) << "a file where a folder should be";
    const std::string outside = (folder / "plain" / "Mirrack.log").string();
    EXPECT_THROW(logging::receiver::prepare_log(outside), exc::exc_base_t);
    logging::main_log()->install(nullptr, false);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(logging::install_log(outside));
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "LOG: Initializing log file ...\nFailed to initialize log [" + outside + "].\n");
    EXPECT_EQ(logging::main_log()->receiver(), nullptr);
}

// An archive whose folder is gone is refused at once, naming the archive, with the system's own
// reason below: nothing under the archive's name or its working name is left.
TEST(log_file_archives, an_archive_that_cannot_be_opened_is_refused_with_the_reason) {
    const win_test::temp_tree_t tree;
    const std::string archive = (tree.root() / "gone" / "Mirrack.log.gz").string();
    const auto lines = failure_lines([&] { util::zip_writer_t{archive, 9}; });
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1], "Failed to open GZ archive [" + archive + "].");
    EXPECT_FALSE(fs::exists(tree.root() / "gone"));
}

TEST_F(log_file_test, eight_writers_through_rotations_lose_no_line_and_split_no_message) {
    constexpr int writers = 8;
    constexpr int messages = 1000;
    // Each size check rotates; the checks of all messages stay within the kept generations.
    logging::receiver::set_log_size_limit_for_tests(1);
    std::vector<std::thread> threads;
    for (int w = 0; w < writers; ++w)
        threads.emplace_back([w] {
            for (int m = 0; m < messages; ++m)
                log_error(logging::tool_logger(), format_message("writer %1 message %2\nrest of %1 %2",
                                                                 std::to_string(w), std::to_string(m)));
        });
    for (auto& thread : threads)
        thread.join();

    std::string text;
    for (int age = logging::receiver::archive_generations; age >= 0; --age) {
        const fs::path archive =
            logging::receiver::aged_name((folder_ / "Mirrack.log.gz").string(), "gz", age);
        if (fs::exists(archive))
            text += log_test::gunzip(archive);
    }
    ASSERT_TRUE(fs::exists(folder_ / "Mirrack.log.1.gz")) << "no rotation happened";
    EXPECT_FALSE(fs::exists(folder_ / "Mirrack.log.10.gz")) << "lines may have aged out";
    text += log_test::read_file(log_path_);

    // Every line closed by CR LF, each first line followed by its rest, each writer's messages in order.
    ASSERT_EQ(std::count(text.begin(), text.end(), '\n'), 2 * writers * messages);
    const std::regex first_line(R"(> Mirrack\| ERR \|writer (\d) message (\d+)\r$)");
    std::map<std::string, int> next_message;
    std::istringstream lines(text);
    for (std::string first, rest; std::getline(lines, first) && std::getline(lines, rest);) {
        std::smatch match;
        ASSERT_TRUE(std::regex_search(first, match, first_line)) << first;
        ASSERT_EQ(std::stoi(match[2]), next_message[match[1]]++) << first;
        ASSERT_TRUE(rest.ends_with("> Mirrack| >>  |rest of " + match[1].str() + " " + match[2].str() + "\r"))
            << rest;
    }
}
