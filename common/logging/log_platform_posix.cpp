#include "common/logging/log_platform.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/errno_posix.h"
#include "common/win/local_path.h"
#include "common/win/native_name_posix.h"

#include <cerrno>

namespace logging::platform {

bool local_time(std::time_t moment, std::tm& result) {
    return ::localtime_r(&moment, &result) != nullptr;
}

std::uint32_t last_error_code() {
    return win::win32_error_from_errno(errno);
}

std::string narrow_log_path(const std::wstring& path) {
    return win::native_name_bytes(path);
}

std::wstring wide_log_path(const std::string& path) {
    return win::wide_from_name_bytes(path);
}

std::filesystem::path native_path(const std::string& path) {
    auto local = win::local_path(wide_log_path(path));
    if (!local)
        throw exc::win_sys_exc_t(ERROR_PATH_NOT_FOUND);
    return *local;
}

gzFile open_gz(const std::string& path, const char* mode) {
    return ::gzopen(native_path(path).c_str(), mode);
}

} // namespace logging::platform
