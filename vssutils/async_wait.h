// Waiting for a VSS asynchronous operation by polling, so that a stop request is seen between polls.
#pragma once

#include "vssutils/cancel_callbacks.h"
#include "vssutils/com.h"

#include <string>

namespace VSSUtils {

// Interval between two polls of an operation, and between two looks at the probe.
const unsigned AsyncPollIntervalMs = 250;

// True when the operation finished; false when it was cancelled, by the probe (then VSS is asked to
// cancel and the operation isn't looked at again) or by VSS itself. `probe` may be null.
// Any other end of the operation throws with unknownStatusText and the VSS error text of its status.
bool WaitAsyncOperation(AsyncPtr async, ITestCancelCallback* probe, const std::string& waitText,
                        const std::string& unknownStatusText);

// WaitAsyncOperation with the generic texts.
bool WaitForAsync(AsyncPtr async, ITestCancelCallback* probe);

} // namespace VSSUtils
