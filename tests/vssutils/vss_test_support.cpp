#include "vss_test_support.h"

#include "common/exc/exc.h"
#include "common/logging/log_install.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace vssutils_test {

namespace {

std::string log_path() {
    static const std::string path = [] {
        auto file = std::filesystem::temp_directory_path() /
                    ("mirrack-vssutils-test-" + std::to_string(getpid()) + ".log");
        return logging::install_log_file(file.string());
    }();
    return path;
}

std::string read_all(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace

std::vector<std::string> failure_lines(const std::function<void()>& action) {
    try {
        action();
    } catch (const exc::exc_base_t& e) {
        std::vector<std::string> lines;
        for (const auto& entry : e.messages())
            lines.push_back(entry.text);
        return lines;
    }
    ADD_FAILURE() << "no failure was raised";
    return {};
}

log_capture_t::log_capture_t() : start_(read_all(log_path()).size()) {}

std::string log_capture_t::text() const {
    return read_all(log_path()).substr(start_);
}

std::size_t log_capture_t::count(const std::string& piece) const {
    std::string all = text();
    std::size_t found = 0;
    for (auto at = all.find(piece); at != std::string::npos; at = all.find(piece, at + piece.size()))
        ++found;
    return found;
}

std::size_t journal_count(const hostsim_test::scratch_host_t& host, const std::string& op,
                          const std::string& argument) {
    std::size_t found = 0;
    for (const auto& record : host.journal()) {
        if (record.size() < 2 || record[1] != op)
            continue;
        if (argument.empty() || std::find(record.begin() + 2, record.end(), argument) != record.end())
            ++found;
    }
    return found;
}

VSSUtils::BackupComponentsPtr initialised_backup() {
    auto backup = hostsim_test::new_backup();
    EXPECT_EQ(backup->InitializeForBackup(), S_OK);
    return backup;
}

VSSUtils::BackupComponentsPtr gathered_backup() {
    return hostsim_test::gathered_backup();
}

} // namespace vssutils_test
