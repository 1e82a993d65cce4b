// The file search that never fails to open: the primitive's failure to start
// becomes a warning in the log and an empty search.
#pragma once

#include "common/win/file_search.h"

namespace runtime {

win::win_file_search_t search_or_warn(const std::wstring& mask);

} // namespace runtime
