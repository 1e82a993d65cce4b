#include "common/win/file_search.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/file_system_os.h"
#include "common/win/last_error.h"

namespace win {

namespace detail {

DWORD find_first_with_retry(const std::wstring& path, os_search_t& search, find_data_t& entry) {
    const DWORD first_error = search.first(path, entry);
    if (!is_not_there(first_error))
        return first_error;
    std::wstring converted;
    try {
        converted = from_utf8(to_ansi_nothrow(path));
    } catch (const std::exception&) {
        return first_error;
    }
    // The same text cannot find anything new.
    if (converted.empty() || converted == path)
        return first_error;
    search.close();
    if (search.first(converted, entry) == ERROR_SUCCESS)
        return ERROR_SUCCESS;
    search.close();
    return first_error;
}

} // namespace detail

win_file_search_t::win_file_search_t() = default;

win_file_search_t::win_file_search_t(const std::wstring& mask)
    : mask_(mask), search_(std::make_unique<detail::os_search_t>()) {
    const DWORD error = detail::find_first_with_retry(mask_, *search_, current_);
    if (error == ERROR_SUCCESS) {
        found_ = true;
        return;
    }
    search_->close();
    if (!is_not_there(error))
        throw exc::win_sys_exc_t(file_search_failed_text, to_ansi_nothrow(mask_), error);
}

win_file_search_t::~win_file_search_t() {
    close();
}
win_file_search_t::win_file_search_t(win_file_search_t&&) noexcept = default;
win_file_search_t& win_file_search_t::operator=(win_file_search_t&&) noexcept = default;

bool win_file_search_t::next() {
    if (!found_ || !search_)
        return false;
    const DWORD error = search_->next(current_);
    if (error == ERROR_SUCCESS)
        return true;
    close();
    if (error == ERROR_NO_MORE_FILES)
        return false;
    throw exc::win_sys_exc_t(file_search_failed_text, to_ansi_nothrow(mask_), error);
}

void win_file_search_t::close() noexcept {
    found_ = false;
    if (search_)
        search_->close();
}

} // namespace win
