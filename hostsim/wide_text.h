// Text helpers of the simulated host: UTF-8 and wide text, Windows-style comparison
// without regard to case and GUID text. The host stands below the common library and shares
// the primitives of compat/ with it.
#pragma once

#include "compat/ascii_case.h"
#include "compat/win_types.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hostsim {

std::string to_utf8(std::wstring_view text);
std::wstring from_utf8(std::string_view text);

using compat::iequals;
using compat::istarts_with;
bool icontains(std::wstring_view text, std::wstring_view part);

// With or without braces, any case.
std::optional<GUID> parse_guid(std::wstring_view text);
// Lower case, in braces.
std::wstring guid_text(const GUID& id);
GUID new_guid();

// A copy in COM task memory, as the VSS calls hand out their strings: the caller frees it.
wchar_t* new_task_string(std::wstring_view text);
BSTR new_bstr(std::wstring_view text);
// A text argument of a simulated call; a null one reads as empty.
inline std::wstring text_or_empty(const wchar_t* text) {
    return text ? std::wstring(text) : std::wstring();
}

// The pieces between separators; empty pieces too when asked, as the fields of a record are.
std::vector<std::wstring> split_text(std::wstring_view text, wchar_t separator, bool keep_empty = false);

// Windows-form path with '\' as the only separator, a trailing '\' when asked.
std::wstring with_trailing_backslash(std::wstring path);

} // namespace hostsim
