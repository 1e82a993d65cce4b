// Runs the real mirrack binary for a test: its own folder for pipes and log,
// and the exit status once it has ended.
#pragma once

#include "tests/support/text_file.h"

#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

class ToolRun {
public:
    static constexpr const char* pipeName = "tool-test";

    // Where standard output and error go: a file of the run, or a pipe whose reader has gone.
    enum class output_t { file, closed_pipe };

    // Starts mirrack with the given tokens followed by "-log <folder>/tool.log", unless they
    // name a log of their own.
    // Pipes live in a folder of this run unless another one is given. The tool
    // sees no simulated host unless one is given.
    explicit ToolRun(const std::vector<std::string>& arguments,
                     const std::filesystem::path& sharedPipeFolder = std::filesystem::path(),
                     const std::filesystem::path& hostFolder = std::filesystem::path(),
                     output_t output = output_t::file);
    // Kills the process if it is still running, and removes the folder.
    ~ToolRun();
    ToolRun(const ToolRun&) = delete;
    ToolRun& operator=(const ToolRun&) = delete;

    // The pipe-mode tokens: -p -n <pipeName> -o LOG.
    static std::vector<std::string> PipeMode();

    // The exit status, or 128 plus the signal that ended it. A process that
    // has not ended within a minute is killed, so a hung tool fails one test only.
    int WaitForExit();
    std::string LogText() const;
    // What the tool wrote on standard output and standard error.
    std::string OutputText() const;

    const std::filesystem::path& PipeFolder() const { return pipeFolder; }
    pid_t Pid() const { return pid; }
    // The pipe's name as a client gives it.
    static std::wstring PipeName();

private:
    std::filesystem::path folder;
    std::filesystem::path pipeFolder;
    pid_t pid = -1;
    int status = -1;
};

using test_support::read_file;
