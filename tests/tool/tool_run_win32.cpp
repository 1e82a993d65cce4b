#include "child_process_win32.h"
#include "tool_run.h"

#include "common/exc/convert.h"
#include "common/format/format.h"

#include <algorithm>

ToolRun::ToolRun(const std::vector<std::string>& arguments, const std::filesystem::path& sharedPipeFolder,
                 const std::filesystem::path&, output_t)
    : folder(FreshFolder("mirrack-tool-")),
      pipeFolder(sharedPipeFolder.empty() ? folder / "pipes" : sharedPipeFolder) {
    std::vector<std::wstring> tokens;
    for (const auto& argument : arguments)
        tokens.push_back(from_utf8(argument));
    if (std::find(arguments.begin(), arguments.end(), "-log") == arguments.end()) {
        tokens.push_back(L"-log");
        tokens.push_back((folder / "tool.log").wstring());
    }
    auto child = std::make_shared<ChildProcess>(ChildProcess::BinFolder() / "mirrack.exe", tokens,
                                                folder / "stdout.txt");
    pid = child->Id();
    process = child;
}

ToolRun::~ToolRun() {
    process.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::string ToolRun::PipeNameText() {
    return "tool-test-" + std::to_string(::GetCurrentProcessId());
}

void ToolRun::DirectClients() const {}

int ToolRun::WaitForExit() {
    if (status < 0)
        status = static_cast<int>(static_cast<ChildProcess*>(process.get())->Wait());
    return status;
}
