// Texts of Win32 error codes and HRESULTs, in the system's wording.
#include "common/exc/error_text_os.h"
#include "common/exc/exc.h"
#include "common/format/format.h"

namespace exc {

namespace {
const std::uint32_t first_internet_code = 12000;
const std::uint32_t last_internet_code = 12174;
} // namespace

std::string sys_error_text(std::uint32_t code) {
    if (auto text = system_message_text(code))
        return *text;
    if (code >= first_internet_code && code <= last_internet_code) {
        if (auto text = internet_message_text(code))
            return *text;
    }
    return system_category_text(code) + ". Error code: " + num_to_string(static_cast<std::uint64_t>(code));
}

std::string com_error_text(std::int32_t code) {
    const std::string suffix = " Error code: " + hex_to_string(static_cast<std::uint32_t>(code));
    if (auto description = thread_error_description())
        return *description + suffix;
    return suffix;
}

} // namespace exc
