// POSIX only: the road runs on a simulated host made by mirrack-lab.
// mirrack-client backup against the real mirrack on a sample host made by mirrack-lab:
// the files that arrive, the results the writer gets, and a host left clean.
#include "client/subcommand.h"
#include "test_server.h"
#include "tests/tool/tool_expectations.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

extern char** environ;

namespace {

namespace fs = std::filesystem;

const fs::path bin_dir = MIRRACK_BIN_DIR;

std::string read_text(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream all;
    all << in.rdbuf();
    return all.str();
}

pid_t spawn(const std::vector<std::string>& line) {
    std::vector<char*> argv;
    for (const std::string& word : line)
        argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    // The tools' chatter on standard output would only crowd the test's.
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    const int failed = posix_spawn(&pid, argv[0], &quiet, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&quiet);
    return failed ? -1 : pid;
}

// The exit status; a process still running after a minute is killed, so that a hung
// tool fails this test only.
int wait_for(pid_t pid) {
    int status = 0;
    for (int tries = 0; tries < 600; ++tries) {
        if (waitpid(pid, &status, WNOHANG) == pid)
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
    return -1;
}

// A sample host of its own, selected for this process and the tools it starts.
class BackupRoadTest : public testing::Test {
protected:
    void SetUp() override {
        if (!fs::exists(bin_dir / "mirrack") || !fs::exists(bin_dir / "mirrack-lab"))
            GTEST_SKIP() << "mirrack and mirrack-lab are not built in " << bin_dir;
        folder =
            client_test::scratch_folder() / testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::remove_all(folder);
        fs::create_directories(folder);
        host = folder / "host";
        ASSERT_EQ(wait_for(spawn({(bin_dir / "mirrack-lab").string(), "create", host.string()})), 0);
        ::setenv("MIRRACK_HOST", host.c_str(), 1);
    }

    void TearDown() override { ::unsetenv("MIRRACK_HOST"); }

    // The third VM of the specification, as its id is written there.
    std::string third_vm() const {
        const std::string spec = read_text(host / "spec.xml");
        std::smatch match;
        auto begin = spec.cbegin();
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(std::regex_search(begin, spec.cend(), match, std::regex("<VM id=\"([^\"]+)\"")));
            begin = match.suffix().first;
        }
        return match[1];
    }

    // The tool serves one client; its exit status once the backup has disconnected.
    int backup(const std::vector<std::string>& extra, std::string& out) {
        const std::string pipe = "road-" + std::to_string(::getpid());
        const pid_t tool = spawn({(bin_dir / "mirrack").string(), "-p", "-n", pipe, "-o", "Mirrack.log",
                                  "-log", (folder / "Mirrack.log").string()});
        EXPECT_GT(tool, 0);
        std::vector<std::string> line{"--pipe",
                                      pipe,
                                      "backup",
                                      "--spec",
                                      (host / "spec.xml").string(),
                                      "--to",
                                      (folder / "backup").string()};
        line.insert(line.end(), extra.begin(), extra.end());
        std::ostringstream o, e;
        status = client::RunClient(line, o, e);
        out = o.str() + e.str();
        return wait_for(tool);
    }

    bool no_shadow_copy_left() const {
        return !fs::exists(host / "state" / "shadows") || fs::is_empty(host / "state" / "shadows");
    }

    fs::path folder, host;
    int status = -1;
};

} // namespace

TEST_F(BackupRoadTest, EveryVmArrivesInItsFolderAndItsResultReachesTheWriter) {
    const std::string failed = third_vm();
    std::string out;
    EXPECT_EQ(backup({"--fail-vm", failed}, out), 0) << out;
    ASSERT_EQ(status, client::exit_success) << out;

    // Every file of the sample host's VMs, with the VM's layout below its folder.
    std::size_t files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder / "backup"))
        files += entry.is_regular_file();
    EXPECT_TRUE(std::regex_search(out, std::regex("\nTotal +" + std::to_string(files) + " "))) << out;
    EXPECT_GE(files, 35u);
    const fs::path live_disk = host / "volumes" / "c" / "Hyper-V" / "vm1" / "Virtual Hard Disks" / "vm1.vhdx";
    std::size_t disks_found = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder / "backup")) {
        if (entry.path().filename() == "vm1.vhdx") {
            ++disks_found;
            EXPECT_EQ(read_text(entry.path()), read_text(live_disk));
        }
    }
    EXPECT_EQ(disks_found, 1u);

    const std::string results = read_text(host / "state" / "backups.txt");
    EXPECT_NE(results.find("component\t" + failed + "\tfailed"), std::string::npos) << results;
    EXPECT_EQ(std::count(results.begin(), results.end(), '\n'), 6) << results;
    EXPECT_EQ(results.find("not-reported"), std::string::npos) << results;
    EXPECT_TRUE(no_shadow_copy_left());
}

TEST_F(BackupRoadTest, ASnapshotThatFailsIsReportedWithItsDescriptionAndLeavesNothing) {
    std::string xml = read_text(host / "host.xml");
    xml.insert(xml.rfind("</Host>"), "<Fault op=\"DoSnapshotSet\" status=\"0x80042306\"/>\n");
    std::ofstream(host / "host.xml", std::ios::binary | std::ios::trunc) << xml;

    std::string out;
    EXPECT_EQ(backup({}, out), 0) << out;
    EXPECT_EQ(status, client::exit_error_response) << out;
    EXPECT_NE(out.find(tool_expect::snapshotTaskFailed), std::string::npos) << out;
    EXPECT_NE(out.find("Failed to create VSS snapshot."), std::string::npos) << out;
    EXPECT_FALSE(fs::exists(folder / "backup"));
    EXPECT_TRUE(no_shadow_copy_left());
    EXPECT_EQ(read_text(host / "state" / "csv.txt"), "");
}
