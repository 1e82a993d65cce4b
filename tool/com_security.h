// The process's COM security, set once at start.
#pragma once

namespace tool {

// A failure is logged and otherwise ignored: the process goes on with whatever
// security COM has.
void SetProcessComSecurity();

} // namespace tool
