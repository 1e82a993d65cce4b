#include "tool_run.h"

#include "tests/support/sanitizer_report.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::filesystem::path MakeTempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "mirrack-tool-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot create a temporary folder");
    return pattern;
}

// Standard output and error on a pipe whose reading end is closed, with the signal that such a
// write raises at its default, whatever the test's own process does with it.
void RedirectToClosedPipe() {
    int ends[2];
    if (::pipe(ends) != 0)
        ::_exit(126);
    ::close(ends[0]);
    ::dup2(ends[1], 1);
    ::dup2(ends[1], 2);
    ::signal(SIGPIPE, SIG_DFL);
}

[[noreturn]] void ExecTool(const std::vector<std::string>& tokens, const std::filesystem::path& folder,
                           const std::filesystem::path& pipeFolder, const std::filesystem::path& hostFolder,
                           ToolRun::output_t output) {
    ::setenv("MIRRACK_PIPE_DIR", pipeFolder.c_str(), 1);
    if (hostFolder.empty())
        ::unsetenv("MIRRACK_HOST");
    else
        ::setenv("MIRRACK_HOST", hostFolder.c_str(), 1);
    // The tool prints a line or two on standard output; keep the test's output clean. A sanitizer's
    // report lands there too, and is looked for before the folder goes.
    const int file = ::open((folder / "stdout.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file >= 0) {
        ::dup2(file, 1);
        ::dup2(file, 2);
    }
    if (output == ToolRun::output_t::closed_pipe)
        RedirectToClosedPipe();
    std::vector<char*> argv;
    for (const auto& token : tokens)
        argv.push_back(const_cast<char*>(token.c_str()));
    argv.push_back(nullptr);
    ::execv(argv[0], argv.data());
    ::_exit(127);
}

} // namespace

ToolRun::ToolRun(const std::vector<std::string>& arguments, const std::filesystem::path& sharedPipeFolder,
                 const std::filesystem::path& hostFolder, output_t output)
    : folder(MakeTempFolder()), pipeFolder(sharedPipeFolder.empty() ? folder / "pipes" : sharedPipeFolder) {
    std::filesystem::create_directories(pipeFolder);
    std::filesystem::permissions(pipeFolder, std::filesystem::perms::owner_all);
    std::vector<std::string> tokens{std::string(MIRRACK_BIN_DIR) + "/mirrack"};
    tokens.insert(tokens.end(), arguments.begin(), arguments.end());
    if (std::find(arguments.begin(), arguments.end(), "-log") == arguments.end()) {
        tokens.push_back("-log");
        tokens.push_back((folder / "tool.log").string());
    }
    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("cannot start the tool");
    if (child == 0)
        ExecTool(tokens, folder, pipeFolder, hostFolder, output);
    pid = child;
}

ToolRun::~ToolRun() {
    if (pid > 0 && status < 0) {
        ::kill(static_cast<pid_t>(pid), SIGKILL);
        ::waitpid(static_cast<pid_t>(pid), nullptr, 0);
    }
    test_support::expect_no_sanitizer_report(folder / "stdout.txt");
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::string ToolRun::PipeNameText() {
    return "tool-test";
}

void ToolRun::DirectClients() const {
    ::setenv("MIRRACK_PIPE_DIR", pipeFolder.c_str(), 1);
}

int ToolRun::WaitForExit() {
    if (status >= 0)
        return status;
    int raw = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    const auto child = static_cast<pid_t>(pid);
    while (::waitpid(child, &raw, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &raw, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    return status;
}
