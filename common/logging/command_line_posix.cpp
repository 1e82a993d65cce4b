#include "common/logging/command_line.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log_platform.h"

#include <fstream>
#include <iterator>

namespace logging::platform {

std::vector<std::wstring> process_arguments() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    if (!file)
        throw exc::win_sys_exc_t("Failed to read the process command line.", last_error_code());
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    // The tokens stand one after another, each closed by a zero byte.
    std::vector<std::wstring> arguments;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\0', start);
        if (end == std::string::npos)
            end = text.size();
        arguments.push_back(from_utf8(text.substr(start, end - start)));
        start = end + 1;
    }
    return arguments;
}

} // namespace logging::platform
