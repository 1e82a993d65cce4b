// The Windows executables end to end: mirrack.exe started as a backup server starts it and
// driven by mirrack-client.exe over a real named pipe, and where the Windows build keeps its log.
// Each session is one client, so one call; the sessions of the client library run on both builds.
#include "child_process_win32.h"
#include "tool_expectations.h"

#include "common/exc/convert.h"
#include "common/format/format.h"
#include "tests/support/text_file.h"

#include <gtest/gtest.h>

#include <shlobj.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

using test_support::contains;
using test_support::read_file;

const wchar_t* const logKey = L"SOFTWARE\\Orlix\\Orlix Keepsafe";

class ToolSmoke : public ::testing::Test {
protected:
    void TearDown() override {
        SetLogDirectory({});
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    // LogDirectory in the registry, until the test ends; an empty folder removes the value.
    static void SetLogDirectory(const fs::path& directory) {
        const std::wstring data = directory.wstring();
        ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, logKey, L"LogDirectory");
        if (data.empty())
            return;
        EXPECT_EQ(::RegSetKeyValueW(HKEY_LOCAL_MACHINE, logKey, L"LogDirectory", REG_SZ, data.c_str(),
                                    static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }

    std::wstring PipeName(const std::string& purpose) const {
        return from_utf8("smoke-" + std::to_string(::GetCurrentProcessId()) + "-" + purpose);
    }

    // mirrack.exe with the given tokens, its console output in a file of the test.
    std::unique_ptr<ChildProcess> StartTool(const std::vector<std::wstring>& tokens) {
        return std::make_unique<ChildProcess>(ChildProcess::BinFolder() / "mirrack.exe", tokens,
                                              folder / ("tool-" + std::to_string(++tools) + ".out"));
    }
    // The pipe-mode tokens of a backup server, with the log in the test's folder.
    std::unique_ptr<ChildProcess> StartServingTool(const std::wstring& pipe, const fs::path& log) {
        return StartTool({L"-p", L"-n", pipe, L"-o", L"Mirrack.log", L"-log", log.wstring()});
    }

    // mirrack-client.exe: its exit code, and its output with Windows line ends made plain.
    DWORD Client(const std::wstring& pipe, const std::vector<std::wstring>& tokens, std::string& output) {
        std::vector<std::wstring> line{L"--pipe", pipe, L"--timeout", L"30000", L"--raw"};
        line.insert(line.end(), tokens.begin(), tokens.end());
        const fs::path file = folder / "client.out";
        const DWORD code = ChildProcess(ChildProcess::BinFolder() / "mirrack-client.exe", line, file).Wait();
        output = read_file(file);
        std::erase(output, '\r');
        if (!output.empty() && output.back() == '\n')
            output.pop_back();
        return code;
    }

    fs::path folder = FreshFolder("mirrack-smoke-");
    int tools = 0;
};

// Waits for a tool's pipe to exist: WaitNamedPipeW fails at once while there is none yet.
bool PipeIsUp(const std::wstring& pipe) {
    const std::wstring path = L"\\\\.\\pipe\\" + pipe;
    int attempt = 0;
    while (!::WaitNamedPipeW(path.c_str(), 50) && ++attempt < 600)
        ::Sleep(50);
    return attempt < 600;
}

} // namespace

TEST_F(ToolSmoke, AnEncodedArgumentArrivesWhole) {
    const std::wstring items = L"<FilesList><File Recursive=\"false\" Path=\"C:\\VMs\\\" Mask=\"*\" "
                               L"FullPath=\"C:\\VMs\\disk.vhdx\" RelativePath=\"\"/></FilesList>";
    std::ofstream(folder / "items.xml", std::ios::binary) << to_ansi_nothrow(items);
    auto tool = StartServingTool(PipeName("session"), folder / "Mirrack.log");
    std::string answer;
    Client(PipeName("session"),
           {L"call", L"ConvertOffhostPaths", L"InPathsXML=@" + (folder / "items.xml").wstring()}, answer);
    EXPECT_EQ(answer, to_ansi_nothrow(tool_expect::ConversionWithoutTask(items)));
    EXPECT_EQ(tool->Wait(), 0u);
}

// Wine's VSS is a stub that fails to create the backup components, which is as far as a
// snapshot gets there; on Windows the VM of the specification is not on the host. Either way the
// worker's failure must reach the client and leave the tool serving: the field check stops at it,
// closes, and still writes its report with the versions from the tool's banner and its log.
TEST_F(ToolSmoke, AFieldCheckStopsCleanlyAtTheVssFailureAndStillReports) {
    std::string answer;
    const std::wstring spec = (folder / "trial.xml").wstring();
    ASSERT_EQ(Client(PipeName("spec"),
                     {L"spec", L"--vm", L"11111111-2222-3333-4444-555555555555", L"-o", spec}, answer),
              0u)
        << answer;
    const fs::path logFile = folder / "trial.log";
    auto tool = StartServingTool(PipeName("check"), logFile);
    const fs::path report = folder / "report.txt";
    EXPECT_EQ(
        Client(PipeName("check"),
               {L"check", L"--spec", spec, L"--report", report.wstring(), L"--tool-log", logFile.wstring()},
               answer),
        1u)
        << answer;
    EXPECT_TRUE(contains(answer, "Check stopped: The snapshot task failed:")) << answer;
    EXPECT_EQ(tool->Wait(), 0u);
    const std::string text = read_file(report);
    for (const char* part : {"Result: stopped: The snapshot task failed:", "Failed to create VSS component.",
                             "mirrack (tool): Module version:1.0.0.0", "mirrack (tool): OS version:",
                             "tool <- cmd:CloseSnapshot", tool_expect::normalEnd})
        EXPECT_TRUE(contains(text, part)) << part << "\n" << text;
}

// Started as a backup server starts them, with a log name alone, two tools share the folder of
// LogDirectory: the second one's log takes the next numbered name.
TEST_F(ToolSmoke, TwoToolsOnTheLogDirectoryOfTheRegistryWriteToNumberedNames) {
    SetLogDirectory(folder / "configured");
    auto first = StartTool({L"-p", L"-n", PipeName("one"), L"-o", L"Mirrack.log"});
    ASSERT_TRUE(PipeIsUp(PipeName("one")));
    auto second = StartTool({L"-p", L"-n", PipeName("two"), L"-o", L"Mirrack.log"});
    std::string answer;
    Client(PipeName("two"), {L"call", L"CloseSnapshot"}, answer);
    Client(PipeName("one"), {L"call", L"CloseSnapshot"}, answer);
    EXPECT_EQ(first->Wait(), 0u);
    EXPECT_EQ(second->Wait(), 0u);
    for (const char* name : {"Mirrack.log", "Mirrack.1.log"}) {
        const std::string text = read_file(folder / "configured" / name);
        EXPECT_TRUE(contains(text, tool_expect::closeLine)) << name << ": " << text;
        EXPECT_TRUE(contains(text, tool_expect::normalEnd)) << name << ": " << text;
    }
}

// Without options the tool refuses and says so in its log: in the folder of LogDirectory, or, for a
// value that is not there or names a folder that cannot be made (a file stands in its way), in
// the machine's common application data.
TEST_F(ToolSmoke, ARefusedStartLogsToTheLogDirectoryOrElseToTheCommonApplicationData) {
    wchar_t common[MAX_PATH] = {};
    ASSERT_EQ(::SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, common), S_OK);
    const fs::path fallback = fs::path(common) / "Orlix" / "Backup" / "Mirrack.log";
    std::ofstream(folder / "file") << "not a folder";
    const struct {
        const char* name;
        fs::path value;
        bool usable;
    } cases[] = {{"a folder that can be made", folder / "logs", true},
                 {"no value", fs::path(), false},
                 {"a folder that cannot be made", folder / "file" / "logs", false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const fs::path log = c.usable ? c.value / "Mirrack.log" : fallback;
        const std::string before = read_file(log);
        SetLogDirectory(c.value);
        EXPECT_EQ(StartTool({})->Wait(), 0u);
        const std::string after = read_file(log);
        ASSERT_GT(after.size(), before.size()) << log;
        EXPECT_TRUE(contains(after.substr(before.size()), tool_expect::notPipeMode)) << after;
        EXPECT_FALSE(contains(after.substr(before.size()), tool_expect::normalEnd)) << after;
    }
    EXPECT_FALSE(fs::exists(folder / "file" / "logs"));
}
