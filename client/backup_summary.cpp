#include "client/backup_summary.h"

#include "client/progress_bar.h"
#include "common/format/format.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

namespace client {

namespace {

struct column_widths_t {
    std::size_t vm;
    std::size_t files;
    std::size_t bytes;
};

column_widths_t widths_of(const std::vector<vm_summary_row_t>& rows, std::size_t totalFiles,
                          std::uint64_t totalBytes, const summary_columns_t& columns) {
    column_widths_t widths{2, columns.files.size(), columns.bytes.size()};
    widths.vm = std::max(widths.vm, std::string("Total").size());
    for (const vm_summary_row_t& row : rows)
        widths.vm = std::max(widths.vm, to_ansi_nothrow(row.vmId).size());
    widths.files = std::max(widths.files, std::to_string(totalFiles).size());
    widths.bytes = std::max(widths.bytes, FormatByteCount(totalBytes).size());
    for (const vm_summary_row_t& row : rows)
        widths.bytes = std::max(widths.bytes, FormatByteCount(row.bytes).size());
    return widths;
}

void print_row(std::ostream& out, const column_widths_t& widths, const std::string& vm,
               const std::string& files, const std::string& bytes, const std::string& status) {
    out << std::left << std::setw(static_cast<int>(widths.vm)) << vm << "  " << std::right
        << std::setw(static_cast<int>(widths.files)) << files << "  "
        << std::setw(static_cast<int>(widths.bytes)) << bytes;
    if (!status.empty())
        out << "  " << status;
    out << '\n';
}

} // namespace

void PrintBackupSummary(const std::vector<vm_summary_row_t>& rows, std::ostream& out,
                        const summary_columns_t& columns) {
    std::size_t totalFiles = 0;
    std::uint64_t totalBytes = 0;
    for (const vm_summary_row_t& row : rows) {
        totalFiles += row.files;
        totalBytes += row.bytes;
    }
    const column_widths_t widths = widths_of(rows, totalFiles, totalBytes, columns);
    print_row(out, widths, "VM", columns.files, columns.bytes, "Status");
    for (const vm_summary_row_t& row : rows)
        print_row(out, widths, to_ansi_nothrow(row.vmId), std::to_string(row.files),
                  FormatByteCount(row.bytes), row.status);
    print_row(out, widths, "Total", std::to_string(totalFiles), FormatByteCount(totalBytes), "");
    for (const vm_summary_row_t& row : rows) {
        for (const std::string& note : row.notes)
            out << to_ansi_nothrow(row.vmId) << ": " << note << '\n';
    }
}

} // namespace client
