// What the start banner tells about the program and the machine.
#pragma once

#include <string>

namespace logging::platform {

struct os_version_t {
    std::string version; // major and minor, joined by a point
    std::string build;
    std::string description; // the service-pack text, or the system's own equivalent
};

// Each throws exc::win_sys_exc_t or exc::runtime_exc_t when the system does not answer.
std::string executable_module_path();
std::string module_version(const std::string& module_path);
os_version_t os_version();

} // namespace logging::platform
