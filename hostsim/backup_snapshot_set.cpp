// The snapshot set of the simulated backup components: volumes and providers, the
// point-in-time copies of DoSnapshotSet, their properties, their import on another host
// and their end when the object is released.
#include "hostsim/backup_components.h"

#include "hostsim/creation_lock.h"
#include "hostsim/csv_backup_state.h"
#include "hostsim/point_in_time_copy.h"
#include "hostsim/provider_choice.h"
#include "hostsim/wide_text.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace hostsim {

namespace fs = std::filesystem;

namespace {

const std::size_t max_volumes_in_set = 64;

// Volume names and share paths are taken only in their full form, with the closing backslash.
bool names_a_volume(const wchar_t* name) {
    return name && *name && name[std::wcslen(name) - 1] == L'\\';
}

// A property that has no value is a null string, not an empty one.
VSS_PWSZ new_property_string(const std::wstring& text) {
    return text.empty() ? nullptr : new_task_string(text);
}

std::int32_t snapshot_attributes(LONG context, const provider_t& provider, const snapshot_target_t& target) {
    std::int32_t attributes = context == VSS_CTX_ALL ? 0 : context;
    if (provider.kind == provider_kind::hardware)
        attributes |= VSS_VOLSNAP_ATTR_HARDWARE_ASSISTED;
    if (target.share)
        attributes |= VSS_VOLSNAP_ATTR_FILE_SHARE;
    return attributes;
}

// Moves a shadow copy's folder, across file systems by copying.
bool move_shadow_data(const fs::path& from, const fs::path& to) {
    std::error_code ec;
    fs::rename(from, to, ec);
    if (!ec)
        return true;
    if (copy_tree_point_in_time(from, to))
        return false;
    fs::remove_all(from, ec);
    return true;
}

// Records a shadow copy of the set as this process's; the caller holds the state's lock.
void record_owned(const state_store_t& state, const set_snapshot_t& info, const VSS_ID& set_id) {
    auto records = state.shadows();
    records.push_back({info.number, info.snapshot_id, set_id, info.provider_id, info.volume_name,
                       this_process(), info.attributes, info.created, info.machine});
    state.save_shadows(records);
}

} // namespace

HRESULT backup_components_t::StartSnapshotSet(VSS_ID* pSnapshotSetId) {
    if (HRESULT hr = host_->refuse("StartSnapshotSet", {}, pSnapshotSetId))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ == origin::none)
        return VSS_E_BAD_STATE;
    if (doc_.set_id)
        return VSS_E_SNAPSHOT_SET_IN_PROGRESS;
    const GUID set_id = new_guid();
    if (const state_store_t* state = host_->state()) {
        if (!take_creation(*state, set_id))
            return VSS_E_SNAPSHOT_SET_IN_PROGRESS;
        holds_creation_ = true;
    }
    doc_.set_id = set_id;
    *pSnapshotSetId = *doc_.set_id;
    return S_OK;
}

HRESULT backup_components_t::IsVolumeSupported(VSS_ID ProviderId, VSS_PWSZ pwszVolumeName,
                                               BOOL* pbSupportedByThisProvider) {
    const std::wstring volume = text_or_empty(pwszVolumeName);
    if (HRESULT hr = host_->refuse("IsVolumeSupported", {volume, guid_text(ProviderId)},
                                   names_a_volume(pwszVolumeName) && pbSupportedByThisProvider))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ == origin::none)
        return VSS_E_BAD_STATE;
    auto target = host_->find_target(volume);
    if (!target)
        return VSS_E_OBJECT_NOT_FOUND;
    if (ProviderId == GUID_NULL) {
        *pbSupportedByThisProvider =
            default_provider(host_->model(), target, transportable_context()) != nullptr;
        return S_OK;
    }
    const provider_t* provider = host_->find_provider(ProviderId);
    if (!provider)
        return VSS_E_PROVIDER_NOT_REGISTERED;
    bool refused = host_->faults().count_provider_answer(ProviderId) <= provider->refuse;
    *pbSupportedByThisProvider = !refused && provider_supports(*provider, target, transportable_context());
    return S_OK;
}

