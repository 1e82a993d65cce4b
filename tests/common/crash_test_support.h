// A crash context pointed at a fresh dump folder for the length of a test, with
// the process log in a file of its own.
#pragma once

#include "common/crash/crash_context.h"
#include "common/crash/thread_frame.h"
#include "common/runtime/win_thread.h"
#include "log_test_support.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

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
