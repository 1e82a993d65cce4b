// Without the system's message tables: the simulated host's, which holds the texts the system
// gives for the codes this tool meets.
#include "common/exc/error_text_os.h"

#include "hostsim/host_access.h"

namespace exc {

std::optional<std::string> system_message_text(std::uint32_t code) {
    return hostsim::system_message(code);
}

std::optional<std::string> internet_message_text(std::uint32_t code) {
    return hostsim::internet_message(code);
}

// The system category of this platform holds errno values, not Win32 codes: reading a Win32 code
// there would give the words of an unrelated errno.
std::string system_category_text(std::uint32_t) {
    return "Unknown error";
}

// There is no COM error object on this platform.
std::optional<std::string> thread_error_description() {
    return std::nullopt;
}

} // namespace exc
