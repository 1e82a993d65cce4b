// Readable text for an HRESULT of VSS, from the platform's VSS message module.
#pragma once

#include "compat/win_types.h"

#include <string>

namespace VSSUtils {

// Never throws for a failed lookup: that gives "Vss error: '<code>'" and an error line in the log.
std::string VssErrorText(HRESULT code);

} // namespace VSSUtils
