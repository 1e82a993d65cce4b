// Without the platform's message module, the texts are the simulated host's, which can fail the
// load or the lookup like any other Win32 call.
#include "vssutils/vss_message_module.h"

#include "hostsim/host_access.h"

namespace VSSUtils::detail {

namespace {

// ERROR_MR_MID_NOT_FOUND: the module has no text for that message id.
const DWORD message_id_not_found = 317;

// Any non-null value marks the table as loaded.
int loaded_marker;

} // namespace

message_module_t::message_module_t(const char* name) {
    std::wstring wide_name(name, name + std::char_traits<char>::length(name));
    if (auto error = hostsim::win32_call("LoadLibraryA", wide_name))
        load_error_ = *error;
    else
        handle_ = &loaded_marker;
}

message_module_t::~message_module_t() = default;

std::optional<std::string> message_module_t::message(DWORD message_id, DWORD& error) const {
    if (auto injected = hostsim::win32_call("FormatMessageA", std::to_wstring(message_id))) {
        error = *injected;
        return std::nullopt;
    }
    std::optional<std::string> text = hostsim::vss_message(message_id);
    if (!text)
        error = message_id_not_found;
    return text;
}

} // namespace VSSUtils::detail
