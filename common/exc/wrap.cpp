// Wrapping a caught exception with one more line on its way up.
#include "common/exc/exc.h"

#include "common/format/format.h"

#include <boost/system/system_error.hpp>
#include <system_error>

namespace exc {

namespace {

// A dependency's error code is the one number worth keeping from a foreign exception.
std::uint32_t foreign_error_code(const std::exception& cause) {
    if (const auto* boost_error = dynamic_cast<const boost::system::system_error*>(&cause))
        return static_cast<std::uint32_t>(boost_error->code().value());
    if (const auto* std_error = dynamic_cast<const std::system_error*>(&cause))
        return static_cast<std::uint32_t>(std_error->code().value());
    return 0;
}

// Only the exception being handled can be thrown on as the very same object.
bool is_handled_exception(const std::exception& cause) {
    if (!std::current_exception())
        return false;
    try {
        throw;
    } catch (const std::exception& current) {
        return &current == &cause;
    } catch (...) {
        return false;
    }
}

[[noreturn]] void rethrow_with_entry(const std::string& text, bool is_trace, const std::exception& cause) {
    const exc_base_t wrapper;
    if (const auto* own = dynamic_cast<const exc_base_t*>(&cause)) {
        // The caught object itself grows, so that its dynamic type and code travel on unchanged.
        auto* target = const_cast<exc_base_t*>(own);
        target->append_entry(text, is_trace);
        target->merge_attributes(wrapper);
        if (is_handled_exception(cause))
            throw;
        target->rethrow();
    }
    const char* cause_text = cause.what();
    runtime_exc_t wrapped(cause_text != nullptr ? cause_text : "");
    wrapped.set_code(foreign_error_code(cause));
    wrapped.append_entry(text, is_trace);
    wrapped.merge_attributes(wrapper);
    throw wrapped;
}

} // namespace

void rethrow_with_message(const std::string& text, const std::exception& cause) {
    rethrow_with_entry(text, false, cause);
}

void rethrow_with_message(const std::string& fmt, const std::string& a1, const std::exception& cause) {
    rethrow_with_entry(format_message(fmt, a1), false, cause);
}

void rethrow_with_trace(const std::string& text, const std::exception& cause) {
    rethrow_with_entry(text, true, cause);
}

void rethrow_with_trace(const std::string& fmt, const std::string& a1, const std::exception& cause) {
    rethrow_with_entry(format_message(fmt, a1), true, cause);
}

void rethrow_with_trace(const std::string& fmt, const std::string& a1, const std::string& a2,
                        const std::exception& cause) {
    rethrow_with_entry(format_message(fmt, a1, a2), true, cause);
}

void rethrow_with_trace(const std::string& fmt, const std::string& a1, const std::string& a2,
                        const std::string& a3, const std::exception& cause) {
    rethrow_with_entry(format_message(fmt, a1, a2, a3), true, cause);
}

std::string exception_text(const std::exception& e) {
    const char* text = e.what();
    return text != nullptr ? std::string(text) : std::string("Exception message is not available.");
}

} // namespace exc
