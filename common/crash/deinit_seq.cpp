#include "common/crash/deinit_seq.h"

#include "common/logging/log.h"

namespace crash {

void deinit_seq_t::add(std::shared_ptr<deinit_handler_t> handler) {
    std::lock_guard<std::mutex> guard(lock_);
    handlers_.push_back(std::move(handler));
}

void deinit_seq_t::execute_all() {
    std::lock_guard<std::mutex> guard(lock_);
    for (const auto& handler : handlers_)
        handler->execute();
}

std::size_t deinit_seq_t::size() const {
    std::lock_guard<std::mutex> guard(lock_);
    return handlers_.size();
}

void run_crash_handlers(deinit_seq_t& sequence) noexcept {
    try {
        const logger_t& h = logging::lib_logger();
        log_scope_t scope(h, "Executing crash handlers.");
        try {
            sequence.execute_all();
            scope.finish("Crash handlers were successfully executed.");
        } catch (const std::exception& e) {
            log_exception(h, "Crash handlers cannot be executed.", e);
        }
    } catch (...) {
        // Memory may be gone by now; the filter goes on without the log.
    }
}

} // namespace crash
