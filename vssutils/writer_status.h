// How the writers stand after a step of the backup: a failed writer means the shadow copy can't be trusted.
#pragma once

#include "vssutils/cancel_callbacks.h"
#include "vssutils/com.h"

#include <string>

namespace VSSUtils {

// The state's name for the failed states (6 to 15); null for every other number.
const char* FailedWriterStateName(int state);

// True when every writer was looked at and none has failed; false when the wait for the status was
// cancelled. The first failed writer throws. `probe` may be null.
bool VerifyWriters(BackupComponentsPtr components, ITestCancelCallback* probe, bool logEachWriter);

// VerifyWriters with each healthy writer logged, in a log block of its own.
bool CheckWritersStatus(BackupComponentsPtr components, ITestCancelCallback* probe);

} // namespace VSSUtils
