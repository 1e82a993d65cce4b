#include "vssutils/vss_error_text.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "vssutils/vss_message_module.h"

namespace VSSUtils {

namespace {

const char* const vss_message_module_name = "vsstrace.dll";

std::string code_only_text(HRESULT code) {
    return format_message("Vss error: '%1'", hex_to_string(static_cast<std::uint32_t>(code)));
}

void cut_closing_line_break(std::string& text) {
    if (text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0)
        text.erase(text.size() - 2);
}

} // namespace

std::string VssErrorText(HRESULT code) {
    detail::message_module_t module(vss_message_module_name);
    if (!module.loaded()) {
        log_error(logging::tool_logger(), "Failed to load library 'vsstrace.dll'. '%1' ",
                  exc::sys_error_text(module.load_error()));
        return code_only_text(code);
    }
    DWORD error = 0;
    std::optional<std::string> text = module.message(static_cast<DWORD>(code), error);
    if (!text) {
        log_error(logging::tool_logger(), "Failed to get Vss error description. '%1'",
                  exc::sys_error_text(error));
        return code_only_text(code);
    }
    cut_closing_line_break(*text);
    return *text;
}

} // namespace VSSUtils
