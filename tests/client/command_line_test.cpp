// mirrack-client's command lines: offhost's (backup's options beside its own two pipes), check's
// (one tool, or a host and its proxy, never both) and spec's (read back by the tool's own parser).
// A mistake is a usage error, named, before anything is connected.
#include "client/check_command.h"
#include "client/check_report.h"
#include "client/offhost_arguments.h"
#include "client/spec_command.h"
#include "client/subcommand.h"
#include "common/exc/convert.h"
#include "spec/hv_backup_spec.h"
#include "test_server.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

const std::string spec_vm_a = "83F4C5F7-1401-4A04-A996-506A4DEA6810";
const std::string spec_vm_b = "26882b39-53fb-470f-8ebe-5938c39fcd0f";
const std::string hardware = "{7f1d6a2e-3b4c-4d5e-8f60-71829304a5b6}";

// The text of the usage error that parse throws, or "" if it throws none.
template <class Parse> std::string UsageErrorOf(Parse parse) {
    try {
        parse();
    } catch (const client::usage_error_t& e) {
        return e.text;
    }
    return "";
}

} // namespace

TEST(OffhostCommandLine, PipesInEitherFormAndBackupsOptionsBesideThemAreAllNeededButNoPipeOfTheWholeClient) {
    const client::offhost_arguments_t parsed = client::ParseOffhostArguments(
        {"--spec", "s.xml", "--host-pipe=hv", "--to", "out", "--proxy-pipe", "px", "--job", "Nightly"});
    EXPECT_EQ(parsed.hostPipe, L"hv");
    EXPECT_EQ(parsed.proxyPipe, L"px");
    EXPECT_EQ(parsed.backup.specFile, "s.xml");
    EXPECT_EQ(parsed.backup.targetDir, "out");
    EXPECT_EQ(parsed.backup.jobName, L"Nightly");

    const auto offhost = [](std::vector<std::string> arguments) {
        return UsageErrorOf([&] { client::ParseOffhostArguments(arguments); });
    };
    EXPECT_EQ(offhost({"--host-pipe", "hv", "--spec", "s.xml", "--to", "out"}),
              "offhost needs --host-pipe NAME and --proxy-pipe NAME.");
    EXPECT_EQ(offhost({"--host-pipe", "hv", "--proxy-pipe"}), "--proxy-pipe needs a value.");
    EXPECT_EQ(offhost({"--host-pipe", "hv", "--proxy-pipe", "px", "--to", "out"}),
              "backup needs --spec FILE and --to DIR.");
    EXPECT_EQ(offhost({"--host-pipe", "hv", "--proxy-pipe", "px", "--spec", "s", "--to", "o", "--pipe", "p"}),
              "backup doesn't take '--pipe'.");

    // Past the command line the road begins, and a missing specification file ends it.
    const client_test::run_t run = client_test::run_client(
        {"offhost", "--host-pipe", "hv", "--proxy-pipe", "px", "--spec", "/no/such/spec.xml", "--to", "out"});
    EXPECT_EQ(run.status, client::exit_failure) << run.err;
    EXPECT_EQ(run.err.find("--pipe NAME is needed."), std::string::npos) << run.err;
}

TEST(CheckCommandLine, OneToolOrAHostAndItsProxyAndTheReportsFormatFromItsName) {
    const client::check_arguments_t onHost =
        client::ParseCheckArguments({"--spec", "s.xml", "--report=r.md", "--tool-log", "t.log"}, L"trial");
    EXPECT_FALSE(onHost.Offhost());
    EXPECT_EQ(onHost.toolLog, "t.log");
    EXPECT_EQ(client::ReportFormatOf(onHost.reportFile), client::report_format_t::markdown);
    EXPECT_EQ(client::ReportFormatOf("r.txt"), client::report_format_t::text);
    EXPECT_TRUE(
        client::ParseCheckArguments({"--spec", "s", "--host-pipe", "a", "--proxy-pipe", "b"}, L"").Offhost());

    const auto check = [](std::vector<std::string> arguments, const std::wstring& pipe) {
        return UsageErrorOf([&] { client::ParseCheckArguments(arguments, pipe); });
    };
    EXPECT_EQ(check({"--spec", "s"}, L""),
              "check needs --pipe NAME, or --host-pipe NAME and --proxy-pipe NAME.");
    EXPECT_EQ(check({"--spec", "s", "--host-pipe", "a"}, L""),
              "An off-host check needs both --host-pipe NAME and --proxy-pipe NAME.");
    EXPECT_EQ(check({"--spec", "s", "--host-pipe", "a", "--proxy-pipe", "b"}, L"trial"),
              "check takes --pipe NAME on a host, or --host-pipe and --proxy-pipe off-host, not both.");
    EXPECT_EQ(check({"--spec", "s", "--proxy-log", "p.log"}, L"trial"),
              "--proxy-log belongs to an off-host check.");
    EXPECT_EQ(check({"--report", "r.txt"}, L"trial"), "check needs --spec FILE.");
    EXPECT_EQ(check({"--spec", "s", "--to", "dir"}, L"trial"), "check doesn't take '--to'.");
}

