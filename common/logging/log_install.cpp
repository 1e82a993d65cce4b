#include "common/logging/log_install.h"

#include "common/format/format.h"
#include "common/logging/log_file_receiver.h"
#include "common/logging/log_t.h"
#include "common/logging/prepare_log.h"

#include <iostream>

namespace logging {

bool install_log(const std::string& path) {
    std::cout << "LOG: Initializing log file ..." << std::endl;
    std::shared_ptr<receiver::log_file_t> file;
    try {
        file = receiver::prepare_log(path);
    } catch (...) {
        std::cout << format_message("Failed to initialize log [%1].", path) << std::endl;
        return false;
    }
    main_log()->install(std::move(file), true);
    return true;
}

std::string install_log_file(const std::string& path) {
    auto file = receiver::prepare_log(path);
    const std::string taken = file->path();
    main_log()->install(std::move(file), true);
    return taken;
}

} // namespace logging
