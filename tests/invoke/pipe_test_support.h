// Pipes of the tests: a private directory for their sockets and a fresh name per use.
#pragma once

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/process_env.h"

namespace pipe_test {

inline std::filesystem::path socket_folder() {
    static const std::filesystem::path folder = [] {
        auto path = std::filesystem::temp_directory_path() /
                    ("mirrack-pipe-tests-" + std::to_string(test_env::process_id()));
        std::filesystem::remove_all(path);
        test_env::set("MIRRACK_PIPE_DIR", path.string());
        return path;
    }();
    return folder;
}

inline std::wstring fresh_pipe_name() {
    static std::atomic<int> counter{0};
    socket_folder();
    return L"p" + std::to_wstring(test_env::process_id()) + L"-" + std::to_wstring(++counter);
}

inline std::wstring fresh_pipe_path() {
    return L"\\\\.\\pipe\\" + fresh_pipe_name();
}

} // namespace pipe_test
