// The cluster resource utility calls for cluster shared volumes, served by the host that
// MIRRACK_HOST names. The volumes in backup are kept in state/csv.txt.
#include "compat/cluster_api.h"
#include "hostsim/csv_backup_state.h"
#include "hostsim/host.h"
#include "hostsim/wide_text.h"

#include <cstring>

namespace {

// A Win32 code from a fault, or from an unusable host.
std::optional<DWORD> refusal_of(const hostsim::call_outcome_t& outcome) {
    if (outcome.err)
        return static_cast<DWORD>(*outcome.err);
    if (outcome.refusal != S_OK)
        return static_cast<DWORD>(outcome.refusal);
    return std::nullopt;
}

bool on_shared_volume(const hostsim::location_t& loc) {
    return loc.kind == hostsim::location_kind::volume && loc.volume->csv;
}

DWORD give_text(const std::wstring& text, LPWSTR buffer, LPDWORD length) {
    if (*length < text.size() + 1) {
        *length = static_cast<DWORD>(text.size() + 1);
        return ERROR_MORE_DATA;
    }
    std::memcpy(buffer, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    *length = static_cast<DWORD>(text.size() + 1);
    return ERROR_SUCCESS;
}

} // namespace

BOOL ClusterIsPathOnSharedVolume(LPCWSTR lpszPathName) {
    auto host = hostsim::current_host();
    const std::wstring path = hostsim::text_or_empty(lpszPathName);
    if (refusal_of(host->enter("ClusterIsPathOnSharedVolume", {path})))
        return FALSE;
    return on_shared_volume(host->locate(path)) ? TRUE : FALSE;
}

DWORD ClusterPrepareSharedVolumeForBackup(LPCWSTR lpszFileName, LPWSTR lpszVolumePathName,
                                          LPDWORD lpcchVolumePathName, LPWSTR lpszVolumeName,
                                          LPDWORD lpcchVolumeName) {
    auto host = hostsim::current_host();
    const std::wstring path = hostsim::text_or_empty(lpszFileName);
    if (auto refusal = refusal_of(host->enter("ClusterPrepareSharedVolumeForBackup", {path})))
        return *refusal;
    if (!lpszFileName || !lpszVolumePathName || !lpcchVolumePathName || !lpszVolumeName || !lpcchVolumeName)
        return ERROR_INVALID_PARAMETER;
    auto loc = host->locate(path);
    if (!on_shared_volume(loc) || !host->state())
        return ERROR_INVALID_PARAMETER;
    const std::wstring mount =
        hostsim::iequals(loc.root, loc.volume->name) ? loc.volume->mounts.front() : loc.root;
    if (DWORD e = give_text(mount, lpszVolumePathName, lpcchVolumePathName))
        return e;
    if (DWORD e = give_text(loc.volume->name, lpszVolumeName, lpcchVolumeName))
        return e;
    hostsim::prepare_csv_volume(*host->state(), loc.volume->name, path);
    return ERROR_SUCCESS;
}

DWORD ClusterClearBackupStateForSharedVolume(LPCWSTR lpszVolumePathName) {
    auto host = hostsim::current_host();
    const std::wstring path = hostsim::text_or_empty(lpszVolumePathName);
    if (auto refusal = refusal_of(host->enter("ClusterClearBackupStateForSharedVolume", {path})))
        return *refusal;
    if (!lpszVolumePathName)
        return ERROR_INVALID_PARAMETER;
    auto loc = host->locate(path);
    if (!on_shared_volume(loc) || !host->state())
        return ERROR_INVALID_PARAMETER;
    hostsim::clear_csv_volume(*host->state(), loc.volume->name);
    return ERROR_SUCCESS;
}
