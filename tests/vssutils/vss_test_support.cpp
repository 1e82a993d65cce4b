#include "vss_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vssutils_test {

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
