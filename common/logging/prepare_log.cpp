#include "common/logging/prepare_log.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/logging/log_directory.h"
#include "common/logging/log_names.h"
#include "common/logging/log_platform.h"
#include "common/logging/log_rotation.h"
#include "common/logging/win_log_file.h"
#include "common/win/folder.h"

namespace logging::receiver {

namespace {

// A bare file name lies in the current folder, which is there already.
void create_folder(const std::string& folder) {
    if (!folder.empty())
        win::create_folder(platform::wide_log_path(folder));
}

// The folder of the log exists afterwards; a configured folder that cannot be made gives way to the
// fallback folder, with the same file name.
std::string path_in_usable_folder(const std::string& path) {
    try {
        create_folder(folder_of(path));
        return path;
    } catch (const std::exception&) {
        if (!lies_under_folder(path, to_utf8(log_directory())))
            throw;
    }
    const std::string fallback = to_utf8(fallback_log_directory());
    create_folder(fallback);
    return fallback + file_name_of(path);
}

std::string unlocked_name(const std::string& path) {
    for (int n = 0; n < numbered_names_tried; ++n) {
        const std::string candidate = n == 0 ? path : numbered_log_name(path, n);
        try {
            win::win_log_file_t probe(candidate);
            return candidate;
        } catch (const exc::file_locked_exc_t&) {
            // Another process writes there; try the next number.
        }
    }
    throw exc::runtime_exc_t("All log files are locked.");
}

} // namespace

std::shared_ptr<log_file_t> prepare_log(const std::string& path) {
    const std::string name = unlocked_name(path_in_usable_folder(path));
    const bool existed = win::path_exists(platform::wide_log_path(name));
    auto receiver = std::make_shared<win::win_log_file_t>(name);
    if (existed) {
        try {
            // An old log that stands at its limit is rotated before the first line.
            check_log_size(receiver);
        } catch (...) {
        }
    }
    return receiver;
}

} // namespace logging::receiver
