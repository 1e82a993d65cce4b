// The lines of a failure, cause first, for comparing with the expected texts.
#pragma once

#include "common/exc/exc.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace test_support {

// The lines of the exc::exc_base_t that action throws; fails the test if none is thrown. A platform
// error puts its own text in front of the lines; keep_last leaves it out.
inline std::vector<std::string> failure_lines(const std::function<void()>& action,
                                              std::size_t keep_last = 99) {
    try {
        action();
    } catch (const exc::exc_base_t& e) {
        std::vector<std::string> lines;
        for (const exc::message_entry_t& entry : e.messages())
            lines.push_back(entry.text);
        if (lines.size() > keep_last)
            lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(keep_last));
        return lines;
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

} // namespace test_support

using test_support::failure_lines;
