// What the GUID text forms ask of the platform.
#pragma once

#include "compat/win_types.h"

#include <cstdint>
#include <string>

namespace format {

// Lower-case text without braces; empty when the platform yields none.
std::wstring uuid_to_text(const GUID& guid);
// The same text, narrow, at text, which has room for uuid_ascii_length characters; false when
// the platform yields none.
inline constexpr std::size_t uuid_ascii_length = 36;
bool uuid_to_ascii(const GUID& guid, char* text);
// 0 on success, else the platform's status.
std::uint32_t uuid_from_text(const std::wstring& text, GUID& guid);

} // namespace format
