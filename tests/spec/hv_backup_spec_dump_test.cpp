#include "common/logging/log_t.h"
#include "spec/hv_backup_spec.h"
#include "tests/support/memory_receiver.h"

#include <gtest/gtest.h>

namespace {

std::vector<std::string> dump_of(const std::string& body) {
    const CHvBackupSpec spec("<HVBackupSpec>" + body + "</HVBackupSpec>");
    const auto log = std::make_shared<test_support::memory_receiver_t>();
    const auto previous = logging::main_log()->receiver();
    logging::main_log()->install(log, false);
    spec.DumpToLog();
    logging::main_log()->install(previous, false);
    // The tool's lines, without time stamp, thread and tag.
    std::vector<std::string> lines;
    for (const std::string& text : log->writes)
        if (const std::size_t start = text.find("Mirrack| "); start != std::string::npos)
            lines.push_back(text.substr(start + 9, text.size() - start - 10));
    return lines;
}

TEST(BackupSpecDump, VmsProvidersOffhostAndCsvFlag) {
    EXPECT_EQ(
        dump_of("<VMs><VM id='{A}' crashConsistent='1'/></VMs>"),
        (std::vector<std::string>{
            "VmID: '{A}', is crash consistent: 'true'.", "Default vss provider:",
            "Provider ID: '{00000000-0000-0000-0000-000000000000}'. Type: 'Not specified'. Mount point: ''.",
            "Providers for volumes:", "Offhost settings are not specified.",
            "Use CSV Vss Writer: 'false'."}));
    // Several are listed under a head line of their own.
    const std::vector<std::string> two = dump_of("<VMs><VM id='a'/><VM id='b' crashConsistent='5'/></VMs>");
    EXPECT_EQ(std::vector<std::string>(two.begin(), two.begin() + 3),
              (std::vector<std::string>{"VMs to process:", "-   VmID: 'a', is crash consistent: 'false'.",
                                        "-   VmID: 'b', is crash consistent: 'true'."}));
    EXPECT_EQ(dump_of("<VMs/>")[1], "Default vss provider:");
    // Providers, the off-host settings and the CSV flag.
    const std::string provider =
        "type='3' id='{24602a4f-0000-4925-af80-51abd60b20d5}' volMountPoint='C:\\Vol\\'";
    const std::string line =
        "Provider ID: '{24602a4f-0000-4925-af80-51abd60b20d5}'. Type: 'hardware'. Mount point: 'C:\\Vol\\'.";
    EXPECT_EQ(dump_of("<VMs/><VSSProvider " + provider + "/><volumes><volProvider " + provider +
                      "/><volProvider type='9' id='{00000000-0000-0000-0000-000000000005}'/></volumes>"
                      "<Offhost type='0'/><Settings UseCsvVssWriter='1'/>"),
              (std::vector<std::string>{
                  "VMs to process:", "Default vss provider:", line, "Providers for volumes:", line,
                  "Provider ID: '{00000000-0000-0000-0000-000000000005}'. Type: '9'. Mount point: ''.",
                  "Offhost backup is disabled.", "Use CSV Vss Writer: 'true'."}));
    EXPECT_EQ(dump_of("<VMs/><Offhost type='1'/>")[4], "Off-host backup is enabled.");
    EXPECT_EQ(dump_of("<VMs/><Offhost type='-7'/>")[4], "Offhost mode: '-7'.");
    EXPECT_EQ(spec::ProviderTypeToString(5), "csv");
}

} // namespace
