#include "common/format/format.h"
#include "common/logging/log_t.h"
#include "spec/hv_backup_spec.h"
#include "tests/support/failure_lines.h"
#include "tests/support/memory_receiver.h"

#include <gtest/gtest.h>

namespace {

const char full_document[] = R"(<?xml version="1.0"?>
<HVBackupSpec>
  <VMs>
    <VM id="{11111111-2222-3333-4444-555555555555}" crashConsistent="1">
      <DiskExclusions><disk>C:\VMs\a.vhdx</disk><disk>D:\b.vhdx</disk><disk/><disk>lost</disk></DiskExclusions>
      <aux_file path="C:\aux1.txt"/>
      <!-- the second one -->
      <aux_file path="C:\aux2.txt"/>
    </VM>
    <VM id="not a guid"/>
  </VMs>
  <VSSProvider type="2" id="{b5946137-7b9f-4925-af80-51abd60b20d5}"/>
  <volumes>
    <volProvider type="3" id="24602a4f-0000-4925-af80-51abd60b20d5" volMountPoint="C:\ClusterStorage\Vol&#xE9;1\"/>
    <volProvider type="5" id="{00000000-0000-0000-0000-000000000005}" volMountPoint="E:\"/>
    <volProvider type="4" id="{00000000-0000-0000-0000-000000000004}" volMountPoint="e:"/>
  </volumes>
  <Offhost type="1"/>
  <Settings UseCsvVssWriter="true"/>
</HVBackupSpec>)";

std::string with_body(const std::string& body) {
    return "<HVBackupSpec>" + body + "</HVBackupSpec>";
}

CHvBackupSpec parse_body(const std::string& body) {
    return CHvBackupSpec(with_body(body));
}

// The lines the specification shows in the log, without time stamp, thread and tag.
std::vector<std::string> dump_of(const CHvBackupSpec& spec) {
    const auto log = std::make_shared<test_support::memory_receiver_t>();
    const auto previous = logging::main_log()->receiver();
    logging::main_log()->install(log, false);
    spec.DumpToLog();
    logging::main_log()->install(previous, false);
    std::vector<std::string> lines;
    for (const std::string& text : log->writes)
        if (const std::size_t start = text.find("Mirrack| "); start != std::string::npos)
            lines.push_back(text.substr(start + 9, text.size() - start - 10));
    return lines;
}

TEST(BackupSpecParsing, ReadsEveryPartOfTheDocumentAndMatchesVolumeProvidersByComponents) {
    const CHvBackupSpec spec(full_document);
    // A disk without text ends the list quietly. The log shows neither list, and everything else.
    EXPECT_EQ(spec.vms[0]->excludedDisks, (std::vector<std::string>{"C:\\VMs\\a.vhdx", "D:\\b.vhdx"}));
    EXPECT_EQ(spec.vms[0]->auxFiles, (std::vector<std::string>{"C:\\aux1.txt", "C:\\aux2.txt"}));
    EXPECT_EQ(
        dump_of(spec),
        (std::vector<std::string>{
            "VMs to process:",
            "-   VmID: '{11111111-2222-3333-4444-555555555555}', is crash consistent: 'true'.",
            "-   VmID: 'not a guid', is crash consistent: 'false'.", "Default vss provider:",
            "Provider ID: '{b5946137-7b9f-4925-af80-51abd60b20d5}'. Type: 'software'. Mount point: ''.",
            "Providers for volumes:",
            "Provider ID: '{24602a4f-0000-4925-af80-51abd60b20d5}'. Type: 'hardware'. Mount point: '" +
                to_ansi_nothrow(std::wstring(L"C:\\ClusterStorage\\Vol\u00e91\\")) + "'.",
            "Provider ID: '{00000000-0000-0000-0000-000000000005}'. Type: 'csv'. Mount point: 'E:\\'.",
            "Provider ID: '{00000000-0000-0000-0000-000000000004}'. Type: 'fileshare'. Mount point: 'e:'.",
            "Off-host backup is enabled.", "Use CSV Vss Writer: 'true'."}));
    // Volume providers match mount points by components, ignoring case.
    const CHvBackupSpec::provider_ptr_t first = spec.volumeProviders[0];
    EXPECT_EQ(spec.FindVolumeProvider(L"C:\\ClusterStorage\\Vol\u00e91"), first);
    EXPECT_EQ(spec.FindVolumeProvider(L"c:/clusterstorage//VOL\u00e91/"), first);
    EXPECT_EQ(spec.FindVolumeProvider(L"E:"), spec.volumeProviders[1]); // the first of two
    EXPECT_EQ(spec.FindVolumeProvider(L"C:\\ClusterStorage"), spec.defaultProvider);
    EXPECT_EQ(spec.FindVolumeProvider(L"C:\\ClusterStorage\\Vol\u00e91\\sub"), spec.defaultProvider);
    // A mount point in raw UTF-8; a document without entries.
    const CHvBackupSpec raw = parse_body(
        "<VMs/><volumes><volProvider type='1' "
        "id='{00000000-0000-0000-0000-000000000001}' volMountPoint='F:\\Dat\xc3\xa9\\'/></volumes>");
    EXPECT_EQ(raw.FindVolumeProvider(L"f:\\DAT\u00e9")->providerType, 1u);
    EXPECT_EQ(parse_body("<VMs/>").FindVolumeProvider(L"C:\\")->providerType, 0u);
}

