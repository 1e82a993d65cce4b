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
    auto volumes = state.csv_volumes();
    auto volume = find_volume(volumes, volume_name);
    if (volume == volumes.end())
        volume = volumes.insert(volumes.end(), {volume_name, {}});
    auto& preparations = volume->preparations;
    if (std::none_of(preparations.begin(), preparations.end(), [&](const csv_preparation_t& p) {
            return p.set_id == job && p.owner.pid == this_process().pid && iequals(p.path, path);
        }))
        preparations.push_back({job, this_process(), path});
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

void end_csv_backup_state(const state_store_t& state, const GUID& set_id) {
    auto lock = state.lock();
    auto volumes = state.csv_volumes();
    auto ended = std::stable_partition(volumes.begin(), volumes.end(), [&](const csv_state_t& v) {
        return std::none_of(v.preparations.begin(), v.preparations.end(),
                            [&](const csv_preparation_t& p) { return p.set_id == set_id; });
    });
    if (ended == volumes.end())
        return;
    for (auto it = ended; it != volumes.end(); ++it)
        state.journal("CsvBackupStateEnded", {it->volume_name, guid_text(set_id)});
    volumes.erase(ended, volumes.end());
    state.save_csv_volumes(volumes);
}

void end_csv_backup_states_of_dead_processes(const state_store_t& state) {
    auto lock = state.lock();
    auto volumes = state.csv_volumes();
    auto abandoned = std::stable_partition(volumes.begin(), volumes.end(), [](const csv_state_t& v) {
        return std::any_of(v.preparations.begin(), v.preparations.end(),
                           [](const csv_preparation_t& p) { return is_alive(p.owner); });
    });
    if (abandoned == volumes.end())
        return;
    for (auto it = abandoned; it != volumes.end(); ++it)
        state.journal("RemoveAbandonedCsvBackupState",
                      {it->volume_name, sets_of(*it), L"owner " + owners_of(*it) + L" is gone"});
    volumes.erase(abandoned, volumes.end());
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
