// An invoke server on a thread of the test, with a dispatcher of test commands, the
// process log pointed at a file of the test, and mirrack-client run with its output kept.
#pragma once

#include "client/subcommand.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log_install.h"
#include "common/logging/log_t.h"
#include "invoke/arguments.h"
#include "invoke/invoke_dispatcher.h"
#include "invoke/pipe_channel.h"
#include "invoke/pipe_invoke_server.h"
#include "tests/invoke/pipe_test_support.h"
#include "tests/support/process_env.h"
#include "tests/support/text_file.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <sstream>
#include <thread>

namespace client_test {

inline std::filesystem::path scratch_folder() {
    static const std::filesystem::path folder = [] {
        auto path = std::filesystem::temp_directory_path() /
                    ("mirrack-client-tests-" + std::to_string(test_env::process_id()));
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
        return path;
    }();
    return folder;
}

// Echo: Text back as Text, the encoded Document back as FilesList. Fail: a two-line failure.
class test_dispatcher_t : public wrap::IInvokeDispatcher {
public:
    void Invoke(const std::wstring& command, InputArguments_t& input, OutputArguments_t& output) override {
        if (command == L"Echo") {
            output.WriteText("Text", input.ReadText("Text"));
            output.WriteEncoded("FilesList", input.ReadEncoded("Document"));
        } else if (command == L"Fail") {
            try {
                throw exc::runtime_exc_t("The cause.");
            } catch (const std::exception& e) {
                exc::rethrow_with_trace("The step.", e);
            }
        } else if (command != L"Nothing") {
            throw exc::runtime_exc_t("Command [%1] not found", to_ansi_nothrow(command));
        }
    }
};

// RunPipeInvokeServer on its own thread. Leaving makes sure the server isn't left
// waiting for a client that never comes.
class test_server_t {
public:
    explicit test_server_t(
        std::shared_ptr<wrap::IInvokeDispatcher> dispatcher = std::make_shared<test_dispatcher_t>())
        : name_(pipe_test::fresh_pipe_name()), thread_([this, dispatcher] {
              try {
                  wrap::RunPipeInvokeServer(name_, dispatcher);
              } catch (const std::exception& e) {
                  failure_ = exc::exception_text(e);
              }
              done_ = true;
          }) {}

    ~test_server_t() {
        while (!done_) {
            try {
                win::pipes::connect_client_channel(L"\\\\.\\pipe\\" + name_, 100);
            } catch (const std::exception&) {
            }
        }
        if (thread_.joinable())
            thread_.join();
    }

    const std::wstring& name() const { return name_; }
    // Waits for the serving to end; the failure text that ended it, if any.
    std::string finish() {
        if (thread_.joinable())
            thread_.join();
        return failure_;
    }

private:
    std::wstring name_;
    std::string failure_;
    std::atomic<bool> done_{false};
    std::thread thread_;
};

using test_support::contains;
using test_support::read_file;

struct run_t {
    int status = -1;
    std::string out, err;
};

inline run_t run_client(const std::vector<std::string>& arguments) {
    std::ostringstream out, err;
    const int status = client::RunClient(arguments, out, err);
    return {status, out.str(), err.str()};
}

// The process log in a file of the test, for the length of the object.
class test_log_t {
public:
    test_log_t() : path_(scratch_folder() / ("log-" + std::to_string(++counter) + ".log")) {
        logging::install_log_file(path_.string());
    }
    ~test_log_t() { logging::main_log()->install(nullptr, false); }
    std::string text() const { return read_file(path_); }

private:
    static inline int counter = 0;
    std::filesystem::path path_;
};

} // namespace client_test
