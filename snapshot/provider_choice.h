// Which VSS provider snapshots a volume: the specification's entry for the mount
// point, or its default; the system, file share and CSV providers by their fixed
// ids, the others by the id the specification gives.
#pragma once

#include "compat/win_types.h"

#include <string>

class CHvBackupSpec;

namespace impl {

extern const GUID SystemProviderId;
extern const GUID FileShareProviderId;
extern const GUID CsvProviderId;

// Logs the choice. The nil GUID leaves the choice to VSS.
GUID ChooseProvider(const CHvBackupSpec& specification, const std::wstring& mountPoint);

} // namespace impl
