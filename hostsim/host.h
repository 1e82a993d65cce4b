// One simulated host: the model read from <dir>/host.xml, its shared state, the fault
// table of this process, and the resolution of Windows-form paths to its volumes,
// shares and shadow copies. A process uses the host that MIRRACK_HOST names.
#pragma once

#include "hostsim/fault_table.h"
#include "hostsim/host_model.h"
#include "hostsim/state_store.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hostsim {

// The device path of a shadow copy is this and the copy's number.
inline constexpr std::wstring_view shadow_device_prefix =
    L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy";

enum class location_kind { none, native, volume, share, shadow };

// Where a Windows-form path leads: the thing it lies on and the rest of it below that.
struct location_t {
    location_kind kind = location_kind::none;
    const volume_t* volume = nullptr;
    const share_t* share = nullptr;
    unsigned shadow = 0;
    std::wstring root; // as the host spells it, with a trailing backslash
    std::wstring rest; // below the root, '\'-separated, without a leading separator
};

// A volume or share that a snapshot can be taken of.
struct snapshot_target_t {
    const volume_t* volume = nullptr;
    const share_t* share = nullptr;

    explicit operator bool() const { return volume || share; }
    std::wstring unique_name() const { return volume ? volume->name : share->root; }
    const std::filesystem::path& data_dir() const { return volume ? volume->dir : share->dir; }
    bool same_as(const snapshot_target_t& other) const {
        return volume == other.volume && share == other.share;
    }
    // By its unique name, a mount point or the share's UNC path, with the trailing backslash.
    bool named_by(const std::wstring& name) const;
};

// What a simulated call is to do: go on, or fail with the HRESULT of a fault (or of an
// unusable host), and for asynchronous operations the status and delay of a fault.
struct call_outcome_t {
    HRESULT refusal = S_OK;
    std::optional<std::uint32_t> err;
    std::optional<HRESULT> status;
    unsigned delay_ms = 0;
};

// What a call answers before it does anything: the HRESULT of a fault (or of an unusable host),
// then E_INVALIDARG for bad arguments; S_OK when it goes on.
inline HRESULT refusal(const call_outcome_t& outcome, bool arguments_ok = true) {
    return outcome.refusal != S_OK ? outcome.refusal : arguments_ok ? S_OK : E_INVALIDARG;
}

class host_t {
public:
    // Loads <dir>/host.xml and opens <dir>/state, ending what dead processes left: shadow
    // copies, a creation, cluster shared volumes in backup.
    static std::shared_ptr<host_t> open(const std::filesystem::path& dir);
    // The host of a process without MIRRACK_HOST: nothing on it.
    static std::shared_ptr<host_t> empty();

    bool selected() const { return state_ != nullptr || !usable(); }
    bool usable() const { return complaint_.empty(); }
    const std::string& complaint() const { return complaint_; }
    const host_model_t& model() const { return model_; }
    const std::filesystem::path& dir() const { return dir_; }
    // Null for the empty host.
    const state_store_t* state() const { return state_.get(); }
    fault_table_t& faults() { return faults_; }

    // Journals a simulated call and looks up its fault; the first argument is the main one.
    call_outcome_t enter(const char* op, const std::vector<std::wstring>& args = {});
    // Enters a call that needs nothing of its outcome but the refusal.
    HRESULT refuse(const char* op, const std::vector<std::wstring>& args = {}, bool arguments_ok = true) {
        return refusal(enter(op, args), arguments_ok);
    }

    location_t locate(const std::wstring& windows_path) const;
    std::optional<std::filesystem::path> map_path(const std::wstring& windows_path) const;
    // A volume name, mount point, share root or share UNC path.
    snapshot_target_t find_target(const std::wstring& name) const;
    const provider_t* find_provider(const GUID& id) const;

    std::optional<std::wstring> environment_variable(const std::wstring& name) const;

private:
    host_t(std::filesystem::path dir, host_model_t model, std::string complaint);

    std::filesystem::path dir_;
    host_model_t model_;
    std::string complaint_;
    fault_table_t faults_;
    std::unique_ptr<state_store_t> state_;
};

// The host that MIRRACK_HOST names now; loaded again when the variable or host.xml changes.
std::shared_ptr<host_t> current_host();

// A local path below base for a '\'-separated rest: each directory name matched exactly,
// else without regard to case; names not found are kept as given.
std::filesystem::path resolve_below(const std::filesystem::path& base, const std::wstring& rest);

} // namespace hostsim
