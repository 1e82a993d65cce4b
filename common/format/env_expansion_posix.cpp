// %NAME% is looked up in the simulated host's environment first, then in the process's.
// Scanning follows the system's rule: a name that is not found is copied with both of its
// percent signs and scanning goes on behind them.
#include "common/format/codepage.h"
#include "common/format/env_expansion.h"
#include "hostsim/host_access.h"

#include <cstdlib>
#include <string_view>

namespace format {

namespace {

// The value of a name, nullopt when it has none; a value that cannot be widened leaves the
// platform's code in `error`.
std::optional<std::wstring> variable_value(const std::wstring& name, std::uint32_t& error) {
    if (auto value = hostsim::environment_variable(name))
        return value;
    std::uint32_t ignored = 0;
    const std::optional<std::string> narrow_name = narrow_up_to_zero(code_page_t::utf8, name, ignored);
    const char* value = narrow_name ? std::getenv(narrow_name->c_str()) : nullptr;
    if (value == nullptr)
        return std::nullopt;
    return widen_up_to_zero(code_page_t::utf8, value, error);
}

std::optional<std::wstring> expand_names(std::wstring_view text, std::uint32_t& error) {
    std::wstring out;
    std::size_t pos = 0;
    while (pos < text.size()) {
        const std::size_t open = text.find(L'%', pos);
        const std::size_t close = open == std::wstring_view::npos ? open : text.find(L'%', open + 1);
        if (close == std::wstring_view::npos) {
            out.append(text.substr(pos));
            break;
        }
        out.append(text.substr(pos, open - pos));
        const std::wstring name(text.substr(open + 1, close - open - 1));
        const std::optional<std::wstring> value = name.empty() ? std::nullopt : variable_value(name, error);
        if (error != 0)
            return std::nullopt;
        out.append(value ? std::wstring_view(*value) : text.substr(open, close - open + 1));
        pos = close + 1;
    }
    return out;
}

} // namespace

std::optional<std::wstring> expand_environment(const std::wstring& text, std::uint32_t& error) {
    if (auto injected = hostsim::win32_call("ExpandEnvironmentStringsW", text)) {
        error = *injected;
        return std::nullopt;
    }
    error = 0;
    return expand_names(std::wstring_view(text.c_str()), error);
}

} // namespace format
