// The tool's entry point: the backup server starts it in pipe mode, drives it
// over the pipe, and its disconnect is what ends the process. The exit code is 0
// on every path but one, a task that could not be released; the log tells the rest.
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/command_line.h"
#include "common/logging/log.h"
#include "common/runtime/startup.h"
#include "invoke/invoke_server_com.h"
#include "invoke/pipe_invoke_server.h"
#include "tool/com_security.h"
#include "tool/command_line.h"
#include "tool/mirrack_dispatcher.h"
#include "tool/process_platform.h"
#include "tool/snapshot_task_holder.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

const int exitCodeTasksNotReleased = -2;

std::vector<std::wstring> CollectArguments() {
    return exc::traced("Failed to parse command line",
                       [&] { return logging::platform::process_arguments(); });
}

} // namespace

int main(int argc, char* argv[]) {
    tool::KeepWritesToClosedOutputsHarmless();
    try {
        tool::KeepFreedMemoryForNextRequests();
        const std::vector<std::wstring> arguments = CollectArguments();
        runtime::start_common_library("Mirrack.log", arguments);

        // The same COM scope that each request of the server opens.
        const wrap::CRequestComScope com;
        tool::SetProcessComSecurity();

        const std::shared_ptr<wrap::CToolCmdLineOptions> options = wrap::ParseToolCmdLine(argc, argv);
        const std::shared_ptr<wrap::IInvokeDispatcher> dispatcher = std::make_shared<CMirrackDispatcher>();
        wrap::RunPipeInvokeServer(tool::PipeNameFromCommandLine(options->pipeName), dispatcher);

        if (!CSnapshotTaskHolder::Instance().ClearResources()) {
            // A task that would not let go may still hold the snapshot: leave
            // without running anything else that could wait on it.
            log_error(logging::tool_logger(), "Process will be terminated.");
            tool::TerminateProcessNow(exitCodeTasksNotReleased);
        }
        log_info(logging::tool_logger(), "Process will be finished normally.");
    } catch (const std::exception& e) {
        log_exception(logging::tool_logger(), e);
        // The log may not exist: start-up can stop before it is opened, or it could not be
        // opened at all. Standard error is there in any case, so the end is never silent.
        std::cerr << (e.what() != nullptr ? e.what() : "Exception message is not available.") << std::endl;
    }
    return 0;
}
