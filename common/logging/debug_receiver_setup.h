// The second log of the process, behind the "dbg" handle.
#pragma once

namespace logging {

// Gives the debug log its receiver; nothing is read or opened before its first line.
void install_debug_log();

} // namespace logging
