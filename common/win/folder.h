// Existence checks and folder creation. Errors 2 and 3 are the quiet answer
// "not there"; anything else is a failure.
#pragma once

#include <string>

namespace win {

// True for any entry at the path, file or directory; is_folder tells which.
bool path_exists(const std::wstring& path, bool& is_folder);
bool path_exists(const std::wstring& path);

// True when a directory is at the path. Throws exc::win_sys_exc_t "Failed to
// check whether folder '%1' exists." for errors other than 2 and 3.
bool folder_exists(const std::wstring& path);
bool folder_exists(const std::string& utf8_path);

// Creates the folder with all its parents. A drive ("C:") is left alone.
// Failures are wrapped by "Cannot create folder. Folder path: [%1].".
void create_folder(const std::wstring& path);

} // namespace win
