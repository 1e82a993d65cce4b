#include "tool_run.h"

std::vector<std::string> ToolRun::PipeMode() {
    return {"-p", "-n", PipeNameText(), "-o", "LOG"};
}

std::wstring ToolRun::PipeName() {
    const std::string name = PipeNameText();
    return std::wstring(name.begin(), name.end());
}

std::string ToolRun::LogText() const {
    return read_file(LogPath());
}

std::string ToolRun::OutputText() const {
    return read_file(folder / "stdout.txt");
}
