#include "common/logging/log_file_receiver.h"
#include "common/logging/log_t.h"
#include "spec/hv_backup_spec.h"

#include <gtest/gtest.h>

namespace {

// Takes the tool's lines, without time stamp, thread and tag.
class captured_log_t : public logging::receiver::log_file_t {
public:
    void write(const std::string& text) override {
        const std::string tag = "Mirrack| ";
        const std::size_t start = text.find(tag);
        if (start != std::string::npos)
            lines.push_back(text.substr(start + tag.size(), text.size() - start - tag.size() - 1));
    }
    std::string path() const override { return "captured"; }
    std::string eol() const override { return "\n"; }
    std::uint64_t size() override { return 0; }
    void compress(const std::shared_ptr<util::zip_writer_t>&) override {}

    std::vector<std::string> lines;
};

std::vector<std::string> dump_of(const std::string& body) {
    const CHvBackupSpec spec("<HVBackupSpec>" + body + "</HVBackupSpec>");
    const auto log = std::make_shared<captured_log_t>();
    const auto previous = logging::main_log()->receiver();
    logging::main_log()->install(log, false);
    spec.DumpToLog();
    logging::main_log()->install(previous, false);
    return log->lines;
}

const char provider_a[] = "type='3' id='{24602a4f-0000-4925-af80-51abd60b20d5}' volMountPoint='C:\\Vol\\'";

TEST(BackupSpecDump, SingleVmHasALineOfItsOwn) {
    EXPECT_EQ(dump_of("<VMs><VM id='{A}' crashConsistent='1'/></VMs>"),
              (std::vector<std::string>{"VmID: '{A}', is crash consistent: 'true'.", "Default vss provider:",
                                        "Provider ID: '{00000000-0000-0000-0000-000000000000}'. Type: 'Not "
                                        "specified'. Mount point: ''.",
                                        "Providers for volumes:", "Offhost settings are not specified.",
                                        "Use CSV Vss Writer: 'false'."}));
}

TEST(BackupSpecDump, SeveralVmsOrNoneAreListed) {
    const std::vector<std::string> two = dump_of("<VMs><VM id='a'/><VM id='b' crashConsistent='5'/></VMs>");
    EXPECT_EQ(std::vector<std::string>(two.begin(), two.begin() + 3),
              (std::vector<std::string>{"VMs to process:", "-   VmID: 'a', is crash consistent: 'false'.",
                                        "-   VmID: 'b', is crash consistent: 'true'."}));
    const std::vector<std::string> none = dump_of("<VMs/>");
    EXPECT_EQ(std::vector<std::string>(none.begin(), none.begin() + 2),
              (std::vector<std::string>{"VMs to process:", "Default vss provider:"}));
}

TEST(BackupSpecDump, ProvidersOffhostAndCsvFlag) {
    EXPECT_EQ(dump_of(std::string("<VMs/><VSSProvider ") + provider_a + "/><volumes><volProvider " +
                      provider_a +
                      "/><volProvider type='9' id='{00000000-0000-0000-0000-000000000005}'/></volumes>"
                      "<Offhost type='0'/><Settings UseCsvVssWriter='1'/>"),
              (std::vector<std::string>{
                  "VMs to process:", "Default vss provider:",
                  "Provider ID: '{24602a4f-0000-4925-af80-51abd60b20d5}'. Type: 'hardware'. Mount point: "
                  "'C:\\Vol\\'.",
                  "Providers for volumes:",
                  "Provider ID: '{24602a4f-0000-4925-af80-51abd60b20d5}'. Type: 'hardware'. Mount point: "
                  "'C:\\Vol\\'.",
                  "Provider ID: '{00000000-0000-0000-0000-000000000005}'. Type: '9'. Mount point: ''.",
                  "Offhost backup is disabled.", "Use CSV Vss Writer: 'true'."}));
}

TEST(BackupSpecDump, OffhostModesHaveTheirOwnWords) {
    EXPECT_EQ(dump_of("<VMs/><Offhost type='1'/>")[4], "Off-host backup is enabled.");
    EXPECT_EQ(dump_of("<VMs/><Offhost type='-7'/>")[4], "Offhost mode: '-7'.");
}

TEST(BackupSpecDump, ProviderTypesHaveTheirLogTexts) {
    const char* expected[] = {"Not specified", "System", "software", "hardware", "fileshare", "csv", "6"};
    for (std::uint32_t type = 0; type < 7; ++type)
        EXPECT_EQ(ProviderTypeToString(type), expected[type]);
    EXPECT_EQ(ProviderTypeToString(4294967295u), "4294967295");
}

} // namespace
