// mirrack-client spec: what the command line makes of a specification, read back by the
// tool's own parser, and the mistakes it refuses, each named.
#include "client/spec_command.h"
#include "common/exc/convert.h"
#include "spec/hv_backup_spec.h"
#include "test_server.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

namespace fs = std::filesystem;

const std::string spec_vm_a = "{83F4C5F7-1401-4A04-A996-506A4DEA6810}";
const std::string spec_vm_b = "26882b39-53fb-470f-8ebe-5938c39fcd0f";
const std::string hardware = "{7f1d6a2e-3b4c-4d5e-8f60-71829304a5b6}";

std::string SpecUsageErrorOf(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"-o", "spec.xml"});
    try {
        client::ParseSpecArguments(arguments);
    } catch (const client::usage_error_t& e) {
        return e.text;
    }
    return "";
}

} // namespace

TEST(SpecCommand, EveryOptionReachesTheToolsParserAndVmsAreNamedAsTheWriterNamesThem) {
    const fs::path file = client_test::scratch_folder() / "written-spec.xml";
    std::ostringstream out, err;
    ASSERT_EQ(
        client::RunClient({"spec", "--vm", spec_vm_a, "--vm=" + spec_vm_b, "--crash-consistent", spec_vm_b,
                           "--exclude-disk", spec_vm_a + "=C:\\VMs\\a\\scratch.vhdx", "--aux-file",
                           spec_vm_a + "=C:\\VMs\\a\\notes & more.txt", "--provider", "Hardware:" + hardware,
                           "--volume-provider", "C:\\Mounts\\Data=1\\=system:" + hardware, "--csv-writer",
                           "--offhost", "-o", file.string()},
                          out, err),
        client::exit_success)
        << err.str();

    const CHvBackupSpec spec(client_test::read_file(file));
    ASSERT_EQ(spec.vms.size(), 2u);
    EXPECT_EQ(spec.vms[0]->vmId, "83f4c5f7-1401-4a04-a996-506a4dea6810");
    EXPECT_FALSE(spec.vms[0]->crashConsistent);
    EXPECT_EQ(spec.vms[0]->excludedDisks, std::vector<std::string>{"C:\\VMs\\a\\scratch.vhdx"});
    EXPECT_EQ(spec.vms[0]->auxFiles, std::vector<std::string>{"C:\\VMs\\a\\notes & more.txt"});
    EXPECT_EQ(spec.vms[1]->vmId, spec_vm_b);
    EXPECT_TRUE(spec.vms[1]->crashConsistent);
    EXPECT_EQ(spec.defaultProvider->providerType, 3u);
    EXPECT_EQ(spec.defaultProvider->providerId, string_to_guid(hardware));
    ASSERT_EQ(spec.volumeProviders.size(), 1u);
    EXPECT_EQ(spec.volumeProviders[0]->mountPoint, L"C:\\Mounts\\Data=1\\");
    EXPECT_EQ(spec.volumeProviders[0]->providerType, 1u);
    EXPECT_EQ(spec.offhost->mode, COffhostInfo::Enabled);
    EXPECT_TRUE(spec.useCsvVssWriter);

    // The least a server sends: no provider named, on-host, no CSV writer.
    ASSERT_EQ(client::RunClient({"spec", "--vm", spec_vm_b, "-o", file.string()}, out, err),
              client::exit_success);
    const CHvBackupSpec least(client_test::read_file(file));
    EXPECT_EQ(least.defaultProvider->providerType, 0u);
    EXPECT_TRUE(least.volumeProviders.empty());
    EXPECT_EQ(least.offhost->mode, COffhostInfo::Disabled);
    EXPECT_FALSE(least.useCsvVssWriter);
}

TEST(SpecCommand, MistakesAreRefusedSayingWhich) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, "spec needs at least one --vm GUID."},
        {{"--vm", "vm1"}, "--vm takes a GUID: 'vm1'."},
        {{"--vm", spec_vm_a, "--vm", "83f4c5f7-1401-4a04-a996-506a4dea6810"},
         "--vm 83f4c5f7-1401-4a04-a996-506a4dea6810 is given twice."},
        {{"--vm", spec_vm_a, "--crash-consistent", spec_vm_b},
         "--crash-consistent names the VM " + spec_vm_b + ", which no --vm gives."},
        {{"--vm", spec_vm_a, "--aux-file", spec_vm_a}, "--aux-file takes VM=FILEPATH: '" + spec_vm_a + "'."},
        {{"--vm", spec_vm_a, "--provider", "fast:" + hardware},
         "--provider takes KIND:GUID, KIND one of system, software, hardware, fileshare, csv: 'fast:" +
             hardware + "'."},
        {{"--vm", spec_vm_a, "--provider", "system:" + hardware, "--provider", "system:" + hardware},
         "--provider is given twice."},
        {{"--vm", spec_vm_a, "--volume-provider", "D:\\=system:" + hardware, "--volume-provider",
          "d:=csv:" + hardware},
         "--volume-provider names the volume d: twice."},
        {{"--vm", spec_vm_a, "--offhost", "--volume-provider", "\\\\fs01\\vms\\=fileshare:" + hardware},
         "--offhost needs transportable shadow copies, which a fileshare or csv provider doesn't make."},
        {{"--vm", spec_vm_a, "--bogus"}, "spec doesn't take '--bogus'."},
    };
    for (const auto& [arguments, expected] : cases)
        EXPECT_EQ(SpecUsageErrorOf(arguments), expected);
    EXPECT_THROW(client::ParseSpecArguments({"--vm", spec_vm_a}), client::usage_error_t);
}
