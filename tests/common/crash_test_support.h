// A crash context pointed at a fresh dump folder for the length of a test, with
// the process log in a file of its own.
#pragma once

#include "common/crash/crash_context.h"
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
        dumps_ = log_test::fresh_folder("dumps");
        crash::crash_context().dump_folder = dumps_.string();
    }
    void TearDown() override {
        crash::crash_context().dump_folder.clear();
        std::filesystem::remove_all(dumps_);
        log_file_test::TearDown();
    }

    // A dump left by an earlier run, minutes_old minutes old.
    void add_old_dump(const std::string& name, int minutes_old) const {
        const auto path = dumps_ / name;
        std::ofstream(path) << "old";
        std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() -
                                                   std::chrono::minutes(minutes_old));
    }

    std::vector<std::string> dump_names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(dumps_))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    std::filesystem::path dumps_;
};

} // namespace crash_test
