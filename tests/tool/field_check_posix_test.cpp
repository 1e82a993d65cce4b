// POSIX only: the road runs on a simulated host made by mirrack-lab.
// mirrack-client spec and check against the real mirrack: nothing is copied, the writer hears
// of no backup and the host is left clean, whatever fails on the way.
#include "tool_run.h"

#include "client/subcommand.h"
#include "lab/sample_host.h"
#include "tests/support/host_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

using test_support::contains;

const std::string vm1 = "83F4C5F7-1401-4A04-A996-506A4DEA6810";
const std::string vm2 = "26882B39-53FB-470F-8EBE-5938C39FCD0F";
const std::string unreadable = "C:\\Hyper-V\\vm1\\Virtual Hard Disks\\gone.vhdx";

struct check_run_t {
    int status = -1;
    std::string out;
    std::string report;
};

class FieldCheck : public ::testing::Test {
protected:
    // The sample host with its disks larger than the check's two samples, and hostXml
    // inserted where the host file's marker stands.
    void MakeHost(const std::string& marker, const std::string& inserted) {
        lab::sample_options_t options;
        options.file_size = 3 << 20;
        lab::create_sample_host(host, options);
        std::string xml = read_file(host / "host.xml");
        xml.insert(xml.find(marker), inserted);
        std::ofstream(host / "host.xml", std::ios::binary) << xml;
    }

    check_run_t Check() {
        std::ostringstream out, err;
        EXPECT_EQ(client::RunClient({"spec", "--vm", vm1, "--vm", vm2, "-o", (host / "trial.xml").string()},
                                    out, err),
                  client::exit_success)
            << err.str();
        ToolRun tool(ToolRun::PipeMode(), {}, host);
        tool.DirectClients();
        check_run_t run;
        run.status = client::RunClient({"--pipe", ToolRun::PipeNameText(), "check", "--spec",
                                        (host / "trial.xml").string(), "--report",
                                        (host / "report.md").string(), "--tool-log", tool.LogPath().string()},
                                       out, err);
        run.out = out.str() + err.str();
        EXPECT_EQ(tool.WaitForExit(), 0) << run.out;
        run.report = read_file(host / "report.md");
        // The writer never hears of a backup, and no shadow copy is left behind.
        for (const std::string& line : folder.state_lines("backups.txt"))
            EXPECT_FALSE(contains(line, "\tsucceeded")) << line;
        EXPECT_EQ(read_file(host / "state" / "shadows.txt"), "");
        return run;
    }

    test_support::host_folder_t folder{"mirrack-field-check"};
    fs::path host = folder.dir();
};

} // namespace

// One VM's unreadable file fails that VM alone: the other is checked, and the report still
// holds what an administrator sends back. A check that passes is the off-host road's.
TEST_F(FieldCheck, AVmWithAFileThatCantBeReadFailsAloneAndTheReportHoldsBothEndsAndEveryFrame) {
    MakeHost(
        "<File path=\"%SystemDrive%\\Hyper-V\\vm1\\Snapshots",
        "<File path=\"C:\\Hyper-V\\vm1\\Virtual Hard Disks\\\" spec=\"gone.vhdx\" recursive=\"false\" />");
    const check_run_t run = Check();
    EXPECT_EQ(run.status, client::exit_error_response) << run.out;
    EXPECT_EQ(folder.state_lines("backups.txt").size(), 3u) << "the backup and its two VMs, both failed";
    for (const char* part : {"check failed, reported not backed up", "  checked, reported not backed up\n",
                             "gone.vhdx] can't be read"})
        EXPECT_TRUE(contains(run.out, part)) << part << "\n" << run.out;
    for (const char* part :
         {"- Result: failed: items of VMs could not be checked", "- mirrack-client: 1.0.0.0",
          "- mirrack (tool): Module version:1.0.0.0",
          "- mirrack (tool): OS version:", "tool <- cmd:BeginSnapshotCreation",
          "tool <- cmd:SetVmBackupStatus", "BackupStatus value=\"false\"", "tool -> xml:<OutputArguments/>",
          "\nSnapshot creation ", "\ntool: CloseSnapshot ", "\nReading the samples ",
          "tool <- cmd:CloseSnapshot", "## Log of the tool's mirrack", "Process will be finished normally.",
          "<VM id=\"83f4c5f7-1401-4a04-a996-506a4dea6810\""})
        EXPECT_TRUE(contains(run.report, part)) << part << "\n" << run.report;
}

TEST_F(FieldCheck, AFailingWriterStopsTheCheckWhichStillClosesAndReports) {
    MakeHost("</Host>",
             R"(<WriterFault writer="{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}" at="prepare" state="7" )"
             R"(hr="0x800423f4"/>)");
    const check_run_t run = Check();
    EXPECT_EQ(run.status, client::exit_error_response) << run.out;
    EXPECT_TRUE(contains(run.out, "Check stopped: The snapshot task failed:")) << run.out;
    for (const char* part : {"is failed at 'VSS_WS_FAILED_AT_PREPARE_BACKUP'", "tool <- cmd:CloseSnapshot"})
        EXPECT_TRUE(contains(run.report, part)) << part << "\n" << run.report;
    EXPECT_FALSE(contains(run.report, "cmd:GetVMFilesList")) << run.report;
}
