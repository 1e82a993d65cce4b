// The backup state of cluster shared volumes, as the cluster keeps it: it belongs to the
// volume, not to the file through which it was asked for. Preparing any path prepares the
// volume; clearing it clears it for every job on the host; and the end of the job that
// prepared it (BackupComplete, or the release of its object) ends it too.
#pragma once

#include "hostsim/state_store.h"

namespace hostsim {

// The preparation belongs to the creation that this process runs, if any.
void prepare_csv_volume(const state_store_t& state, const std::wstring& volume_name,
                        const std::wstring& path);
// Whatever prepared it; the journal names the jobs that lost their preparation.
void clear_csv_volume(const state_store_t& state, const std::wstring& volume_name);
// The job of the set has ended: every volume it prepared leaves the backup state.
void end_csv_backup_state(const state_store_t& state, const GUID& set_id);
// The sweep of a dead requester: a volume that only dead processes prepared leaves the backup
// state, as the cluster ends it when the job's requester goes away. The journal names them.
void end_csv_backup_states_of_dead_processes(const state_store_t& state);
// Does a creation other than the set's hold the volume (it prepared it and is still running)?
bool csv_volume_held_elsewhere(const state_store_t& state, const std::wstring& volume_name,
                               const GUID& set_id);

} // namespace hostsim
