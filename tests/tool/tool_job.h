// A backup server's session with the real tool: a mirrack of its own, on a simulated host when
// one is given, and a client connected to its pipe.
#pragma once

#include "tool_expectations.h"
#include "tool_run.h"

#include "client/invoke_client.h"
#include "common/exc/convert.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

class ToolJob {
public:
    explicit ToolJob(const std::filesystem::path& hostFolder = std::filesystem::path())
        : run(ToolRun::PipeMode(), {}, hostFolder) {
        run.DirectClients();
        connection = client::CInvokeClient::Connect(ToolRun::PipeName());
    }

    client::CResponse Call(const std::wstring& command,
                           const client::CRequestArguments& arguments = client::CRequestArguments()) {
        return connection->Call(command, arguments);
    }
    // BeginSnapshotCreation of this specification for the job "Nightly" of the console "Console".
    client::CResponse Begin(const std::string& specXml) {
        return Call(L"BeginSnapshotCreation", client::CRequestArguments()
                                                  .AddText(L"JobName", L"Nightly")
                                                  .AddText(L"BackupConsole", L"Console")
                                                  .AddEncoded(L"SnapshotXmlSpec", to_unicode(specXml)));
    }
    // The status once the task has completed, or the first that is an error.
    client::CResponse WaitForVerdict() {
        for (;;) {
            client::CResponse status = Call(L"GetAsyncOpStatus");
            if (!status.IsSuccess() || status.Value(L"IsCompleted") == L"true")
                return status;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
    // Whether the task succeeded; a failure fails the test with its description.
    bool Succeeds() {
        const client::CResponse status = WaitForVerdict();
        EXPECT_EQ(status.Value(L"IsSucceeded"), L"true") << to_ansi(status.Frame());
        return status.Value(L"IsSucceeded") == L"true";
    }
    // Closes the task: empty output, and no task is left to ask about. Then ends the session.
    std::string Close() {
        EXPECT_EQ(Call(L"CloseSnapshot").Frame(), tool_expect::emptyOutput);
        EXPECT_EQ(Call(L"GetAsyncOpStatus").Frame(), tool_expect::statusWithoutTask);
        return End();
    }
    // Leaves as the backup server does: the tool must leave its dispatch loop and end normally.
    // The log.
    std::string End() {
        connection->Disconnect();
        EXPECT_EQ(run.WaitForExit(), 0);
        const std::string log = run.LogText();
        const auto security = log.find("Initializing COM security");
        const auto leaving = log.find("Leaving dispatch loop.", security);
        EXPECT_NE(security, std::string::npos) << log;
        EXPECT_NE(leaving, std::string::npos) << log;
        EXPECT_NE(log.find(tool_expect::normalEnd, leaving), std::string::npos) << log;
        return log;
    }

    ToolRun run;
    std::unique_ptr<client::CInvokeClient> connection;
};
