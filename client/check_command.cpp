#include "client/check_command.h"

#include "client/backup_arguments.h"
#include "client/backup_roads.h"
#include "client/check_report.h"
#include "client/item_sample_check.h"
#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"

#include <fstream>
#include <ostream>
#include <sstream>
#include <thread>

namespace client {

namespace {

struct check_run_t {
    const check_arguments_t& arguments;
    const client_options_t& options;
    CCheckTranscript transcript;
    std::vector<vm_summary_row_t> rows;
    std::string outcome;
};

vm_items_work_t check_work(CCheckTranscript& transcript) {
    return {"Reading the first and last MiB of each item (nothing is copied):",
            {},
            [&transcript](std::vector<vm_copy_t>& vms, std::ostream& out) {
                const auto start = std::chrono::steady_clock::now();
                CheckVmItems(vms, out);
                transcript.AddStep("Reading the samples", std::chrono::steady_clock::now() - start);
            },
            // The writer must never record a backup that didn't happen.
            [](const spec_vm_t&, const vm_copy_t& copy) {
                return vm_verdict_t{false, copy.Complete() ? "checked, reported not backed up"
                                                           : "check failed, reported not backed up"};
            }};
}

std::unique_ptr<CInvokeClient> connect(check_run_t& run, const std::wstring& pipe, const std::string& whose) {
    auto client = CInvokeClient::Connect(pipe, run.options.connectTimeoutMs);
    client->Observe(run.transcript.RecorderFor(whose));
    return client;
}

void drive(check_run_t& run, const std::string& document, const std::vector<spec_vm_t>& vms,
           std::ostream& out) {
    const check_arguments_t& arguments = run.arguments;
    const backup_job_t job{arguments.jobName, arguments.backupConsole, document};
    const vm_items_work_t work = check_work(run.transcript);
    if (arguments.Offhost()) {
        const auto host = connect(run, arguments.hostPipe, "host");
        const auto proxy = connect(run, arguments.proxyPipe, "proxy");
        run.rows = RunOffhostRoad(*host, *proxy, job, vms, work, out);
    } else {
        const auto tool = connect(run, run.options.pipeName, "tool");
        run.rows = RunOnHostRoad(*tool, job, vms, work, out);
    }
}

// The tool writes its last lines as the session ends: a moment's grace for them.
std::string log_text_after_session(const std::filesystem::path& file) {
    std::string text;
    for (int attempt = 0; attempt < 20; ++attempt) {
        std::ifstream in(file, std::ios::binary);
        std::ostringstream all;
        all << in.rdbuf();
        text = all.str();
        if (text.find("Process will be finished") != std::string::npos)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return LastRunOfLog(text);
}

std::vector<tool_log_t> tool_logs(const check_arguments_t& arguments) {
    std::vector<tool_log_t> logs;
    if (!arguments.toolLog.empty())
        logs.push_back({arguments.Offhost() ? "host" : "tool", arguments.toolLog, ""});
    if (!arguments.proxyLog.empty())
        logs.push_back({"proxy", arguments.proxyLog, ""});
    for (tool_log_t& log : logs)
        log.run = log_text_after_session(log.file);
    return logs;
}

std::string command_line(const client_options_t& options, const std::vector<std::string>& arguments) {
    std::string line = "mirrack-client";
    if (!options.pipeName.empty())
        line += " --pipe " + to_ansi_nothrow(options.pipeName);
    line += " check";
    for (const std::string& word : arguments)
        line += word.find(' ') == std::string::npos ? " " + word : " \"" + word + "\"";
    return line;
}

void write_report(const check_run_t& run, const std::vector<std::string>& words, const std::string& document,
                  std::ostream& out) {
    const check_report_t report{
        command_line(run.options, words), run.outcome,     run.arguments.specFile,  document, run.rows,
        run.transcript.StepTimes(),       &run.transcript, tool_logs(run.arguments)};
    std::ofstream file(run.arguments.reportFile, std::ios::binary);
    WriteCheckReport(report, ReportFormatOf(run.arguments.reportFile), file);
    if (!file.flush())
        throw exc::runtime_exc_t("Can't write the report [%1].", run.arguments.reportFile.string());
    out << "Report written to " << run.arguments.reportFile.string() << ".\n";
}

} // namespace

check_arguments_t ParseCheckArguments(const std::vector<std::string>& arguments,
                                      const std::wstring& pipeName) {
    check_arguments_t parsed;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string value;
        if (TakeOptionValue(arguments, i, "--spec", value))
            parsed.specFile = value;
        else if (TakeOptionValue(arguments, i, "--report", value))
            parsed.reportFile = value;
        else if (TakeOptionValue(arguments, i, "--tool-log", value))
            parsed.toolLog = value;
        else if (TakeOptionValue(arguments, i, "--proxy-log", value))
            parsed.proxyLog = value;
        else if (TakeOptionValue(arguments, i, "--host-pipe", value))
            parsed.hostPipe = to_unicode(value);
        else if (TakeOptionValue(arguments, i, "--proxy-pipe", value))
            parsed.proxyPipe = to_unicode(value);
        else if (TakeOptionValue(arguments, i, "--job", value))
            parsed.jobName = to_unicode(value);
        else if (TakeOptionValue(arguments, i, "--console", value))
            parsed.backupConsole = to_unicode(value);
        else
            throw usage_error_t{"check doesn't take '" + arguments[i] + "'."};
    }
    if (parsed.specFile.empty())
        throw usage_error_t{"check needs --spec FILE."};
    if (parsed.hostPipe.empty() != parsed.proxyPipe.empty())
        throw usage_error_t{"An off-host check needs both --host-pipe NAME and --proxy-pipe NAME."};
    if (parsed.Offhost() && !pipeName.empty())
        throw usage_error_t{
            "check takes --pipe NAME on a host, or --host-pipe and --proxy-pipe off-host, not both."};
    if (!parsed.Offhost() && pipeName.empty())
        throw usage_error_t{"check needs --pipe NAME, or --host-pipe NAME and --proxy-pipe NAME."};
    if (!parsed.Offhost() && !parsed.proxyLog.empty())
        throw usage_error_t{"--proxy-log belongs to an off-host check."};
    return parsed;
}

int RunCheckCommand(const client_options_t& options, const std::vector<std::string>& arguments,
                    std::ostream& out) {
    const check_arguments_t parsed = ParseCheckArguments(arguments, options.pipeName);
    const std::string document = ReadSpecDocument(parsed.specFile);
    const std::vector<spec_vm_t> vms = SpecVms(document);
    out << (parsed.Offhost() ? "Off-host field check of " : "Field check of ") << vms.size() << " VM(s) of "
        << parsed.specFile.string() << ": nothing is copied and every VM is reported not backed up.\n";

    check_run_t run{parsed, options, {}, {}, {}};
    int status = exit_error_response;
    try {
        drive(run, document, vms, out);
        status = RowsExitStatus(run.rows);
        run.outcome = status == exit_success ? "passed" : "failed: items of VMs could not be checked";
    } catch (const server_failure_exc_t& e) {
        run.outcome = std::string("stopped: ") + e.what();
    } catch (const std::exception& e) {
        run.outcome = "stopped: " + exc::exception_text(e);
        status = exit_failure;
    }
    out << "Check " << run.outcome << "\n\n";
    PrintCheckTable(run.rows, out);
    out << '\n';
    PrintStepTimes(run.transcript.StepTimes(), out);
    if (!parsed.reportFile.empty())
        write_report(run, arguments, document, out);
    return status;
}

} // namespace client
