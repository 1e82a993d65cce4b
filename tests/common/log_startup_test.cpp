// Start of the common library: which file becomes the log, the banner, the end of the library context.
#include "log_test_support.h"

#include "common/exc/convert.h"
#include "common/logging/debug_receiver.h"
#include "common/runtime/startup.h"
#include "tests/support/process_env.h"
#include "win_temp_tree.h"

#include <cstdlib>

namespace fs = std::filesystem;

namespace {

// A simulated host whose registry names the log directory.
std::string log_directory_host(const std::string& log_directory) {
    return "<Host name=\"T\"><Registry><Key path=\"SOFTWARE\\Orlix\\Orlix Keepsafe\">"
           "<Value name=\"LogDirectory\" type=\"REG_SZ\" data=\"" +
           log_directory + "\"/></Key></Registry></Host>";
}

class log_startup_test : public ::testing::Test {
protected:
    void TearDown() override {
        logging::main_log()->install(nullptr, false);
        test_env::unset("MIRRACK_DATA_DIR");
        test_env::unset("MIRRACK_TEST_EXIT_LOG");
    }
    win_test::temp_tree_t tree_;
    fs::path folder_ = tree_.root();
};

} // namespace

// The log token, else the registry's log directory, else the fallback folder; a configured folder
// that cannot be made gives way to the fallback folder.
TEST_F(log_startup_test, log_path_comes_from_the_log_token_else_the_log_directory_else_the_fallback_folder) {
    if (!test_env::simulated_host)
        GTEST_SKIP() << "The registry and the fallback folder are the simulated host's on POSIX only.";
    test_env::set("MIRRACK_DATA_DIR", "/data");
    using runtime::log_path_from_arguments;
    EXPECT_EQ(log_path_from_arguments(L"Mirrack.log", {L"prog", L"--pipemode", L"-LOG", L"D:\\x.log", L"-p"}),
              L"D:\\x.log");
    EXPECT_EQ(log_path_from_arguments(L"Mirrack.log", {L"prog", L"-log"}),
              L"/data\\Orlix\\Backup\\\\Mirrack.log");
    EXPECT_EQ(log_path_from_arguments(L"Mirrack.log", {L"prog"}), L"/data\\Orlix\\Backup\\\\Mirrack.log");
    win_test::selected_host_t host(log_directory_host("C:\\Logs\\"));
    EXPECT_EQ(log_path_from_arguments(L"Mirrack.log", {L"prog"}), L"C:\\Logs\\\\Mirrack.log");

    std::ofstream(folder_ / "plain") << "a file where a folder should be";
    host.describe(log_directory_host((folder_ / "plain" / "logs").string()));
    test_env::set("MIRRACK_DATA_DIR", (folder_ / "data").string());
    testing::internal::CaptureStdout();
    const std::string path = runtime::start_common_library("Mirrack.log", {L"prog"});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "LOG: Initializing log file ...\n");
    EXPECT_EQ(path, (folder_ / "plain" / "logs").string() + "\\Mirrack.log");
    EXPECT_EQ(logging::main_log()->receiver()->path(),
              (folder_ / "data").string() + "\\Orlix\\Backup\\Mirrack.log");
    EXPECT_TRUE(fs::exists(folder_ / "data" / "Orlix" / "Backup" / "Mirrack.log"));
}

TEST_F(log_startup_test, banner_tells_program_and_system) {
    const fs::path log = folder_ / "banner.log";
    testing::internal::CaptureStdout();
    EXPECT_EQ(runtime::start_common_library("Mirrack.log",
                                            {L"prog", L"-log", from_utf8(log.string()), L"-VERBOSE"}),
              log.string());
    EXPECT_TRUE(runtime::verbose_requested());
    testing::internal::GetCapturedStdout();
    // The debug log is served too, under its own handle.
    EXPECT_EQ(logging::dbg_logger().log, logging::debug_log());
    EXPECT_NE(dynamic_cast<logging::receiver::COutputDebugStringLog*>(logging::debug_log()->receiver().get()),
              nullptr);
    EXPECT_EQ(logging::dbg_logger().format->prefix, "dbg| ");
    // The module's path and the system's figures and words differ from machine to machine.
    std::string banner;
    for (const std::string& line : log_test::bodies_of(log_test::read_file(log)))
        banner += line + "\n";
    std::smatch match;
    ASSERT_TRUE(std::regex_match(banner, match,
                                 std::regex(R"(\n={77}\n\{\n  Path to the executable module:(.+)\n)"
                                            R"(  Module version:1\.0\.0\.0\n  OS version: \d+\.\d+\n)"
                                            R"(  OS build: \d+\n  OS description: .*\n\}\n)")))
        << banner;
    const fs::path module = match[1].str();
    EXPECT_TRUE(fs::is_regular_file(module)) << module;
    EXPECT_EQ(module.stem(), "test_common");
}

TEST_F(log_startup_test, library_context_ends_at_process_exit_with_its_last_line) {
    // On Windows the statement runs in a new run of the test executable, with a folder of its
    // own: the path of the log comes to it through the environment that it inherits.
    const char* inherited = std::getenv("MIRRACK_TEST_EXIT_LOG");
    const fs::path log = inherited ? fs::path(inherited) : folder_ / "exit.log";
    test_env::set("MIRRACK_TEST_EXIT_LOG", log.string());
    EXPECT_EXIT(
        {
            runtime::start_common_library("Mirrack.log", {L"prog", L"-log", from_utf8(log.string())});
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_TRUE(log_test::read_file(log).ends_with("> Clearing collection of cout multiplexors.\r\n"));
}