TEST(BackupSpecParsing, CrashConsistentIsAnIntegerWhereOneCanBeReadAndTheCsvFlagALenientBoolean) {
    const std::pair<const char*, bool> cases[] = {{"abc", false}, {"2", true},   {"0", false},
                                                  {"-1", true},   {" 3x", true}, {"", false}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(parse_body(std::string("<VMs><VM id='x' crashConsistent='") + text + "'/></VMs>")
                      .vms[0]
                      ->crashConsistent,
                  expected)
            << text;
    const std::pair<const char*, bool> flags[] = {
        {"TRUE", true}, {"0", false}, {"no", true}, {"", true}, {"false", false}};
    for (const auto& [text, expected] : flags)
        EXPECT_EQ(parse_body(std::string("<VMs/><Settings UseCsvVssWriter='") + text + "'/>").useCsvVssWriter,
                  expected)
            << text;
    EXPECT_FALSE(parse_body("<VMs/><Settings/>").useCsvVssWriter);
}

struct failure_case_t {
    std::string document;
    std::vector<std::string> last_lines; // the document line comes behind these
};

TEST(BackupSpecFailures, EachStepAddsItsLineFromTheCauseOutwards) {
    const failure_case_t cases[] = {
        {with_body(""), {"There is no node with the specified name: [VMs].", "Failed to parse list of VMs."}},
        {with_body("<VMs><VM id='a'/><VM/></VMs>"),
         {"Attribute value is not specified. Attribute: [id].", "Failed to parse Hyper-V backup spec.",
          "Failed to parse VM specification.", "Failed to parse list of VMs."}},
        {with_body("<VMs><VM id='a'><aux_file/></VM></VMs>"),
         {"Attribute value is not specified. Attribute: [path].", "Failed to parse list of auxiliary files.",
          "Failed to parse Hyper-V backup spec.", "Failed to parse VM specification.",
          "Failed to parse list of VMs."}},
        {with_body("<VMs/><VSSProvider id='{00000000-0000-0000-0000-000000000001}'/>"),
         {"Unexpected type of the attribute. Attribute: [type].",
          "Failed to parse default VSS provider settings"}},
        {with_body("<VMs/><VSSProvider type='1' id='xyz'/>"),
         {"Failed to convert string [xyz] to UUID.", "Failed to parse default VSS provider settings"}},
        {with_body("<VMs/><volumes><volProvider type='1'/></volumes>"),
         {"Attribute value is not specified. Attribute: [id].",
          "Failed to parse list of volumes to snapshot."}},
        {with_body("<VMs/><Offhost/>"),
         {"Unexpected type of the attribute. Attribute: [type].",
          "Failed to parse off-host backup settings."}},
        {"<HVBackupSpec><VMs></HVBackupSpec>",
         {"Failed to parse XML content. Source content: [<HVBackupSpec><VMs></HVBackupSpec>]."}},
    };
    for (const failure_case_t& c : cases) {
        std::vector<std::string> expected = c.last_lines;
        expected.push_back("Cannot parse backup specification document (" + c.document + ").");
        EXPECT_EQ(failure_lines([&] { CHvBackupSpec spec(c.document); }, expected.size()), expected);
    }
}

// A single VM has no head line; a document that names nothing shows the defaults.
TEST(BackupSpecDump, OneVmAndTheDefaultsOfWhatIsNotGiven) {
    EXPECT_EQ(
        dump_of(parse_body("<VMs><VM id='{A}' crashConsistent='1'/></VMs>")),
        (std::vector<std::string>{
            "VmID: '{A}', is crash consistent: 'true'.", "Default vss provider:",
            "Provider ID: '{00000000-0000-0000-0000-000000000000}'. Type: 'Not specified'. Mount point: ''.",
            "Providers for volumes:", "Offhost settings are not specified.",
            "Use CSV Vss Writer: 'false'."}));
    EXPECT_EQ(dump_of(parse_body("<VMs/><VSSProvider type='9' id='{00000000-0000-0000-0000-000000000005}'/>"
                                 "<Offhost type='0'/>")),
              (std::vector<std::string>{
                  "VMs to process:", "Default vss provider:",
                  "Provider ID: '{00000000-0000-0000-0000-000000000005}'. Type: '9'. Mount point: ''.",
                  "Providers for volumes:", "Offhost backup is disabled.", "Use CSV Vss Writer: 'false'."}));
    EXPECT_EQ(dump_of(parse_body("<VMs/><Offhost type='-7'/>"))[4], "Offhost mode: '-7'.");
}

} // namespace
