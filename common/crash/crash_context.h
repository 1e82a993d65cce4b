// The one crash context of the process: where dumps go, what they are called,
// and the handlers that run after a dump.
#pragma once

#include "common/crash/deinit_seq.h"

#include <cstdint>
#include <memory>
#include <string>

namespace crash {

// EXCEPTION_EXECUTE_HANDLER: the crash frame takes over and ends the thread.
inline constexpr long execute_handler = 1;

// The platform's own last-chance filter, kept untyped here; only the platform
// code that installed it calls it.
using raw_filter_t = void (*)();

struct crash_context_t {
    std::shared_ptr<deinit_seq_t> deinit_seq = std::make_shared<deinit_seq_t>();
    raw_filter_t previous_filter = nullptr;
    // UTF-8. Empty until an application chooses a folder: no dump is written then.
    std::string dump_folder;
    std::string dump_prefix = "RZ";
    // Nothing in this tool sets it; it lets an embedding application switch dumps off.
    std::uint8_t disabled = 0;
};

// Made on first use and kept until process exit. Several crashing threads share
// it; only the handler sequence has a lock.
crash_context_t& crash_context();

} // namespace crash
