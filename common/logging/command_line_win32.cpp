#include "common/logging/command_line.h"

#include "compat/unique_any.h"
#include "compat/win_types.h"

#include <shellapi.h>

namespace logging::platform {

std::vector<std::wstring> process_arguments() {
    int count = 0;
    // The system's array goes back to it however the copy ends.
    const compat::unique_local_t<LPWSTR*> tokens(::CommandLineToArgvW(::GetCommandLineW(), &count));
    return tokens ? std::vector<std::wstring>(tokens.get(), tokens.get() + count)
                  : std::vector<std::wstring>();
}

} // namespace logging::platform
