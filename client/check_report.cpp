#include "client/check_report.h"

#include "common/format/format.h"

#include <algorithm>
#include <ostream>
#include <sstream>

#ifndef MIRRACK_VERSION
#define MIRRACK_VERSION "unknown"
#endif

namespace client {

namespace {

// The start banner's rule: the first line that each run writes to its log.
const std::string banner_rule(77, '=');
const char* const version_markers[] = {"Module version:", "OS version:", "OS build:", "OS description:"};

class report_writer_t {
public:
    report_writer_t(report_format_t format_, std::ostream& out_) : format(format_), out(out_) {}

    void Title(const std::string& text) {
        if (format == report_format_t::markdown)
            out << "# " << text << "\n\n";
        else
            out << text << '\n' << std::string(text.size(), '=') << "\n\n";
    }
    void Line(const std::string& name, const std::string& value) {
        out << (format == report_format_t::markdown ? "- " : "") << name << ": " << value << '\n';
    }
    // A section whose body is kept as it stands: tables, frames and logs.
    void Verbatim(const std::string& heading, const std::string& body) {
        if (format == report_format_t::markdown)
            out << "\n## " << heading << "\n\n```\n" << body << (body.ends_with('\n') ? "" : "\n") << "```\n";
        else
            out << '\n'
                << heading << '\n'
                << std::string(heading.size(), '-') << '\n'
                << body << (body.ends_with('\n') ? "" : "\n");
    }

private:
    report_format_t format;
    std::ostream& out;
};

template <typename Print> std::string printed(Print print) {
    std::ostringstream text;
    print(text);
    return text.str();
}

} // namespace

report_format_t ReportFormatOf(const std::filesystem::path& file) {
    const std::string extension = file.extension().string();
    return iequals(extension, std::string(".md")) || iequals(extension, std::string(".markdown"))
               ? report_format_t::markdown
               : report_format_t::text;
}

std::string LastRunOfLog(const std::string& logText) {
    const std::size_t rule = logText.rfind(banner_rule);
    if (rule == std::string::npos)
        return logText;
    const std::size_t lineStart = logText.rfind('\n', rule);
    return logText.substr(lineStart == std::string::npos ? 0 : lineStart + 1);
}

std::vector<std::string> BannerVersions(const std::string& run) {
    std::vector<std::string> found;
    std::istringstream lines(run);
    for (std::string line; std::getline(lines, line);) {
        for (const char* marker : version_markers) {
            const std::size_t at = line.find(marker);
            if (at != std::string::npos && found.size() < std::size(version_markers))
                found.push_back(line.substr(at));
        }
    }
    return found;
}

std::string ClientVersion() {
    return MIRRACK_VERSION;
}

void PrintCheckTable(const std::vector<vm_summary_row_t>& rows, std::ostream& out) {
    PrintBackupSummary(rows, out, {"Items", "Checked"});
}

void WriteCheckReport(const check_report_t& report, report_format_t format, std::ostream& out) {
    report_writer_t writer(format, out);
    writer.Title("Mirrack field check report");
    writer.Line("Result", report.outcome);
    writer.Line("mirrack-client", ClientVersion());
    for (const tool_log_t& log : report.toolLogs) {
        const std::vector<std::string> versions = BannerVersions(log.run);
        for (const std::string& version : versions)
            writer.Line("mirrack (" + log.whose + ")", version);
        if (versions.empty())
            writer.Line("mirrack (" + log.whose + ")", "no start banner in " + log.file.string());
    }
    if (report.toolLogs.empty())
        writer.Line("mirrack", "versions unknown: give the check --tool-log with the tool's -log path");
    writer.Line("Command line", report.commandLine);
    writer.Line("Specification", report.specFile.string());

    writer.Verbatim("VMs (nothing was copied; every VM was reported not backed up)",
                    printed([&](std::ostream& text) { PrintCheckTable(report.rows, text); }));
    writer.Verbatim("Steps", printed([&](std::ostream& text) { PrintStepTimes(report.steps, text); }));
    writer.Verbatim("Specification document", report.specDocument);
    if (report.transcript)
        writer.Verbatim("Frames (<- sent to the tool, -> its answer)",
                        printed([&](std::ostream& text) { report.transcript->PrintFrames(text); }));
    for (const tool_log_t& log : report.toolLogs)
        writer.Verbatim("Log of the " + log.whose + "'s mirrack (" + log.file.string() + ")",
                        log.run.empty() ? "(the log can't be read)" : log.run);
}

} // namespace client
