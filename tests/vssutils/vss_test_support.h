// What the VSS layer's tests share: the lines of a failure, the log written meanwhile, a backup
// object on the scratch host, and the calls the host saw.
#pragma once

#include "common/format/format.h"
#include "scratch_host.h"
#include "tests/support/failure_capture.h"
#include "vssutils/com.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vssutils_test {

using namespace hostsim_test;
using test_support::failure_lines;
using test_support::log_capture_t;

// How often the host saw op (optionally with argument among its arguments).
inline std::size_t journal_count(const hostsim_test::scratch_host_t& host, const std::string& op,
                                 const std::string& argument = "") {
    const auto journal = host.journal();
    return std::count_if(journal.begin(), journal.end(), [&](const auto& record) {
        return record.size() >= 2 && record[1] == op &&
               (argument.empty() || std::find(record.begin() + 2, record.end(), argument) != record.end());
    });
}

} // namespace vssutils_test
