// Which provider serves which volume or share, as host.xml declares it, and the one VSS
// picks when the requester leaves the choice to it.
#pragma once

#include "hostsim/host.h"

namespace hostsim {

bool provider_supports(const provider_t& provider, const snapshot_target_t& target, bool transportable);

// Hardware first, then software, then the system, CSV and file share providers, as VSS
// prefers them; nothing if no provider supports the target.
const provider_t* default_provider(const host_model_t& model, const snapshot_target_t& target,
                                   bool transportable);

} // namespace hostsim
