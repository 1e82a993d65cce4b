#include "snapshot/operation_report.h"

#include "common/exc/exc.h"
#include "common/format/format.h"

namespace impl {

void ReportSuccess(COperationInfo& info) {
    info.MarkSucceeded(local_filetime_now());
}

void ReportFailure(COperationInfo& info, const std::exception& e) {
    info.MarkFailed(to_unicode_nothrow(exc::exception_text(e)), local_filetime_now());
}

} // namespace impl