TEST(SpecCommand, EveryOptionReachesTheToolsParserAndVmsAreNamedAsTheWriterNamesThem) {
    const std::string braced_vm_a = "{" + spec_vm_a + "}";
    const fs::path file = client_test::scratch_folder() / "written-spec.xml";
    const client_test::run_t run = client_test::run_client(
        {"spec", "--vm", braced_vm_a, "--vm=" + spec_vm_b, "--crash-consistent", spec_vm_b, "--exclude-disk",
         braced_vm_a + "=C:\\VMs\\a\\scratch.vhdx", "--aux-file",
         braced_vm_a + "=C:\\VMs\\a\\notes & more.txt", "--provider", "Hardware:" + hardware,
         "--volume-provider", "C:\\Mounts\\Data=1\\=system:" + hardware, "--csv-writer", "--offhost", "-o",
         file.string()});
    ASSERT_EQ(run.status, client::exit_success) << run.err;

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
    ASSERT_EQ(client_test::run_client({"spec", "--vm", spec_vm_b, "-o", file.string()}).status,
              client::exit_success);
    const CHvBackupSpec least(client_test::read_file(file));
    EXPECT_EQ(least.defaultProvider->providerType, 0u);
    EXPECT_TRUE(least.volumeProviders.empty());
    EXPECT_EQ(least.offhost->mode, COffhostInfo::Disabled);
    EXPECT_FALSE(least.useCsvVssWriter);
}

TEST(SpecCommand, MistakesAreRefusedSayingWhich) {
    const std::string braced_vm_a = "{" + spec_vm_a + "}";
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, "spec needs at least one --vm GUID."},
        {{"--vm", "vm1"}, "--vm takes a GUID: 'vm1'."},
        {{"--vm", braced_vm_a, "--vm", "83f4c5f7-1401-4a04-a996-506a4dea6810"},
         "--vm 83f4c5f7-1401-4a04-a996-506a4dea6810 is given twice."},
        {{"--vm", braced_vm_a, "--crash-consistent", spec_vm_b},
         "--crash-consistent names the VM " + spec_vm_b + ", which no --vm gives."},
        {{"--vm", braced_vm_a, "--aux-file", braced_vm_a},
         "--aux-file takes VM=FILEPATH: '" + braced_vm_a + "'."},
        {{"--vm", braced_vm_a, "--provider", "fast:" + hardware},
         "--provider takes KIND:GUID, KIND one of system, software, hardware, fileshare, csv: 'fast:" +
             hardware + "'."},
        {{"--vm", braced_vm_a, "--provider", "system:" + hardware, "--provider", "system:" + hardware},
         "--provider is given twice."},
        {{"--vm", braced_vm_a, "--volume-provider", "D:\\=system:" + hardware, "--volume-provider",
          "d:=csv:" + hardware},
         "--volume-provider names the volume d: twice."},
        {{"--vm", braced_vm_a, "--offhost", "--volume-provider", "\\\\fs01\\vms\\=fileshare:" + hardware},
         "--offhost needs transportable shadow copies, which a fileshare or csv provider doesn't make."},
        {{"--vm", braced_vm_a, "--bogus"}, "spec doesn't take '--bogus'."},
    };
    for (auto [arguments, expected] : cases) {
        arguments.insert(arguments.end(), {"-o", "spec.xml"});
        EXPECT_EQ(UsageErrorOf([&] { client::ParseSpecArguments(arguments); }), expected);
    }
    EXPECT_THROW(client::ParseSpecArguments({"--vm", braced_vm_a}), client::usage_error_t);
}
