#include "common/runtime/search_or_warn.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"

namespace runtime {

win::win_file_search_t search_or_warn(const std::wstring& mask) {
    try {
        return win::win_file_search_t(mask);
    } catch (const exc::win_sys_exc_t& e) {
        // The system's text alone goes with the warning, which names the mask itself.
        log_warning_exception(logging::lib_logger(),
                              format_message(win::file_search_failed_text, to_ansi_nothrow(mask)),
                              exc::win_sys_exc_t(e.code()));
        return win::win_file_search_t();
    }
}

} // namespace runtime
