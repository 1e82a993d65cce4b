// The host-wide lock of shadow-copy creation: VSS lets one creation run at a time on a
// system, whichever process or object asks. The lock is a record in state/, so that every
// process on the host sees it; a holder that died frees it.
#pragma once

#include "hostsim/state_store.h"

#include <optional>

namespace hostsim {

// Takes the lock for the set; false while another live creation holds it.
bool take_creation(const state_store_t& state, const GUID& set_id);
// Frees the lock if the set holds it.
void end_creation(const state_store_t& state, const GUID& set_id);
// The set whose creation this process runs, if any. The caller holds the state's lock.
std::optional<GUID> creation_of_this_process(const state_store_t& state);

} // namespace hostsim
