#include "common/crash/crash_filter.h"

#include "common/crash/crash_context.h"
#include "common/logging/log.h"

namespace crash {

namespace {

void write_dump(const crash_context_t& context, const fault_t* fault) {
    try {
        std::unique_ptr<win32::dump_gen_base_t> generator = pick_dump_generator();
        generator->generate(0, context.dump_folder, context.dump_prefix, fault);
    } catch (const std::exception& e) {
        log_exception(logging::lib_logger(), "Cannot generate crash dump.", e);
    }
}

} // namespace

long crash_filter(const fault_t* fault, previous_filter_t previous) noexcept {
    try {
        crash_context_t& context = crash_context();
        if (context.disabled != 0)
            return execute_handler;
        write_dump(context, fault);
        run_crash_handlers(*context.deinit_seq);
        if (previous == previous_filter_t::ask && context.previous_filter != nullptr)
            return pass_to_previous_filter(context.previous_filter, fault);
        return execute_handler;
    } catch (const std::exception& e) {
        try {
            log_exception(logging::lib_logger(), "Cannot process an unhandled exception.", e);
        } catch (...) {
        }
    } catch (...) {
    }
    return execute_handler;
}

} // namespace crash
