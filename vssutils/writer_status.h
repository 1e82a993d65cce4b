// How the writers stand after a step of the backup: a failed writer means the shadow copy can't be trusted.
#pragma once

#include "vssutils/cancel_callbacks.h"
#include "vssutils/com.h"

#include <string>

namespace VSSUtils {

// True for the failed states (6 to 15), with the state's name; false for every other number.
bool FailedWriterStateName(int state, std::string& name);

// True when every writer was looked at and none has failed; false when the wait for the status was
// cancelled. The first failed writer throws. `probe` may be null.
bool VerifyWriters(BackupComponentsPtr components, ITestCancelCallback* probe, bool logEachWriter);

// VerifyWriters with each healthy writer logged, in a log block of its own.
bool CheckWritersStatus(BackupComponentsPtr components, ITestCancelCallback* probe);

} // namespace VSSUtils
