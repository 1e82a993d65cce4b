// The command line of the process, as the operating system splits it, program name first.
#pragma once

#include <string>
#include <vector>

namespace logging::platform {

std::vector<std::wstring> process_arguments();

} // namespace logging::platform
