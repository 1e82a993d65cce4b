// A fresh random identifier for each task the tool starts.
#pragma once

#include "compat/win_types.h"

namespace tool {

GUID NewSnapshotId();

} // namespace tool
