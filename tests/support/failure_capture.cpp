#include "tests/support/failure_capture.h"

#include "common/logging/log_install.h"
#include "tests/support/text_file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <unistd.h>

namespace test_support {

namespace {

std::string log_path() {
    static const std::string path = [] {
        auto file =
            std::filesystem::temp_directory_path() / ("mirrack-test-" + std::to_string(getpid()) + ".log");
        return logging::install_log_file(file.string());
    }();
    return path;
}

} // namespace

log_capture_t::log_capture_t() : start_(read_file(log_path()).size()) {}

std::string log_capture_t::text() const {
    return read_file(log_path()).substr(start_);
}

std::size_t log_capture_t::count(const std::string& piece) const {
    const std::string all = text();
    std::size_t found = 0;
    for (auto at = all.find(piece); at != std::string::npos; at = all.find(piece, at + piece.size()))
        ++found;
    return found;
}

void install_test_log() {
    log_path();
}

} // namespace test_support
