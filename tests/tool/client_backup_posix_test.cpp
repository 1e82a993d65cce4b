// POSIX only: the road runs on a simulated host made by mirrack-lab.
// mirrack-client backup against the real mirrack on a sample host made by mirrack-lab:
// the files that arrive, the results the writer gets, and a host left clean.
#include "tool_run.h"

#include "client/subcommand.h"
#include "lab/sample_host.h"
#include "tests/support/host_folder.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

namespace fs = std::filesystem;

TEST(ClientBackup, EveryVmArrivesInItsFolderAndItsResultReachesTheWriter) {
    const test_support::host_folder_t folder("mirrack-client-road");
    const fs::path host = folder.dir();
    lab::create_sample_host(host, lab::sample_options_t());
    // The third VM of the specification, as its id is written there, is reported failed.
    const std::string spec = read_file(host / "spec.xml");
    const std::regex vm("<VM id=\"([^\"]+)\"");
    const std::string failed = (*std::next(std::sregex_iterator(spec.begin(), spec.end(), vm), 2))[1];

    ToolRun tool(ToolRun::PipeMode(), {}, host);
    tool.DirectClients();
    const fs::path backup = host / "backup";
    std::ostringstream o, e;
    const int status =
        client::RunClient({"--pipe", ToolRun::PipeNameText(), "backup", "--spec",
                           (host / "spec.xml").string(), "--to", backup.string(), "--fail-vm", failed},
                          o, e);
    const std::string out = o.str() + e.str();
    EXPECT_EQ(tool.WaitForExit(), 0) << out;
    ASSERT_EQ(status, client::exit_success) << out;

    // Every file of the sample host's VMs, with the VM's layout below its folder.
    const fs::path live_disk = host / "volumes" / "c" / "Hyper-V" / "vm1" / "Virtual Hard Disks" / "vm1.vhdx";
    std::size_t files = 0, disks_found = 0;
    for (const auto& entry : fs::recursive_directory_iterator(backup)) {
        files += entry.is_regular_file();
        if (entry.path().filename() == "vm1.vhdx") {
            ++disks_found;
            EXPECT_EQ(read_file(entry.path()), read_file(live_disk));
        }
    }
    EXPECT_TRUE(std::regex_search(out, std::regex("\nTotal +" + std::to_string(files) + " "))) << out;
    EXPECT_GE(files, 35u);
    EXPECT_EQ(disks_found, 1u);

    const std::string results = read_file(host / "state" / "backups.txt");
    EXPECT_NE(results.find("component\t" + failed + "\tfailed"), std::string::npos) << results;
    EXPECT_EQ(std::count(results.begin(), results.end(), '\n'), 6) << results;
    EXPECT_EQ(results.find("not-reported"), std::string::npos) << results;
    EXPECT_EQ(read_file(host / "state" / "shadows.txt"), "");
    EXPECT_TRUE(!fs::exists(host / "state" / "shadows") || fs::is_empty(host / "state" / "shadows"));
}
