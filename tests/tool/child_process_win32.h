// A process that a Windows test starts, with its standard output and error in a file; killed if
// the test leaves it running. And the fresh folder that such files go to.
#pragma once

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <vector>

class ChildProcess {
public:
    ChildProcess(const std::filesystem::path& program, const std::vector<std::wstring>& arguments,
                 const std::filesystem::path& output) {
        std::wstring line = L"\"" + program.wstring() + L"\"";
        for (const auto& argument : arguments)
            line += L" \"" + argument + L"\"";
        SECURITY_ATTRIBUTES inherit{sizeof(inherit), nullptr, TRUE};
        HANDLE out = ::CreateFileW(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   &inherit, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = out;
        startup.hStdError = out;
        PROCESS_INFORMATION started{};
        if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                             &started)) {
            ::CloseHandle(started.hThread);
            handle = started.hProcess;
            id = started.dwProcessId;
        } else {
            ADD_FAILURE() << "cannot start " << program << ": error " << ::GetLastError();
        }
        if (out != INVALID_HANDLE_VALUE)
            ::CloseHandle(out);
    }
    ~ChildProcess() {
        if (handle == nullptr)
            return;
        if (::WaitForSingleObject(handle, 0) == WAIT_TIMEOUT)
            ::TerminateProcess(handle, 255);
        ::CloseHandle(handle);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The exit code; a process that has not ended within a minute fails the test, not the run.
    DWORD Wait() {
        if (handle == nullptr)
            return ~DWORD(0);
        if (::WaitForSingleObject(handle, 60000) != WAIT_OBJECT_0) {
            ADD_FAILURE() << "a process did not end within a minute";
            ::TerminateProcess(handle, 255);
            ::WaitForSingleObject(handle, INFINITE);
        }
        DWORD code = ~DWORD(0);
        ::GetExitCodeProcess(handle, &code);
        return code;
    }
    DWORD Id() const { return id; }

    // The folder of this test executable, which is where the build puts the tool and the client.
    static std::filesystem::path BinFolder() {
        wchar_t path[MAX_PATH] = {};
        ::GetModuleFileNameW(nullptr, path, MAX_PATH);
        return std::filesystem::path(path).parent_path();
    }

private:
    HANDLE handle = nullptr;
    DWORD id = 0;
};

// A fresh folder in the temporary folder for a test's files: the prefix, then this process and
// a count, so that parallel test processes keep apart.
inline std::filesystem::path FreshFolder(const std::string& prefix) {
    static std::atomic<int> counter{0};
    const auto folder = std::filesystem::temp_directory_path() /
                        (prefix + std::to_string(::GetCurrentProcessId()) + "-" + std::to_string(++counter));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}
