#include "common/exc/convert.h"
#include "common/logging/log_directory.h"

#include <cstdlib>

namespace logging::platform {

// There is no shell folder here; a machine names its own, and /var/tmp outlives a reboot.
std::wstring common_app_data_folder() {
    const char* folder = std::getenv("MIRRACK_DATA_DIR");
    return from_utf8(folder != nullptr && *folder != '\0' ? folder : "/var/tmp");
}

} // namespace logging::platform
