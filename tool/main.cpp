// The tool's entry point: the backup server starts it in pipe mode, drives it
// over the pipe, and its disconnect is what ends the process. The exit code is 0
// on every path but one, a task that could not be released; the log tells the rest.
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/logging/startup.h"
#include "invoke/pipe_invoke_server.h"
#include "tool/com_runtime.h"
#include "tool/command_line.h"
#include "tool/mirrack_dispatcher.h"
#include "tool/process_platform.h"
#include "tool/snapshot_task_holder.h"

#include <memory>
#include <string>
#include <vector>

namespace {

const int exitCodeTasksNotReleased = -2;

std::vector<std::wstring> CollectArguments(int argc, const char* const argv[]) {
    try {
        return CollectProcessArguments(argc, argv);
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to parse command line", e);
    }
}

} // namespace

int main(int argc, char* argv[]) {
    try {
        const std::vector<std::wstring> arguments = CollectArguments(argc, argv);
        logging::start_common_library("Mirrack.log");

        const CComRuntimeGuard com;
        SetProcessComSecurity();

        const std::shared_ptr<wrap::CToolCmdLineOptions> options = wrap::ParseToolCmdLine(argc, argv);
        const std::shared_ptr<wrap::IInvokeDispatcher> dispatcher = std::make_shared<CMirrackDispatcher>();
        wrap::RunPipeInvokeServer(to_unicode(options->pipeName), dispatcher);

        if (!CSnapshotTaskHolder::Instance().ClearResources()) {
            // A task that would not let go may still hold the snapshot: leave
            // without running anything else that could wait on it.
            log_error(logging::tool_logger(), "Process will be terminated.");
            TerminateProcessNow(exitCodeTasksNotReleased);
        }
        log_info(logging::tool_logger(), "Process will be finished normally.");
    } catch (const std::exception& e) {
        log_exception(logging::tool_logger(), e);
    }
    return 0;
}