HRESULT backup_components_t::AddToSnapshotSet(VSS_PWSZ pwszVolumeName, VSS_ID ProviderId,
                                              VSS_ID* pidSnapshot) {
    const std::wstring volume = text_or_empty(pwszVolumeName);
    if (HRESULT hr = host_->refuse("AddToSnapshotSet", {volume, guid_text(ProviderId)},
                                   names_a_volume(pwszVolumeName) && pidSnapshot))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ != origin::fresh || !doc_.set_id || snapshot_requested_)
        return VSS_E_BAD_STATE;
    if (snapshots_.size() >= max_volumes_in_set)
        return VSS_E_MAXIMUM_NUMBER_OF_VOLUMES_REACHED;
    auto target = host_->find_target(volume);
    if (!target)
        return VSS_E_OBJECT_NOT_FOUND;
    if (target.volume && target.volume->csv && host_->state() &&
        csv_volume_held_elsewhere(*host_->state(), target.volume->name, *doc_.set_id))
        return VSS_E_SNAPSHOT_SET_IN_PROGRESS;
    const provider_t* provider = nullptr;
    if (ProviderId != GUID_NULL) {
        provider = host_->find_provider(ProviderId);
        if (!provider)
            return VSS_E_PROVIDER_NOT_REGISTERED;
    }
    for (auto& s : snapshots_)
        if (s.target.same_as(target))
            return VSS_E_OBJECT_ALREADY_EXISTS;
    if (!provider) {
        provider = default_provider(host_->model(), target, transportable_context());
        if (!provider)
            return VSS_E_VOLUME_NOT_SUPPORTED;
    } else if (!provider_supports(*provider, target, transportable_context())) {
        return VSS_E_VOLUME_NOT_SUPPORTED_BY_PROVIDER;
    }
    const set_snapshot_t info{new_guid(),
                              provider->id,
                              target.unique_name(),
                              0,
                              snapshot_attributes(doc_.context, *provider, target),
                              0,
                              host_->model().name};
    snapshots_.push_back({info, target, false});
    *pidSnapshot = info.snapshot_id;
    return S_OK;
}

bool backup_components_t::make_shadow_copy(snapshot_t& s) {
    const state_store_t* state = host_->state();
    if (!state)
        return false;
    s.info.created = filetime_now();
    {
        auto lock = state->lock();
        s.info.number = state->allocate_shadow_number();
        record_owned(*state, s.info, *doc_.set_id);
    }
    s.owned = true;
    return !copy_tree_point_in_time(s.target.data_dir(), state->shadow_dir(s.info.number),
                                    host_->dir() / "state");
}

HRESULT backup_components_t::DoSnapshotSet(IVssAsync** ppAsync) {
    auto outcome = host_->enter("DoSnapshotSet", {doc_.set_id ? guid_text(*doc_.set_id) : L""});
    if (HRESULT hr = refusal(outcome, ppAsync))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ != origin::fresh || !doc_.set_id || !prepared_ || snapshot_requested_ || aborted_)
        return VSS_E_BAD_STATE;
    snapshot_requested_ = true;
    // The copies are taken now, at the call: what changes later is not in them.
    for (auto& s : snapshots_)
        if (!make_shadow_copy(s) && SUCCEEDED(outcome.status.value_or(S_OK)))
            outcome.status = VSS_E_UNEXPECTED_PROVIDER_ERROR;
    return start(
        "DoSnapshotSet", outcome, ppAsync, [this](HRESULT planned) { return finish_snapshot_set(planned); },
        [this] {
            end_creation_if_held();
            end_owned_snapshots(false);
        });
}

HRESULT backup_components_t::finish_snapshot_set(HRESULT planned) {
    end_creation_if_held();
    if (FAILED(planned)) {
        end_owned_snapshots(false);
        return planned;
    }
    snapshot_done_ = true;
    writer_states_.pass(writer_phase::snapshot);
    return planned;
}

void backup_components_t::end_owned_snapshots(bool released) {
    const state_store_t* state = host_->state();
    if (!state ||
        std::none_of(snapshots_.begin(), snapshots_.end(), [](const snapshot_t& s) { return s.owned; }))
        return;
    auto lock = state->lock();
    auto records = state->shadows();
    for (auto& s : snapshots_) {
        if (!s.owned)
            continue;
        // A transportable copy made here outlives the object and waits for its import.
        if (released && origin_ == origin::fresh && (s.info.attributes & VSS_VOLSNAP_ATTR_TRANSPORTABLE)) {
            for (auto& r : records)
                if (r.number == s.info.number)
                    r.owner = {};
            continue;
        }
        state->remove_shadow_data(s.info.number);
        std::erase_if(records, [&](const shadow_record_t& r) { return r.number == s.info.number; });
        s.owned = false;
        s.info.number = 0;
    }
    state->save_shadows(records);
}

