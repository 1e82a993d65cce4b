// A log of the process pointed at a fresh file of its own, read back line by line; a crash context
// pointed at a fresh dump folder for the length of a test.
#pragma once

#include "common/crash/crash_context.h"
#include "common/crash/thread_frame.h"
#include "common/logging/log.h"
#include "common/logging/log_file_receiver.h"
#include "common/logging/log_install.h"
#include "common/logging/log_rotation.h"
#include "common/logging/log_t.h"
#include "common/logging/zip_writer.h"
#include "common/runtime/win_thread.h"
#include "common/win/thread_id.h"
#include "tests/support/text_file.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <zlib.h>

namespace log_test {

using lines_t = std::vector<std::string>;

inline std::string gunzip(const std::filesystem::path& archive) {
    gzFile file = ::gzopen(archive.string().c_str(), "rb");
    EXPECT_NE(file, nullptr) << archive;
    std::string text;
    char buffer[4096];
    int got = 0;
    while (file != nullptr && (got = ::gzread(file, buffer, sizeof buffer)) > 0)
        text.append(buffer, static_cast<std::size_t>(got));
    EXPECT_EQ(got, 0) << archive;
    ::gzclose(file);
    return text;
}

inline void write_archive(const std::filesystem::path& path, const std::string& text) {
    util::zip_writer_t writer(path.string(), 9);
    writer.add(text.data(), text.size());
    writer.close();
}

// The names in a folder, sorted.
inline std::vector<std::string> names_in(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

using test_support::read_file;

// What follows the time stamp and the thread head; checks both on the way.
inline std::string body(const std::string& line, long thread_id = win::current_thread_id()) {
    static const std::regex head(R"(^\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\] <( *)(\d+)> )");
    std::smatch match;
    if (!std::regex_search(line, match, head)) {
        ADD_FAILURE() << "no line head: " << line;
        return line;
    }
    EXPECT_EQ(match[1].length() + match[2].length(), 6) << line;
    EXPECT_EQ(std::stol(match[2].str()), thread_id) << line;
    return match.suffix().str();
}

// The lines of a log text that this thread wrote, each without its head and its end; a carriage
// return inside a line stays.
inline std::vector<std::string> bodies_of(const std::string& text, const std::string& eol = "\r\n") {
    std::vector<std::string> bodies;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = text.find(eol, start);
        EXPECT_NE(end, std::string::npos) << "line without its end: " << text.substr(start);
        if (end == std::string::npos)
            break;
        bodies.push_back(body(text.substr(start, end - start)));
        start = end + eol.size();
    }
    return bodies;
}

class log_file_test : public ::testing::Test {
protected:
    void SetUp() override { logging::install_log_file(log_path_.string()); }

    void TearDown() override {
        logging::main_log()->install(nullptr, false);
        logging::receiver::set_log_size_limit_for_tests(logging::receiver::log_size_limit);
    }

    std::vector<std::string> bodies() const { return bodies_of(read_file(log_path_)); }

    bool log_has(const std::string& text) const { return test_support::contains(read_file(log_path_), text); }

    std::size_t log_count(const std::string& text) const {
        const std::string log = read_file(log_path_);
        std::size_t count = 0;
        for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1))
            ++count;
        return count;
    }

    win_test::temp_tree_t tree_;
    std::filesystem::path folder_ = tree_.root();
    std::filesystem::path log_path_ = folder_ / "Mirrack.log";
};

} // namespace log_test

namespace crash_test {

class dump_folder_test : public log_test::log_file_test {
protected:
    void SetUp() override {
        log_file_test::SetUp();
        crash::crash_context().dump_folder = dumps_.string();
    }
    void TearDown() override {
        crash::crash_context().dump_folder.clear();
        log_file_test::TearDown();
    }

    // A dump left by an earlier run, minutes_old minutes old.
    void add_old_dump(const std::string& name, int minutes_old) const {
        const auto path = dumps_ / name;
        std::ofstream(path) << "old";
        std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() -
                                                   std::chrono::minutes(minutes_old));
    }

    std::vector<std::string> dump_names() const { return log_test::names_in(dumps_); }

    std::string dump_text(const std::string& name) const { return log_test::read_file(dumps_ / name); }

    win_test::temp_tree_t dumps_tree_;
    std::filesystem::path dumps_ = dumps_tree_.root();
};

// Workers run under the crash frame, which another test may have taken off.
class crash_frame_test : public dump_folder_test {
protected:
    void SetUp() override {
        dump_folder_test::SetUp();
        win::set_thread_frame(&crash::thread_crash_frame);
    }
};

} // namespace crash_test
