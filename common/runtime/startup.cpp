#include "common/runtime/startup.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/command_line.h"
#include "common/logging/debug_receiver_setup.h"
#include "common/logging/log.h"
#include "common/logging/log_directory.h"
#include "common/logging/log_install.h"
#include "common/logging/log_platform.h"
#include "common/logging/system_info.h"
#include "common/runtime/common_lib_ctx.h"

#include <atomic>
#include <optional>

namespace runtime {

namespace {

std::atomic<bool> verbose_flag{false};

// The index of the token that equals name without regard to case.
std::optional<std::size_t> find_token(const std::vector<std::wstring>& arguments, const std::wstring& name) {
    for (std::size_t i = 0; i < arguments.size(); ++i)
        if (iequals(arguments[i], name))
            return i;
    return std::nullopt;
}

std::vector<std::wstring> command_line_arguments() {
    return exc::traced("Failed to parse command line",
                       [&] { return logging::platform::process_arguments(); });
}

void log_module_lines(const logging::logger_t& h) {
    std::string module_path;
    try {
        module_path = logging::platform::executable_module_path();
        log_info(h, "Path to the executable module:%1", module_path);
    } catch (const std::exception& e) {
        log_exception(h, e);
    }
    try {
        log_info(h, "Module version:%1", logging::platform::module_version(module_path));
    } catch (const std::exception& e) {
        log_exception(h, e);
    }
}

void log_os_lines(const logging::logger_t& h) {
    try {
        const logging::platform::os_version_t os = logging::platform::os_version();
        log_info(h, "OS version: %1", os.version);
        log_info(h, "OS build: %1", os.build);
        log_info(h, "OS description: %1", os.description);
    } catch (const std::exception& e) {
        log_exception(h, e);
    }
}

void write_banner() {
    const logging::logger_t& h = logging::startup_logger();
    log_info(h, "");
    log_info(h, std::string(77, '='));
    log_info(h, "{");
    log_indent_in(h);
    log_module_lines(h);
    log_os_lines(h);
    log_indent_out(h);
    log_info(h, "}");
}

} // namespace

std::wstring log_path_from_arguments(const std::wstring& default_log_name,
                                     const std::vector<std::wstring>& arguments) {
    // The token may stand anywhere; the tool's own parser has to tolerate it.
    if (auto at = find_token(arguments, L"-log"); at && *at + 1 < arguments.size())
        return arguments[*at + 1];
    return logging::log_directory() + L"\\" + default_log_name;
}

std::string start_common_library(const std::string& default_log_name) {
    return start_common_library(default_log_name, command_line_arguments());
}

std::string start_common_library(const std::string& default_log_name,
                                 const std::vector<std::wstring>& arguments) {
    const std::wstring path = log_path_from_arguments(to_unicode(default_log_name), arguments);
    verbose_flag = find_token(arguments, L"-verbose").has_value();
    const std::string narrow_path = logging::platform::narrow_log_path(path);
    // The context is made after the handles and so ends before them, with its last line in the log.
    CCommonLibCtx::get();
    logging::install_log(narrow_path);
    logging::install_debug_log();
    write_banner();
    return narrow_path;
}

bool verbose_requested() {
    return verbose_flag;
}

} // namespace runtime
