// The conversions whose failure matters to the caller: each throws
// exc::win_sys_exc_t with the platform's code. The forms that only show a value
// in a message never fail (common/format/format.h).
#pragma once

#include "compat/win_types.h"

#include <string>

std::string to_ansi(const std::wstring& text);
std::wstring to_unicode(const std::string& text);
std::string to_utf8(const std::wstring& text);
std::wstring from_utf8(const std::string& text);
// What from_utf8 and then to_utf8, or to_ansi, would make of UTF-8 text, without the wide text
// between where the platform allows: documents of megabytes cross the pipe as UTF-8.
std::string utf8_round_trip(const std::string& text);
std::string utf8_to_ansi(const std::string& text);

GUID string_to_guid(const std::wstring& text);
GUID string_to_guid(const std::string& text);

std::wstring expand_env(const std::wstring& text);
