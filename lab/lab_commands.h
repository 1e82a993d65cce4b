// The commands of mirrack-lab: create, state, resolve.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace lab {

// Returns the exit code.
int run_lab_command(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

} // namespace lab
