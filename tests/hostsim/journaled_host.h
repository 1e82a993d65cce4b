// A simulated host's folder and what its journal says: each line is the caller's pid, the op and
// its arguments, tab-separated.
#pragma once

#include "tests/support/host_folder.h"

#include <algorithm>
#include <string>
#include <vector>

namespace hostsim_test {

class journaled_host_t : public test_support::host_folder_t {
public:
    using host_folder_t::host_folder_t;

    // The calls in order, each op with its arguments; op's alone if given.
    std::vector<std::string> calls(const std::string& op = "") const {
        std::vector<std::string> found;
        for (const auto& line : state_lines("journal.txt")) {
            const std::string call = line.substr(line.find('\t') + 1);
            if (op.empty() || call.substr(0, call.find('\t')) == op)
                found.push_back(call);
        }
        return found;
    }
    // Where the first call of op, with these leading arguments if given ("op\targ"), is in the
    // journal, or npos.
    std::size_t first_call(const std::string& call) const {
        const auto all = calls();
        for (std::size_t i = 0; i < all.size(); ++i)
            if ((all[i] + "\t").starts_with(call + "\t"))
                return i;
        return std::string::npos;
    }
    // The calls of op whose arguments hold the given text.
    std::size_t count(const std::string& op, const std::string& argument = "") const {
        const auto found = calls(op);
        return std::count_if(found.begin(), found.end(), [&](const std::string& call) {
            return call.find(argument, op.size()) != std::string::npos;
        });
    }
};

} // namespace hostsim_test
