// What the VSS layer's tests share: the lines of a failure, the log written meanwhile, a backup
// object on the scratch host, and the calls the host saw.
#pragma once

#include "common/format/format.h"
#include "scratch_host.h"
#include "vssutils/com.h"

#include <functional>
#include <string>
#include <vector>

namespace vssutils_test {

// The lines of the exc::exc_base_t that action throws, cause first; fails the test if none is thrown.
std::vector<std::string> failure_lines(const std::function<void()>& action);

// The log text written from construction on.
class log_capture_t {
public:
    log_capture_t();
    std::string text() const;
    bool has(const std::string& piece) const { return text().find(piece) != std::string::npos; }
    std::size_t count(const std::string& piece) const;

private:
    std::size_t start_;
};

// How often the host saw op (optionally with argument among its arguments).
std::size_t journal_count(const hostsim_test::scratch_host_t& host, const std::string& op,
                          const std::string& argument = "");

// Created and initialised for a backup.
VSSUtils::BackupComponentsPtr initialised_backup();
// Also with the writers' metadata gathered.
VSSUtils::BackupComponentsPtr gathered_backup();

} // namespace vssutils_test
