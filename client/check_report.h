// The field check's report: what an administrator sends back when a check fails, in plain
// text or Markdown, something a person reads in an e-mail.
#pragma once

#include "client/backup_summary.h"
#include "client/check_transcript.h"

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace client {

// The log of one tool as the check found it after the session.
struct tool_log_t {
    std::string whose; // "tool", "host" or "proxy"
    std::filesystem::path file;
    std::string run; // the last run in the file; empty when the file can't be read
};

struct check_report_t {
    std::string commandLine;
    std::string outcome;
    std::filesystem::path specFile;
    std::string specDocument;
    std::vector<vm_summary_row_t> rows;
    std::vector<step_time_t> steps;
    const CCheckTranscript* transcript = nullptr;
    std::vector<tool_log_t> toolLogs;
};

enum class report_format_t { text, markdown };

// Markdown for a file named *.md or *.markdown, plain text otherwise.
report_format_t ReportFormatOf(const std::filesystem::path& file);

// The last run of a tool's log: from its last start banner to the end.
std::string LastRunOfLog(const std::string& logText);

// The versions that a run's start banner gives: the tool's module and the host's Windows.
std::vector<std::string> BannerVersions(const std::string& run);

// The client's own version, the project's one version number.
std::string ClientVersion();

void WriteCheckReport(const check_report_t& report, report_format_t format, std::ostream& out);

// The table of the check: per VM, its items, bytes checked and result.
void PrintCheckTable(const std::vector<vm_summary_row_t>& rows, std::ostream& out);

} // namespace client
