// What the real tool answers and logs in a session, the same on every build: the end-to-end
// tests on POSIX and the smoke test of the Windows build check against these.
#pragma once

#include <string>

namespace tool_expect {

inline const std::wstring emptyOutput = L"xml:<OutputArguments/>";
inline const std::wstring statusWithoutTask =
    L"err:Snapshot is not initialized.\n--tr:Failed to get operation info.";

inline std::wstring ConversionWithoutTask(const std::wstring& items) {
    return L"err:Snapshot is not initialized.\n--tr:Failed to convert source paths to off-host shadow "
           L"paths. Given specification: '" +
           items + L"'.";
}

inline const char* const normalEnd = "Process will be finished normally.";
inline const char* const closeLine = "Closing VSS snapshot. ok.";
inline const char* const notPipeMode = "ERR |Tool was not started in pipe mode.";

} // namespace tool_expect
