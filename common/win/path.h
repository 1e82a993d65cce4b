// Path text. Backslash and slash are both separators here, and nothing in
// this header touches the file system.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace win {

bool is_path_separator(wchar_t c) noexcept;

// At the last separator: the text in front of it and the text behind it. A
// path without a separator has an empty parent and is all name.
std::pair<std::wstring, std::wstring> split_path(const std::wstring& path);
std::wstring parent_path(const std::wstring& path);

// The pieces between separators, in order, empty pieces left out.
std::vector<std::wstring> path_components(const std::wstring& path);

// Empty parts are skipped; one closing separator is taken off each part, and
// one backslash goes between parts.
std::wstring path_join(const std::wstring& a, const std::wstring& b);
std::wstring path_join(const std::wstring& a, const std::wstring& b, const std::wstring& c);

// The path without its closing backslashes (and slashes).
std::wstring strip_trailing_separators(const std::wstring& path);

// "\\server\share\..." (not "\\?\..." or "\\.\...").
bool is_unc_share_path(const std::wstring& path);

// A file-system root: "C:", "C:\", "\\?\Volume{...}\", "\\server\share\",
// "\\?\GLOBALROOT\Device\X\", "/".
bool is_root_path(const std::wstring& path);

} // namespace win
