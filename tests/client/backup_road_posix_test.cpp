// POSIX only: the road runs on a simulated host made by mirrack-lab.
// mirrack-client backup against the real mirrack on a sample host made by mirrack-lab:
// the files that arrive, the results the writer gets, and a host left clean.
#include "client/subcommand.h"
#include "test_server.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <regex>
#include <sstream>
#include <thread>

extern char** environ;

namespace {

namespace fs = std::filesystem;

const fs::path bin_dir = MIRRACK_BIN_DIR;

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

} // namespace

// The tool serves one client, the backup, on a sample host of its own that this process and
// the tools it starts select.
TEST(BackupRoadTest, EveryVmArrivesInItsFolderAndItsResultReachesTheWriter) {
    if (!fs::exists(bin_dir / "mirrack") || !fs::exists(bin_dir / "mirrack-lab"))
        GTEST_SKIP() << "mirrack and mirrack-lab are not built in " << bin_dir;
    const fs::path folder = client_test::scratch_folder() / "backup-road", host = folder / "host";
    fs::remove_all(folder);
    fs::create_directories(folder);
    ASSERT_EQ(wait_for(spawn({(bin_dir / "mirrack-lab").string(), "create", host.string()})), 0);
    // The third VM of the specification, as its id is written there, is reported failed.
    const std::string spec = client_test::file_text(host / "spec.xml");
    const std::regex vm("<VM id=\"([^\"]+)\"");
    const auto vms = std::sregex_iterator(spec.begin(), spec.end(), vm);
    const std::string failed = (*std::next(vms, 2))[1];

    ::setenv("MIRRACK_HOST", host.c_str(), 1);
    const std::string pipe = "road-" + std::to_string(::getpid());
    const pid_t tool = spawn({(bin_dir / "mirrack").string(), "-p", "-n", pipe, "-o", "Mirrack.log", "-log",
                              (folder / "Mirrack.log").string()});
    EXPECT_GT(tool, 0);
    std::ostringstream o, e;
    const int status = client::RunClient({"--pipe", pipe, "backup", "--spec", (host / "spec.xml").string(),
                                          "--to", (folder / "backup").string(), "--fail-vm", failed},
                                         o, e);
    const std::string out = o.str() + e.str();
    EXPECT_EQ(wait_for(tool), 0) << out;
    ::unsetenv("MIRRACK_HOST");
    ASSERT_EQ(status, client::exit_success) << out;

    // Every file of the sample host's VMs, with the VM's layout below its folder.
    const fs::path live_disk = host / "volumes" / "c" / "Hyper-V" / "vm1" / "Virtual Hard Disks" / "vm1.vhdx";
    std::size_t files = 0, disks_found = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder / "backup")) {
        files += entry.is_regular_file();
        if (entry.path().filename() == "vm1.vhdx") {
            ++disks_found;
            EXPECT_EQ(client_test::file_text(entry.path()), client_test::file_text(live_disk));
        }
    }
    EXPECT_TRUE(std::regex_search(out, std::regex("\nTotal +" + std::to_string(files) + " "))) << out;
    EXPECT_GE(files, 35u);
    EXPECT_EQ(disks_found, 1u);

    const std::string results = client_test::file_text(host / "state" / "backups.txt");
    EXPECT_NE(results.find("component\t" + failed + "\tfailed"), std::string::npos) << results;
    EXPECT_EQ(std::count(results.begin(), results.end(), '\n'), 6) << results;
    EXPECT_EQ(results.find("not-reported"), std::string::npos) << results;
    EXPECT_EQ(client_test::file_text(host / "state" / "shadows.txt"), "");
    EXPECT_TRUE(!fs::exists(host / "state" / "shadows") || fs::is_empty(host / "state" / "shadows"));
}
