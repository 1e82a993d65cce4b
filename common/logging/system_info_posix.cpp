#include "common/logging/system_info.h"

#include "common/exc/exc.h"
#include "common/logging/log_platform.h"

#include <cctype>
#include <climits>
#include <sys/utsname.h>
#include <unistd.h>
#include <vector>

namespace logging::platform {

namespace {

// The version that the build gives the program; there is no version resource to read here.
constexpr const char* program_version = "1.0.0.0";

// "6.1.0-18-amd64" gives 6, 1, 0: the leading numbers of a kernel release.
std::vector<std::string> leading_numbers(const std::string& release) {
    std::vector<std::string> numbers;
    std::string current;
    for (char c : release) {
        if (std::isdigit(static_cast<unsigned char>(c))) {
            current += c;
            continue;
        }
        if (current.empty() || c != '.')
            break;
        numbers.push_back(current);
        current.clear();
    }
    if (!current.empty())
        numbers.push_back(current);
    return numbers;
}

} // namespace

std::string executable_module_path() {
    std::vector<char> buffer(PATH_MAX + 1, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size() - 1);
    if (length <= 0)
        throw exc::win_sys_exc_t("Fully-qualified path for the executable file cannot be retrieved.",
                                 last_error_code());
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

std::string module_version(const std::string&) {
    return program_version;
}

os_version_t os_version() {
    struct utsname names {};
    if (::uname(&names) != 0)
        throw exc::win_sys_exc_t("Failed to retrieve OS version", last_error_code());
    std::vector<std::string> numbers = leading_numbers(names.release);
    numbers.resize(3, "0");
    return os_version_t{numbers[0] + "." + numbers[1], numbers[2], names.version};
}

} // namespace logging::platform
