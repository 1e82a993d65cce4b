// Runs the real mirrack binary for a test: its own folder for pipes and log,
// and the exit status once it has ended.
#pragma once

#include "tests/support/text_file.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

class ToolRun {
public:
    // Where standard output and error go: a file of the run, or (POSIX only) a pipe whose reader
    // has gone.
    enum class output_t { file, closed_pipe };

    // Starts mirrack with the given tokens followed by "-log <folder>/tool.log", unless they
    // name a log of their own.
    // Pipes live in a folder of this run unless another one is given. The tool
    // sees no simulated host unless one is given. Both folders are POSIX's: Windows has one
    // namespace of pipes and no simulated host.
    explicit ToolRun(const std::vector<std::string>& arguments,
                     const std::filesystem::path& sharedPipeFolder = std::filesystem::path(),
                     const std::filesystem::path& hostFolder = std::filesystem::path(),
                     output_t output = output_t::file);
    // Kills the process if it is still running, and removes the folder.
    ~ToolRun();
    ToolRun(const ToolRun&) = delete;
    ToolRun& operator=(const ToolRun&) = delete;

    // The pipe-mode tokens: -p -n <PipeNameText()> -o LOG.
    static std::vector<std::string> PipeMode();
    // The pipe's name as the tool and a client give it: fixed on POSIX, where each run has a
    // folder of its own; on Windows, where pipe names are the machine's, one per test process.
    static std::string PipeNameText();
    static std::wstring PipeName();
    // Points the clients of this process at the tool's pipes.
    void DirectClients() const;

    // The exit status, or 128 plus the signal that ended it. A process that
    // has not ended within a minute is killed, so a hung tool fails one test only.
    int WaitForExit();
    std::filesystem::path LogPath() const { return folder / "tool.log"; }
    std::string LogText() const;
    // What the tool wrote on standard output and standard error.
    std::string OutputText() const;

    const std::filesystem::path& PipeFolder() const { return pipeFolder; }
    long long Pid() const { return pid; }

private:
    std::filesystem::path folder;
    std::filesystem::path pipeFolder;
    long long pid = -1;
    std::shared_ptr<void> process; // Windows' child process
    int status = -1;
};

using test_support::read_file;
