// What a failing platform wrapper reports: its Win32 code, then its outermost line.
#pragma once

#include "common/exc/exc.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

inline std::string sys_failure(const std::function<void()>& action) {
    try {
        action();
    } catch (const exc::win_sys_exc_t& e) {
        return std::to_string(e.code()) + " " + e.messages().back().text;
    }
    ADD_FAILURE() << "no platform failure was thrown";
    return {};
}
