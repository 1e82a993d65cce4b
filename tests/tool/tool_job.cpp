#include "tool_job.h"

#include "tool_expectations.h"

#include "common/exc/convert.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using client::CRequestArguments;
using client::CResponse;

ToolJob::ToolJob(const std::filesystem::path& hostFolder) : run(ToolRun::PipeMode(), {}, hostFolder) {
    run.DirectClients();
    connection = client::CInvokeClient::Connect(ToolRun::PipeName());
}

CResponse ToolJob::Call(const std::wstring& command, const CRequestArguments& arguments) {
    return connection->Call(command, arguments);
}

CResponse ToolJob::Begin(const std::string& specXml) {
    return Call(L"BeginSnapshotCreation", CRequestArguments()
                                              .AddText(L"JobName", L"Nightly")
                                              .AddText(L"BackupConsole", L"Console")
                                              .AddEncoded(L"SnapshotXmlSpec", to_unicode(specXml)));
}

CResponse ToolJob::WaitForVerdict() {
    for (;;) {
        CResponse status = Call(L"GetAsyncOpStatus");
        if (!status.IsSuccess() || status.Value(L"IsCompleted") == L"true")
            return status;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

bool ToolJob::Succeeds() {
    const CResponse status = WaitForVerdict();
    const bool succeeded = status.Value(L"IsSucceeded") == L"true";
    EXPECT_TRUE(succeeded) << to_ansi(status.Frame());
    return succeeded;
}

std::string ToolJob::Close() {
    EXPECT_EQ(Call(L"CloseSnapshot").Frame(), tool_expect::emptyOutput);
    EXPECT_EQ(Call(L"GetAsyncOpStatus").Frame(), tool_expect::statusWithoutTask);
    return End();
}

std::string ToolJob::End() {
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