void backup_components_t::fill_properties(const set_snapshot_t& info, VSS_SNAPSHOT_PROP& prop) const {
    prop = VSS_SNAPSHOT_PROP{};
    prop.m_SnapshotId = info.snapshot_id;
    prop.m_SnapshotSetId = doc_.set_id.value_or(GUID_NULL);
    prop.m_lSnapshotsCount = static_cast<LONG>(snapshots_.size());
    prop.m_pwszSnapshotDeviceObject =
        new_property_string(std::wstring(shadow_device_prefix) + std::to_wstring(info.number));
    prop.m_pwszOriginalVolumeName = new_property_string(info.volume_name);
    prop.m_pwszOriginatingMachine = new_property_string(info.machine);
    prop.m_pwszServiceMachine = new_property_string(host_->model().name);
    prop.m_ProviderId = info.provider_id;
    prop.m_lSnapshotAttributes = info.attributes;
    prop.m_tsCreationTimestamp = info.created;
    prop.m_eStatus = VSS_SS_CREATED;
}

HRESULT backup_components_t::GetSnapshotProperties(VSS_ID SnapshotId, VSS_SNAPSHOT_PROP* pProp) {
    if (HRESULT hr = host_->refuse("GetSnapshotProperties", {guid_text(SnapshotId)}, pProp))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ == origin::none)
        return VSS_E_BAD_STATE;
    for (auto& s : snapshots_) {
        if (s.info.snapshot_id == SnapshotId && s.owned && (snapshot_done_ || origin_ == origin::document)) {
            fill_properties(s.info, *pProp);
            return S_OK;
        }
    }
    // Any live shadow copy of the host can be asked for, as on Windows.
    if (const state_store_t* state = host_->state()) {
        auto lock = state->lock();
        for (auto& r : state->shadows()) {
            if (r.snapshot_id == SnapshotId) {
                fill_properties({r.snapshot_id, r.provider_id, r.volume_name, r.number, r.attributes,
                                 r.created, r.machine},
                                *pProp);
                pProp->m_SnapshotSetId = r.set_id;
                return S_OK;
            }
        }
    }
    return VSS_E_OBJECT_NOT_FOUND;
}

HRESULT backup_components_t::ImportSnapshots(IVssAsync** ppAsync) {
    const auto outcome = host_->enter("ImportSnapshots", {doc_.set_id ? guid_text(*doc_.set_id) : L""});
    if (HRESULT hr = refusal(outcome, ppAsync))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ != origin::document || !doc_.set_id || import_requested_ || !host_->state())
        return VSS_E_BAD_STATE;
    import_requested_ = true;
    return start("ImportSnapshots", outcome, ppAsync,
                 [this](HRESULT planned) { return finish_import(planned); });
}

// Takes each transportable copy of the set away from the host that made it (which may be
// this one) and makes it a shadow copy of this host, owned by this object.
HRESULT backup_components_t::finish_import(HRESULT planned) {
    if (FAILED(planned))
        return planned;
    const state_store_t& here = *host_->state();
    std::error_code ec;
    const bool same_host = fs::equivalent(doc_.host_dir, host_->dir(), ec);
    std::unique_ptr<state_store_t> other;
    if (!same_host)
        other = std::make_unique<state_store_t>(doc_.host_dir);
    const state_store_t& source = same_host ? here : *other;

    std::size_t wanted = 0, imported = 0;
    for (auto& s : snapshots_) {
        if (!(s.info.attributes & VSS_VOLSNAP_ATTR_TRANSPORTABLE))
            continue;
        ++wanted;
        const fs::path staging =
            host_->dir() / "state" / "shadows" /
            (".incoming-" + std::to_string(getpid()) + "-" + std::to_string(s.info.number));
        {
            auto lock = source.lock();
            auto records = source.shadows();
            auto found = std::find_if(records.begin(), records.end(), [&](const shadow_record_t& r) {
                return r.snapshot_id == s.info.snapshot_id;
            });
            if (found == records.end() || !move_shadow_data(source.shadow_dir(found->number), staging))
                continue;
            source.journal("TransportShadowCopy", {std::to_wstring(found->number), s.info.volume_name,
                                                   from_utf8(host_->dir().string())});
            records.erase(found);
            source.save_shadows(records);
        }
        auto lock = here.lock();
        s.info.number = here.allocate_shadow_number();
        s.info.attributes |= VSS_VOLSNAP_ATTR_IMPORTED;
        fs::rename(staging, here.shadow_dir(s.info.number), ec);
        record_owned(here, s.info, *doc_.set_id);
        s.owned = true;
        ++imported;
    }
    if (imported == 0)
        return VSS_E_NO_SNAPSHOTS_IMPORTED;
    if (imported < wanted)
        return VSS_S_SOME_SNAPSHOTS_NOT_IMPORTED;
    return planned;
}

} // namespace hostsim
