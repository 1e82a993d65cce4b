// The folder of the log file: a machine setting, else a folder under the common application data.
#pragma once

#include <string>

namespace logging {

// LogDirectory of SOFTWARE\Orlix\Orlix Keepsafe when it is set, else the fallback folder.
std::wstring log_directory();

// The common application data folder followed by "\Orlix\Backup\".
std::wstring fallback_log_directory();

namespace platform {
std::wstring common_app_data_folder();
}

} // namespace logging
