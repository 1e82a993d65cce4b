// mirrack-client offhost's command line: it names its own two pipes, takes backup's
// options beside them, and a mistake is a usage error before anything is connected.
#include "client/offhost_arguments.h"
#include "client/subcommand.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

std::string OffhostUsageErrorOf(const std::vector<std::string>& arguments) {
    try {
        client::ParseOffhostArguments(arguments);
    } catch (const client::usage_error_t& e) {
        return e.text;
    }
    return "";
}

} // namespace

TEST(OffhostCommandLine, PipesInEitherFormAndBackupsOptionsBesideThemAreAllNeeded) {
    const client::offhost_arguments_t parsed = client::ParseOffhostArguments(
        {"--spec", "s.xml", "--host-pipe=hv", "--to", "out", "--proxy-pipe", "px", "--job", "Nightly"});
    EXPECT_EQ(parsed.hostPipe, L"hv");
    EXPECT_EQ(parsed.proxyPipe, L"px");
    EXPECT_EQ(parsed.backup.specFile, "s.xml");
    EXPECT_EQ(parsed.backup.targetDir, "out");
    EXPECT_EQ(parsed.backup.jobName, L"Nightly");

    // Missing pipes or backup options are usage errors.
    EXPECT_EQ(OffhostUsageErrorOf({"--host-pipe", "hv", "--spec", "s.xml", "--to", "out"}),
              "offhost needs --host-pipe NAME and --proxy-pipe NAME.");
    EXPECT_EQ(OffhostUsageErrorOf({"--host-pipe", "hv", "--proxy-pipe"}), "--proxy-pipe needs a value.");
    EXPECT_NE(OffhostUsageErrorOf({"--host-pipe", "hv", "--proxy-pipe", "px", "--to", "out"}), "");
    EXPECT_NE(OffhostUsageErrorOf(
                  {"--host-pipe", "hv", "--proxy-pipe", "px", "--spec", "s", "--to", "o", "--pipe", "p"}),
              "");
}

TEST(OffhostCommandLine, NeedsNoPipeOfTheWholeClient) {
    std::ostringstream out, err;
    // Past the command line the road begins, and a missing specification file ends it.
    const int status = client::RunClient(
        {"offhost", "--host-pipe", "hv", "--proxy-pipe", "px", "--spec", "/no/such/spec.xml", "--to", "out"},
        out, err);
    EXPECT_EQ(status, client::exit_failure) << err.str();
    EXPECT_EQ(err.str().find("--pipe NAME is needed."), std::string::npos) << err.str();
}
