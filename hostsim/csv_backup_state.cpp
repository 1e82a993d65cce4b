#include "hostsim/csv_backup_state.h"

#include "hostsim/creation_lock.h"
#include "hostsim/wide_text.h"

#include <algorithm>

namespace hostsim {

namespace {

std::vector<csv_state_t>::iterator find_volume(std::vector<csv_state_t>& volumes, const std::wstring& name) {
    return std::find_if(volumes.begin(), volumes.end(),
                        [&](const csv_state_t& v) { return iequals(v.volume_name, name); });
}

std::wstring sets_of(const csv_state_t& volume) {
    std::wstring sets;
    for (auto& p : volume.preparations)
        if (sets.find(guid_text(p.set_id)) == std::wstring::npos)
            sets += (sets.empty() ? L"" : L";") + guid_text(p.set_id);
    return sets;
}

std::wstring owners_of(const csv_state_t& volume) {
    std::wstring owners;
    for (auto& p : volume.preparations) {
        const std::wstring pid = std::to_wstring(p.owner.pid);
        if ((L";" + owners + L";").find(L";" + pid + L";") == std::wstring::npos)
            owners += (owners.empty() ? L"" : L";") + pid;
    }
    return owners;
}

} // namespace

void prepare_csv_volume(const state_store_t& state, const std::wstring& volume_name,
                        const std::wstring& path) {
    auto lock = state.lock();
    const GUID job = creation_of_this_process(state).value_or(GUID_NULL);
    const process_identity_t self = this_process();
    auto volumes = state.csv_volumes();
    auto volume = find_volume(volumes, volume_name);
    if (volume == volumes.end())
        volume = volumes.insert(volumes.end(), {volume_name, {}});
    auto& preparations = volume->preparations;
    if (std::none_of(preparations.begin(), preparations.end(), [&](const csv_preparation_t& p) {
            return p.set_id == job && p.owner.pid == self.pid && iequals(p.path, path);
        }))
        preparations.push_back({job, self, path});
    state.save_csv_volumes(volumes);
}

void clear_csv_volume(const state_store_t& state, const std::wstring& volume_name) {
    auto lock = state.lock();
    auto volumes = state.csv_volumes();
    auto volume = find_volume(volumes, volume_name);
    if (volume == volumes.end())
        return;
    state.journal("CsvBackupStateCleared", {volume_name, sets_of(*volume)});
    volumes.erase(volume);
    state.save_csv_volumes(volumes);
}

// Each volume that leaves the backup state is journalled as it goes.
void end_csv_backup_state(const state_store_t& state, const GUID& set_id) {
    auto lock = state.lock();
    auto volumes = state.csv_volumes();
    if (std::erase_if(volumes, [&](const csv_state_t& v) {
            const bool ended = std::any_of(v.preparations.begin(), v.preparations.end(),
                                           [&](const csv_preparation_t& p) { return p.set_id == set_id; });
            if (ended)
                state.journal("CsvBackupStateEnded", {v.volume_name, guid_text(set_id)});
            return ended;
        }))
        state.save_csv_volumes(volumes);
}

void end_csv_backup_states_of_dead_processes(const state_store_t& state) {
    auto lock = state.lock();
    auto volumes = state.csv_volumes();
    if (std::erase_if(volumes, [&](const csv_state_t& v) {
            const bool abandoned = std::none_of(v.preparations.begin(), v.preparations.end(),
                                                [](const csv_preparation_t& p) { return is_alive(p.owner); });
            if (abandoned)
                state.journal("RemoveAbandonedCsvBackupState",
                              {v.volume_name, sets_of(v), L"owner " + owners_of(v) + L" is gone"});
            return abandoned;
        }))
        state.save_csv_volumes(volumes);
}

bool csv_volume_held_elsewhere(const state_store_t& state, const std::wstring& volume_name,
                               const GUID& set_id) {
    auto lock = state.lock();
    auto volumes = state.csv_volumes();
    auto volume = find_volume(volumes, volume_name);
    if (volume == volumes.end())
        return false;
    auto creations = state.live_creations();
    return std::any_of(
        volume->preparations.begin(), volume->preparations.end(), [&](const csv_preparation_t& p) {
            return p.set_id != set_id &&
                   std::any_of(creations.begin(), creations.end(),
                               [&](const creation_record_t& c) { return c.set_id == p.set_id; });
        });
}

} // namespace hostsim
