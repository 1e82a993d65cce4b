// The table a backup ends with: one row per VM with its files, bytes and the
// status reported for it, and below it what went wrong with which VM.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace client {

struct vm_summary_row_t {
    std::wstring vmId;
    std::size_t files = 0;
    std::uint64_t bytes = 0;
    std::string status;
    std::vector<std::string> notes;
};

// The headings of the counted columns: a backup counts files and bytes copied.
struct summary_columns_t {
    std::string files = "Files";
    std::string bytes = "Bytes";
};

void PrintBackupSummary(const std::vector<vm_summary_row_t>& rows, std::ostream& out,
                        const summary_columns_t& columns = {});

} // namespace client
