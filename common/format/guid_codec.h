// What the GUID text forms ask of the platform.
#pragma once

#include "compat/win_types.h"

#include <cstdint>
#include <string>

namespace format_impl {

// Lower-case text without braces; empty when the platform yields none.
std::wstring uuid_to_text(const GUID& guid);
// 0 on success, else the platform's status.
std::uint32_t uuid_from_text(const std::wstring& text, GUID& guid);

} // namespace format_impl
