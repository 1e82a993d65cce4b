#include "common/logging/system_info.h"

#include "common/exc/exc.h"
#include "compat/win_types.h"

#include <vector>

namespace logging::platform {

std::string executable_module_path() {
    std::vector<char> buffer(MAX_PATH, '\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameA(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length == 0)
            throw exc::win_sys_exc_t("Fully-qualified path for the executable file cannot be retrieved.",
                                     ::GetLastError());
        if (length < buffer.size())
            return std::string(buffer.data(), length);
        buffer.resize(buffer.size() * 2);
    }
}

std::string module_version(const std::string& module_path) {
    try {
        DWORD ignored = 0;
        const DWORD size = ::GetFileVersionInfoSizeA(module_path.c_str(), &ignored);
        if (size == 0)
            throw exc::win_sys_exc_t("Size of the version resource is unknown.", ::GetLastError());
        std::vector<char> data(size);
        if (!::GetFileVersionInfoA(module_path.c_str(), 0, size, data.data()))
            throw exc::win_sys_exc_t("GetFileVersionInfo() function call has failed.", ::GetLastError());
        VS_FIXEDFILEINFO* info = nullptr;
        UINT length = 0;
        if (!::VerQueryValueA(data.data(), "\\", reinterpret_cast<void**>(&info), &length) || info == nullptr)
            throw exc::runtime_exc_t("Module version cannot be extracted from the version resource");
        return std::to_string(HIWORD(info->dwFileVersionMS)) + "." +
               std::to_string(LOWORD(info->dwFileVersionMS)) + "." +
               std::to_string(HIWORD(info->dwFileVersionLS)) + "." +
               std::to_string(LOWORD(info->dwFileVersionLS));
    } catch (const std::exception& e) {
        exc::rethrow_with_message("Cannot retrieve the version of the specified module. Module path: [%1].",
                                  module_path, e);
    }
}

os_version_t os_version() {
    OSVERSIONINFOA info{};
    info.dwOSVersionInfoSize = sizeof(info);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    if (!::GetVersionExA(&info))
        throw exc::win_sys_exc_t("Failed to retrieve OS version", ::GetLastError());
#pragma GCC diagnostic pop
    return os_version_t{std::to_string(info.dwMajorVersion) + "." + std::to_string(info.dwMinorVersion),
                        std::to_string(info.dwBuildNumber), info.szCSDVersion};
}

} // namespace logging::platform
