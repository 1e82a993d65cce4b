// A session with the real tool through the client library: calls, raw frames, and the log once
// the client has left.
#pragma once

#include "tool_job.h"

#include <gtest/gtest.h>

using client::CRequestArguments;

class ToolSession : public ::testing::Test {
protected:
    std::wstring Call(const std::wstring& command, const CRequestArguments& arguments = CRequestArguments()) {
        return job.Call(command, arguments).Frame();
    }
    std::wstring Exchange(const std::wstring& request) { return job.connection->Exchange(request); }
    std::string EndSession() { return job.End(); }

    ToolJob job;
};

inline CRequestArguments JobArguments() {
    return CRequestArguments().AddText(L"JobName", L"J").AddText(L"BackupConsole", L"C");
}
