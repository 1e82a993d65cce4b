// How a task's worker publishes its verdict on the progress record, stamped with
// the local wall clock.
#pragma once

#include "snapshot/operation_info.h"

#include <exception>

namespace impl {

void ReportSuccess(COperationInfo& info);
// Every line of the exception goes into the error description.
void ReportFailure(COperationInfo& info, const std::exception& e);

} // namespace impl
