// A mirrack process in pipe mode, started by the soak on a host view: its log and its
// output in a folder of the job, and its end as the soak sees it.
#pragma once

#include <atomic>
#include <filesystem>
#include <string>

#include <sys/types.h>

namespace lab {

// The mirrack binary beside the running mirrack-lab.
std::filesystem::path tool_beside_lab();

class tool_process_t {
public:
    // Starts the tool serving pipe_name for the host in host_dir; the pipe folder comes from
    // MIRRACK_PIPE_DIR. Throws std::runtime_error when it cannot be started.
    tool_process_t(const std::filesystem::path& tool, const std::filesystem::path& host_dir,
                   const std::string& pipe_name, const std::filesystem::path& folder);
    // Kills a tool that still runs.
    ~tool_process_t();
    tool_process_t(const tool_process_t&) = delete;
    tool_process_t& operator=(const tool_process_t&) = delete;

    pid_t pid() const { return pid_; }
    void kill();
    // The exit status, or 128 plus the signal that ended it; blocks until the process ends.
    int wait();

    std::filesystem::path log() const { return folder_ / "tool.log"; }
    std::filesystem::path output() const { return folder_ / "output.txt"; }

private:
    std::filesystem::path folder_;
    pid_t pid_ = -1;
    // Written by the waiter, read by a watch that may kill the tool from another thread.
    std::atomic<int> status_{-1};
};

} // namespace lab
