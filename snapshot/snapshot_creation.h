// From a filled snapshot set to a snapshot that stands: the writers prepare, are
// checked, the snapshot is taken, they are checked again. Setting the cancel
// event stops either wait and fails the creation.
#pragma once

#include "vssutils/com.h"

#include <memory>

namespace win {
class win_manual_reset_event_t;
}

namespace impl {

void CreateSnapshot(VSSUtils::BackupComponentsPtr components,
                    const std::shared_ptr<win::win_manual_reset_event_t>& cancelEvent);

} // namespace impl
