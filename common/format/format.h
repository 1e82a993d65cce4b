// The %1 template formatter, the conversions that never fail, and the small printers and parsers.
// The conversions that throw are in common/exc/convert.h.
#pragma once

#include "compat/ascii_case.h"
#include "compat/win_types.h"

#include <cstdint>
#include <string>
#include <vector>

std::string format_message(const std::string& fmt, const std::string& a1);
std::string format_message(const std::string& fmt, const std::string& a1, const std::string& a2);
std::string format_message(const std::string& fmt, const std::string& a1, const std::string& a2,
                           const std::string& a3);
std::string format_message(const std::string& fmt, const std::string& a1, const std::string& a2,
                           const std::string& a3, const std::string& a4);
std::string format_message(const std::string& fmt, const std::vector<std::string>& args);
std::wstring format_message_w(const std::wstring& fmt, const std::wstring& a1);
std::wstring format_message_w(const std::wstring& fmt, const std::wstring& a1, const std::wstring& a2);

// For messages: a failure gives "UNICODE->ANSI failed" and "ANSI -> UNICODE failed." as the value.
std::string to_ansi_nothrow(const std::wstring& text) noexcept;
std::wstring to_unicode_nothrow(const std::string& text) noexcept;

std::string bool_to_string(bool value);
bool string_to_bool(const std::string& text);
std::string num_to_string(std::int32_t value);
std::string num_to_string(std::uint64_t value);
std::string hex_to_string(std::uint32_t value);

std::wstring guid_to_wstring(const GUID& guid);
std::string guid_to_string(const GUID& guid);
// Lower-case text, for comparisons without regard to case.
std::wstring to_lower(const std::wstring& text);
using compat::iequals;

std::string shorten_for_log(const std::string& text);

// 64-bit FILETIME of the local wall clock, now.
std::uint64_t local_filetime_now();
