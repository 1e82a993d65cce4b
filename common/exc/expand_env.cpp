// %NAME% expansion of a text; an unset name stays as the platform leaves it.
#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/env_expansion.h"
#include "common/format/format.h"

std::wstring expand_env(const std::wstring& text) {
    std::uint32_t error = 0;
    std::optional<std::wstring> expanded = format::expand_environment(text, error);
    if (!expanded)
        throw exc::win_sys_exc_t("Cannot expand environment variables for the specified string: [%1]",
                                 to_ansi_nothrow(text), error);
    return *expanded;
}
