#include "lab/tool_process.h"

#include <csignal>
#include <cstring>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace lab {

namespace fs = std::filesystem;

namespace {

// The soak's environment with the host chosen for this tool.
std::vector<std::string> environment_for(const fs::path& host_dir) {
    std::vector<std::string> variables;
    for (char** entry = environ; *entry; ++entry)
        if (std::strncmp(*entry, "MIRRACK_HOST=", 13) != 0)
            variables.emplace_back(*entry);
    variables.push_back("MIRRACK_HOST=" + host_dir.string());
    return variables;
}

std::vector<char*> pointers_to(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

fs::path tool_beside_lab() {
    return fs::read_symlink("/proc/self/exe").parent_path() / "mirrack";
}

tool_process_t::tool_process_t(const fs::path& tool, const fs::path& host_dir, const std::string& pipe_name,
                               const fs::path& folder)
    : folder_(folder) {
    std::vector<std::string> arguments{tool.string(), "-p",  "-n",   pipe_name,
                                       "-o",          "LOG", "-log", log().string()};
    std::vector<std::string> variables = environment_for(host_dir);
    auto argv = pointers_to(arguments);
    auto envp = pointers_to(variables);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, output().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    const int error = ::posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::runtime_error("Cannot start " + tool.string() + ": " + std::strerror(error));
}

tool_process_t::~tool_process_t() {
    if (status_ < 0) {
        kill();
        wait();
    }
}

void tool_process_t::kill() {
    if (status_ < 0)
        ::kill(pid_, SIGKILL);
}

int tool_process_t::wait() {
    if (status_ >= 0)
        return status_;
    int raw = 0;
    while (::waitpid(pid_, &raw, 0) < 0 && errno == EINTR) {
    }
    status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    return status_;
}

} // namespace lab
