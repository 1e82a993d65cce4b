#include "common/logging/command_line.h"

#include "common/win/native_name_posix.h"

#include <fstream>
#include <iterator>

namespace logging::platform {

std::vector<std::wstring> process_arguments() {
    std::vector<std::wstring> arguments;
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    // A command line the system won't give is an empty one, as where the split fails.
    if (!file)
        return arguments;
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    // The tokens stand one after another, each closed by a zero byte. Bytes that are not UTF-8 are
    // kept, for the paths among them; texts show them as U+FFFD.
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\0', start);
        if (end == std::string::npos)
            end = text.size();
        arguments.push_back(win::wide_from_name_bytes(text.substr(start, end - start)));
        start = end + 1;
    }
    return arguments;
}

} // namespace logging::platform
