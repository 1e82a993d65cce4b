// One job of the soak: the tools it started, every frame they answered and what the
// server told them, as the invariants need it afterwards.
#pragma once

#include "lab/soak_draw.h"
#include "lab/soak_host.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace lab {

struct tool_end_t {
    std::string role; // "host" or "proxy"
    pid_t pid = 0;
    int status = -1;     // exit status, or 128 plus the signal
    bool killed = false; // by the draw or for a hang
    std::filesystem::path log;
    std::filesystem::path output;
};

struct job_record_t {
    job_draw_t draw;
    std::filesystem::path folder;
    std::vector<tool_end_t> tools;
    std::vector<std::wstring> frames;
    std::vector<std::wstring> task_failures; // the descriptions of tasks that ended in failure
    // Verdicts that the host tool accepted: component name and success.
    std::vector<std::pair<std::wstring, bool>> verdicts;
    std::string trouble; // what no server should meet: a pipe gone without an answer, an unreadable frame
    bool hung = false;
    unsigned budget_ms = 0; // what the job may take with its faults' delays
};

// Runs the job in folder (created) on views of the hosts, with the tool binary given.
job_record_t run_job(const soak_hosts_t& hosts, const job_draw_t& draw, const std::filesystem::path& folder,
                     const std::filesystem::path& tool);

} // namespace lab
