// mirrack-client check's command line: one tool through --pipe, or a host and a proxy
// through pipes of their own, never both, and the report's format from its name.
#include "client/check_command.h"
#include "client/check_report.h"

#include <gtest/gtest.h>

namespace {

std::string CheckUsageErrorOf(const std::vector<std::string>& arguments, const std::wstring& pipe) {
    try {
        client::ParseCheckArguments(arguments, pipe);
    } catch (const client::usage_error_t& e) {
        return e.text;
    }
    return "";
}

} // namespace

TEST(CheckCommandLine, OneToolOrAHostAndItsProxyAndTheReportsFormatFromItsName) {
    const client::check_arguments_t onHost =
        client::ParseCheckArguments({"--spec", "s.xml", "--report=r.md", "--tool-log", "t.log"}, L"trial");
    EXPECT_FALSE(onHost.Offhost());
    EXPECT_EQ(onHost.toolLog, "t.log");
    EXPECT_EQ(client::ReportFormatOf(onHost.reportFile), client::report_format_t::markdown);
    EXPECT_EQ(client::ReportFormatOf("r.txt"), client::report_format_t::text);
    EXPECT_TRUE(
        client::ParseCheckArguments({"--spec", "s", "--host-pipe", "a", "--proxy-pipe", "b"}, L"").Offhost());

    EXPECT_EQ(CheckUsageErrorOf({"--spec", "s"}, L""),
              "check needs --pipe NAME, or --host-pipe NAME and --proxy-pipe NAME.");
    EXPECT_EQ(CheckUsageErrorOf({"--spec", "s", "--host-pipe", "a"}, L""),
              "An off-host check needs both --host-pipe NAME and --proxy-pipe NAME.");
    EXPECT_EQ(CheckUsageErrorOf({"--spec", "s", "--host-pipe", "a", "--proxy-pipe", "b"}, L"trial"),
              "check takes --pipe NAME on a host, or --host-pipe and --proxy-pipe off-host, not both.");
    EXPECT_EQ(CheckUsageErrorOf({"--spec", "s", "--proxy-log", "p.log"}, L"trial"),
              "--proxy-log belongs to an off-host check.");
    EXPECT_EQ(CheckUsageErrorOf({"--report", "r.txt"}, L"trial"), "check needs --spec FILE.");
    EXPECT_EQ(CheckUsageErrorOf({"--spec", "s", "--to", "dir"}, L"trial"), "check doesn't take '--to'.");
}
