// mirrack-lab soak: jobs drawn at random from a seed, run against real tools on a sample
// host, up to K side by side, each held to the invariants.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace lab {

// args[0] is "soak". Returns 0 when every invariant held, 1 at the first broken one.
int run_soak(const std::vector<std::string>& args, std::ostream& out);

} // namespace lab
