#include "common/logging/command_line.h"

#include "compat/win_types.h"

#include <shellapi.h>

namespace logging::platform {

std::vector<std::wstring> process_arguments() {
    std::vector<std::wstring> arguments;
    int count = 0;
    LPWSTR* tokens = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (tokens == nullptr)
        return arguments;
    try {
        arguments.assign(tokens, tokens + count);
    } catch (...) {
        ::LocalFree(tokens);
        throw;
    }
    ::LocalFree(tokens);
    return arguments;
}

} // namespace logging::platform
