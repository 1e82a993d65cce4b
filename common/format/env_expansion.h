// What %NAME% expansion asks of the platform.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace format {

// nullopt on failure, with the platform's error code in `error`.
std::optional<std::wstring> expand_environment(const std::wstring& text, std::uint32_t& error);

} // namespace format
