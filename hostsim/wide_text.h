// Text helpers of the simulated host: UTF-8 and wide text, Windows-style comparison
// without regard to case, GUID text and file masks. The host stands below the common
// library and so has its own small set.
#pragma once

#include "compat/win_types.h"

#include <optional>
#include <string>
#include <string_view>

namespace hostsim {

std::string to_utf8(std::wstring_view text);
std::wstring from_utf8(std::string_view text);

wchar_t fold_case(wchar_t c);
bool iequals(std::wstring_view a, std::wstring_view b);
bool istarts_with(std::wstring_view text, std::wstring_view prefix);
bool icontains(std::wstring_view text, std::wstring_view part);

// With or without braces, any case.
std::optional<GUID> parse_guid(std::wstring_view text);
// Lower case, in braces.
std::wstring guid_text(const GUID& id);
GUID new_guid();

// Windows file mask: '*' and '?', without regard to case; "*.*" matches every name.
bool mask_matches(std::wstring_view mask, std::wstring_view name);

// Windows-form path with '\' as the only separator, a trailing '\' when asked.
std::wstring with_trailing_backslash(std::wstring path);

} // namespace hostsim
