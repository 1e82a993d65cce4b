// The real tool started twice for a test: on the sample Hyper-V host with the pipe
// "host" and on its proxy with the pipe "proxy", both in one pipe folder that this
// process is pointed at. The proxy is this process's host.
#pragma once

#include "import_test_support.h"
#include "tool_run_posix.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace import_test {

inline std::vector<std::string> PipeModeOn(const std::string& pipeName) {
    return {"-p", "-n", pipeName, "-o", "LOG"};
}

struct offhost_tools_t {
    explicit offhost_tools_t(const std::string& proxyExtra = "")
        : hosts(proxyExtra), pipes(hosts.HostDir().parent_path() / "pipes"),
          hostRun(PipeModeOn("host"), pipes, hosts.HostDir()),
          proxyRun(PipeModeOn("proxy"), pipes, hosts.ProxyDir()) {
        ::setenv("MIRRACK_PIPE_DIR", pipes.c_str(), 1);
        hosts.SelectProxy();
    }

    host_and_proxy_t hosts;
    std::filesystem::path pipes;
    ToolRun hostRun, proxyRun;
};

} // namespace import_test
