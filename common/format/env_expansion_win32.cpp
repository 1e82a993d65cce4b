// The system's expansion, sized first and then filled.
#include "common/format/env_expansion.h"

#include "compat/win_types.h"

#include <vector>

namespace format {

std::optional<std::wstring> expand_environment(const std::wstring& text, std::uint32_t& error) {
    const DWORD size = ExpandEnvironmentStringsW(text.c_str(), nullptr, 0);
    if (size == 0) {
        error = GetLastError();
        return std::nullopt;
    }
    std::vector<wchar_t> buffer(size, L'\0');
    if (ExpandEnvironmentStringsW(text.c_str(), buffer.data(), size) == 0) {
        error = GetLastError();
        return std::nullopt;
    }
    return std::wstring(buffer.data());
}

} // namespace format
