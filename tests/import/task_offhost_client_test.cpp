// mirrack-client offhost against the two real tools: the files it receives are the
// snapshot's, read on the proxy; each VM's result reaches the host's writer; and
// neither host keeps a shadow copy.
#include "offhost_tools.h"

#include "client/subcommand.h"
#include "common/format/format.h"
#include "invoke/files_list.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

using namespace import_test;

namespace {

namespace fs = std::filesystem;

struct client_run_t {
    int status;
    std::string out;
    std::string err;
};

client_run_t RunOffhost(const offhost_tools_t& tools, const fs::path& spec,
                        const std::vector<std::string>& more = {}) {
    std::vector<std::string> line{
        "offhost",      "--host-pipe", "host",
        "--proxy-pipe", "proxy",       "--spec",
        spec.string(),  "--to",        (tools.hosts.HostDir().parent_path() / "backup").string()};
    line.insert(line.end(), more.begin(), more.end());
    std::ostringstream out, err;
    const int status = client::RunClient(line, out, err);
    return {status, out.str(), err.str()};
}

std::string ReadFile(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Every file below dir, by its path relative to dir, with its content.
std::map<std::string, std::string> FilesBelow(const fs::path& dir) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(dir))
        if (entry.is_regular_file())
            files[fs::relative(entry.path(), dir).string()] = ReadFile(entry.path());
    return files;
}

} // namespace

TEST(OffhostClient, CopiesTheSnapshotOnTheProxyReportsEachVmOnTheHostAndLeavesBothClean) {
    offhost_tools_t tools;
    const std::vector<GUID> vms = tools.hosts.OffhostVms();
    ASSERT_GE(vms.size(), 2u);
    const std::string failedVm = to_ansi(guid_to_wstring(vms[1]));

    const client_run_t run =
        RunOffhost(tools, tools.hosts.HostDir() / "spec-offhost.xml", {"--fail-vm", failedVm});
    EXPECT_EQ(run.status, client::exit_success) << run.out << run.err;
    EXPECT_TRUE(Contains(run.out, "Import task completed")) << run.out;
    EXPECT_TRUE(Contains(run.out, "Import and snapshot closed.")) << run.out;
    EXPECT_EQ(tools.proxyRun.WaitForExit(), 0);
    EXPECT_EQ(tools.hostRun.WaitForExit(), 0);

    // The sample files are each filled with their own name, so a file read from
    // the wrong place shows; nothing changed on the host meanwhile.
    const auto received = FilesBelow(tools.hosts.HostDir().parent_path() / "backup");
    ASSERT_FALSE(received.empty());
    for (const auto& [name, content] : received) {
        const std::string fileName = fs::path(name).filename().string();
        EXPECT_EQ(content.substr(0, fileName.size() + 1), fileName + "\n") << name;
    }
    std::ifstream backups(tools.hosts.HostDir() / "state" / "backups.txt");
    std::string results((std::istreambuf_iterator<char>(backups)), std::istreambuf_iterator<char>());
    EXPECT_TRUE(Contains(results, "\tfailed")) << results;
    EXPECT_TRUE(Contains(results, "\tsucceeded")) << results;
    EXPECT_TRUE(tools.hosts.Shadows(tools.hosts.HostDir()).empty());
    EXPECT_TRUE(tools.hosts.Shadows(tools.hosts.ProxyDir()).empty());
}

TEST(OffhostClient, AnOnHostSpecificationEndsTheRoadBeforeTheProxyIsAsked) {
    offhost_tools_t tools;
    const client_run_t run = RunOffhost(tools, tools.hosts.HostDir() / "spec.xml");
    EXPECT_EQ(run.status, client::exit_error_response) << run.out << run.err;
    EXPECT_TRUE(Contains(run.out, "The host made no transportable snapshot")) << run.out;
    EXPECT_EQ(tools.hostRun.WaitForExit(), 0);
    EXPECT_EQ(tools.proxyRun.WaitForExit(), 0);
    EXPECT_FALSE(Contains(tools.proxyRun.LogText(), "Starting import of the off-host snapshot."));
    EXPECT_TRUE(tools.hosts.Shadows(tools.hosts.HostDir()).empty());
}
