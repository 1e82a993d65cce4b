// What tests of several folders share to look at failures: the log written meanwhile and the
// lines of an exception.
#pragma once

#include "tests/support/failure_lines.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace test_support {

// The log text written from construction on. The first capture of a process installs a log
// file of its own in the temporary folder.
class log_capture_t {
public:
    log_capture_t();
    std::string text() const;
    bool has(const std::string& piece) const { return text().find(piece) != std::string::npos; }
    std::size_t count(const std::string& piece) const;

private:
    std::size_t start_;
};

// Installs the log file of log_capture_t now, for tests that read the log only later.
void install_test_log();

} // namespace test_support
