// A backup server's session with the real tool: a mirrack of its own, on a simulated host when
// one is given, and a client connected to its pipe.
#pragma once

#include "tool_run.h"

#include "client/invoke_client.h"

#include <filesystem>
#include <memory>
#include <string>

class ToolJob {
public:
    explicit ToolJob(const std::filesystem::path& hostFolder = std::filesystem::path());

    client::CResponse Call(const std::wstring& command,
                           const client::CRequestArguments& arguments = client::CRequestArguments());
    // BeginSnapshotCreation of this specification for the job "Nightly" of the console "Console".
    client::CResponse Begin(const std::string& specXml);
    // The status once the task has completed, or the first that is an error.
    client::CResponse WaitForVerdict();
    // Whether the task succeeded; a failure fails the test with its description.
    bool Succeeds();
    // Closes the task: empty output, and no task is left to ask about. Then ends the session.
    std::string Close();
    // Leaves as the backup server does: the tool must leave its dispatch loop and end normally.
    // The log.
    std::string End();

    ToolRun run;
    std::unique_ptr<client::CInvokeClient> connection;
};
