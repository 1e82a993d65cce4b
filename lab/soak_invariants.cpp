#include "lab/soak_invariants.h"

#include "client/response.h"
#include "common/exc/convert.h"
#include "common/format/format.h"
#include "hostsim/host.h"
#include "hostsim/state_store.h"
#include "hostsim/wide_text.h"

#include <fstream>
#include <map>
#include <sstream>

namespace lab {

namespace fs = std::filesystem;
using hostsim::to_utf8;

namespace {

const char normal_end[] = "Process will be finished normally.";
// A fault of the file calls can keep the tool from opening its log; it then runs without one.
const char no_log[] = "Failed to initialize log [";

std::string read_text(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::wstring> lines_of(const std::wstring& text) {
    std::vector<std::wstring> lines;
    std::wistringstream in(text);
    for (std::wstring line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// A failure's text is the tool's: lines of words, each trace line with its text.
bool has_words(const std::wstring& text) {
    if (text.find_first_not_of(L" \t\r\n") == std::wstring::npos)
        return false;
    for (const auto& line : lines_of(text))
        if (line == L"--tr:" || line == L"--tr: ")
            return false;
    return true;
}

std::string check_frame(const std::wstring& frame) {
    try {
        const auto response = client::CResponse::FromFrame(frame);
        if (response.IsFailure() && !has_words(response.Body()))
            return "a failure without words: " + to_utf8(frame);
        if (response.Kind() == client::response_kind_t::unknown)
            return "an answer that is no frame of the protocol: " + to_utf8(frame);
    } catch (const std::exception& e) {
        return "an answer whose document can't be read (" + std::string(e.what()) + "): " + to_utf8(frame);
    }
    return "";
}

// The log ends with the normal end; what follows it is the runtime's teardown, no line of the tool.
bool ended_normally(const std::string& log) {
    const auto end = log.rfind(normal_end);
    return end != std::string::npos && log.find('|', end + sizeof normal_end) == std::string::npos;
}

std::string check_tool(const tool_end_t& tool) {
    const std::string output = read_text(tool.output);
    if (output.find("Sanitizer") != std::string::npos)
        return "the " + tool.role + " tool's sanitizer reported, see " + tool.output.string();
    if (tool.killed)
        return "";
    if (tool.status != 0)
        return "the " + tool.role + " tool exited with " + std::to_string(tool.status);
    if (output.find(no_log) == std::string::npos && !ended_normally(read_text(tool.log)))
        return "the " + tool.role + " tool's log doesn't end with \"" + normal_end + "\"";
    return "";
}

struct journal_line_t {
    int pid = 0;
    std::wstring op;
    std::wstring argument;
};

std::vector<journal_line_t> journal_since(const fs::path& file, std::uintmax_t& offset) {
    std::ifstream in(file, std::ios::binary);
    in.seekg(static_cast<std::streamoff>(offset));
    std::vector<journal_line_t> lines;
    for (std::string line; std::getline(in, line);) {
        offset += line.size() + 1;
        const auto fields = hostsim::split_fields(hostsim::from_utf8(line));
        if (fields.size() >= 2)
            lines.push_back({std::stoi(to_utf8(fields[0])), fields[1], fields.size() > 2 ? fields[2] : L""});
    }
    return lines;
}

bool refuses(const job_draw_t& draw, const std::string& op) {
    for (auto& fault : draw.faults)
        if (fault.op == op && (fault.element.find(" hr=") != std::string::npos ||
                               fault.element.find(" err=") != std::string::npos))
            return true;
    return false;
}

// Every PrepareForBackup that the host took is followed by BackupComplete or an abort.
std::string check_story(const job_record_t& job, const tool_end_t& tool,
                        const std::vector<journal_line_t>& journal) {
    if (tool.killed || refuses(job.draw, "PrepareForBackup"))
        return "";
    int open = 0;
    for (auto& line : journal) {
        if (line.pid != tool.pid)
            continue;
        if (line.op == L"PrepareForBackup")
            ++open;
        else if (open > 0 &&
                 (line.op == L"BackupComplete" || line.op == L"AbortBackup" || line.op == L"ImplicitAbort"))
            --open;
    }
    if (open > 0)
        return "the journal of pid " + std::to_string(tool.pid) +
               " has a PrepareForBackup followed by neither BackupComplete nor an abort";
    return "";
}

// A creation that fails before its snapshot undoes each preparation of a cluster shared volume:
// the volume is the cluster's, and a failed job must not leave it in backup for others.
std::string check_csv_story(const job_record_t& job, const tool_end_t& tool,
                            const std::vector<journal_line_t>& journal) {
    if (tool.killed || refuses(job.draw, "ClusterPrepareSharedVolumeForBackup"))
        return "";
    unsigned prepared = 0, cleared = 0;
    for (auto& line : journal) {
        if (line.pid != tool.pid)
            continue;
        if (line.op == L"DoSnapshotSet")
            return "";
        prepared += line.op == L"ClusterPrepareSharedVolumeForBackup";
        cleared += line.op == L"ClusterClearBackupStateForSharedVolume";
    }
    if (cleared < prepared)
        return "pid " + std::to_string(tool.pid) + " prepared a cluster shared volume " +
               std::to_string(prepared) + " time(s), made no snapshot and cleared it " +
               std::to_string(cleared) + " time(s)";
    return "";
}

using backups_t = std::map<std::wstring, std::vector<std::pair<std::wstring, std::wstring>>>;

backups_t read_backups(const fs::path& file) {
    backups_t backups;
    std::vector<std::pair<std::wstring, std::wstring>>* current = nullptr;
    for (auto& line : hostsim::read_lines(file)) {
        const auto fields = hostsim::split_fields(line);
        if (fields[0] == L"backup" && fields.size() > 1)
            current = &backups[fields[1]];
        else if (fields[0] == L"component" && fields.size() >= 3 && current)
            current->emplace_back(fields[1], fields[2]);
    }
    return backups;
}

std::wstring expected_result(const job_record_t& job, const std::wstring& component) {
    std::wstring result = L"not-reported";
    for (auto& [vm, succeeded] : job.verdicts)
        if (hostsim::iequals(vm, component))
            result = succeeded ? L"succeeded" : L"failed";
    return result;
}

// Each backup that the job's host tool completed lists the verdicts that the job sent.
std::string check_results(const job_record_t& job, const tool_end_t& tool,
                          const std::vector<journal_line_t>& journal, const backups_t& backups) {
    for (auto& line : journal) {
        if (line.pid != tool.pid || line.op != L"BackupComplete")
            continue;
        const auto backup = backups.find(line.argument);
        if (backup == backups.end())
            continue;
        for (auto& [component, result] : backup->second)
            if (result != expected_result(job, component))
                return "the backup of set " + to_utf8(line.argument) + " has " + to_utf8(component) + " " +
                       to_utf8(result) + ", the job reported " + to_utf8(expected_result(job, component));
    }
    return "";
}

void note_offhost_sets(const job_record_t& job, const std::vector<journal_line_t>& journal,
                       host_audit_t& audit) {
    if (job.draw.action != server_action::offhost || job.tools.empty())
        return;
    for (auto& line : journal)
        if (line.pid == job.tools.front().pid && line.op == L"DoSnapshotSet")
            audit.offhost_sets.insert(line.argument);
}

std::string check_state(const hostsim::state_store_t& state, const host_audit_t& audit) {
    if (!state.creations().empty())
        return "a shadow-copy creation is in progress after the sweep";
    for (auto& shadow : state.shadows()) {
        const std::wstring set = hostsim::guid_text(shadow.set_id);
        if (shadow.owner.pid == 0 ? audit.offhost_sets.count(set) == 0 : !hostsim::is_alive(shadow.owner))
            return "shadow copy " + std::to_string(shadow.number) + " of set " + to_utf8(set) +
                   " has no live owner after the sweep";
    }
    if (!state.csv_volumes().empty())
        return "the cluster shared volume " + to_utf8(state.csv_volumes().front().volume_name) +
               " is in backup after the sweep";
    return "";
}

} // namespace

std::string check_job(const job_record_t& record) {
    if (record.hung)
        return "the job hung: it took more than its " + std::to_string(record.budget_ms) + " ms";
    if (!record.trouble.empty())
        return "the server's road broke off: " + record.trouble;
    for (auto& frame : record.frames)
        if (auto broken = check_frame(frame); !broken.empty())
            return broken;
    for (auto& description : record.task_failures)
        if (!has_words(description))
            return "a task failed without a description";
    for (auto& tool : record.tools)
        if (auto broken = check_tool(tool); !broken.empty())
            return broken;
    return "";
}

host_verdict_t check_host(const soak_hosts_t& hosts, const std::vector<job_record_t>& round,
                          host_audit_t& audit) {
    const auto journal = journal_since(hosts.host / "state" / "journal.txt", audit.journal_offset);
    const auto backups = read_backups(hosts.host / "state" / "backups.txt");
    for (auto& job : round) {
        note_offhost_sets(job, journal, audit);
        for (auto& tool : job.tools) {
            if (auto broken = check_story(job, tool, journal); !broken.empty())
                return {broken, &job};
            if (auto broken = check_csv_story(job, tool, journal); !broken.empty())
                return {broken, &job};
            if (auto broken = check_results(job, tool, journal, backups); !broken.empty())
                return {broken, &job};
        }
    }
    // Opening the host sweeps what dead owners left, as mirrack-lab state does before it reports.
    auto host = hostsim::host_t::open(hosts.host);
    const auto& state = *host->state();
    auto lock = state.lock();
    return {check_state(state, audit), round.size() == 1 ? &round.front() : nullptr};
}

} // namespace lab
