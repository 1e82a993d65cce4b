#include "hostsim/host.h"

#include "hostsim/csv_backup_state.h"
#include "hostsim/wide_text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <tuple>

namespace hostsim {

namespace fs = std::filesystem;

namespace {

// One spelling for every Windows form: '\' only, the long-path and device prefixes of
// drive letters and UNC paths taken off.
std::wstring windows_form(std::wstring p) {
    std::replace(p.begin(), p.end(), L'/', L'\\');
    if (istarts_with(p, L"\\\\?\\UNC\\"))
        return L"\\\\" + p.substr(8);
    if ((istarts_with(p, L"\\\\?\\") || istarts_with(p, L"\\\\.\\")) && p.size() >= 6 && p[5] == L':')
        return p.substr(4);
    if (istarts_with(p, L"\\\\.\\GLOBALROOT\\"))
        p[2] = L'?';
    return p;
}

std::wstring strip_leading_separators(std::wstring rest) {
    std::size_t n = rest.find_first_not_of(L'\\');
    return n == std::wstring::npos ? std::wstring() : rest.substr(n);
}

// The rest of path below prefix (which ends with '\'), or nothing if path isn't under it.
std::optional<std::wstring> rest_below(const std::wstring& path, const std::wstring& prefix) {
    if (istarts_with(path, prefix))
        return strip_leading_separators(path.substr(prefix.size()));
    if (!prefix.empty() && iequals(path, std::wstring_view(prefix).substr(0, prefix.size() - 1)))
        return std::wstring();
    return std::nullopt;
}

std::optional<location_t> locate_shadow(const std::wstring& path) {
    if (!istarts_with(path, shadow_device_prefix))
        return std::nullopt;
    std::size_t pos = shadow_device_prefix.size();
    std::size_t digits_end = path.find_first_not_of(L"0123456789", pos);
    if (digits_end == pos)
        return std::nullopt;
    if (digits_end != std::wstring::npos && path[digits_end] != L'\\')
        return std::nullopt;
    location_t loc;
    loc.kind = location_kind::shadow;
    loc.shadow = static_cast<unsigned>(std::wcstoul(path.substr(pos, digits_end - pos).c_str(), nullptr, 10));
    loc.root = path.substr(0, digits_end == std::wstring::npos ? path.size() : digits_end) + L"\\";
    loc.rest =
        digits_end == std::wstring::npos ? std::wstring() : strip_leading_separators(path.substr(digits_end));
    return loc;
}

void keep_longest(location_t& best, location_t candidate) {
    if (best.kind == location_kind::none || candidate.root.size() > best.root.size())
        best = std::move(candidate);
}

std::optional<std::string> name_in_dir_ignoring_case(const fs::path& dir, const std::wstring& name) {
    std::error_code ec;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        auto entry_name = it->path().filename().string();
        if (iequals(from_utf8(entry_name), name))
            return entry_name;
    }
    return std::nullopt;
}

} // namespace

fs::path resolve_below(const fs::path& base, const std::wstring& rest) {
    fs::path result = base;
    std::size_t depth = 0;
    bool lost = false; // below a name that doesn't exist nothing is looked up any more
    for (auto& part : split_text(rest, L'\\')) {
        if (part == L".")
            continue;
        if (part == L"..") {
            if (depth > 0) {
                result = result.parent_path();
                --depth;
            }
            continue;
        }
        std::string name = to_utf8(part);
        std::error_code ec;
        if (!lost && !fs::exists(fs::symlink_status(result / name, ec))) {
            if (auto actual = name_in_dir_ignoring_case(result, part))
                name = *actual;
            else
                lost = true;
        }
        result /= name;
        ++depth;
    }
    return result;
}

host_t::host_t(fs::path dir, host_model_t model, std::string complaint)
    : dir_(std::move(dir)), model_(std::move(model)), complaint_(std::move(complaint)),
      faults_(model_.faults) {}

std::shared_ptr<host_t> host_t::open(const fs::path& dir) {
    auto loaded = load_host_model(dir);
    if (auto* complaint = std::get_if<std::string>(&loaded)) {
        std::fprintf(stderr, "Simulated host is unusable: %s\n", complaint->c_str());
        return std::shared_ptr<host_t>(new host_t(dir, {}, *complaint));
    }
    std::shared_ptr<host_t> host(
        new host_t(fs::absolute(dir), std::get<host_model_t>(std::move(loaded)), {}));
    host->state_ = std::make_unique<state_store_t>(host->dir_);
    host->state_->remove_abandoned_shadows();
    end_csv_backup_states_of_dead_processes(*host->state_);
    return host;
}

std::shared_ptr<host_t> host_t::empty() {
    return std::shared_ptr<host_t>(new host_t({}, {}, {}));
}

call_outcome_t host_t::enter(const char* op, const std::vector<std::wstring>& args) {
    call_outcome_t outcome;
    if (!usable()) {
        outcome.refusal = E_UNEXPECTED;
        outcome.err = static_cast<std::uint32_t>(E_UNEXPECTED);
        return outcome;
    }
    if (state_)
        state_->journal(op, args);
    auto fault = faults_.on_call(op, args.empty() ? std::wstring() : args.front());
    if (!fault)
        return outcome;
    outcome.refusal = fault->hr.value_or(S_OK);
    outcome.err = fault->err;
    outcome.status = fault->status;
    outcome.delay_ms = fault->delay_ms;
    return outcome;
}

location_t host_t::locate(const std::wstring& windows_path) const {
    location_t best;
    if (windows_path.empty())
        return best;
    if (windows_path.front() == L'/') {
        best.kind = location_kind::native;
        best.rest = windows_path;
        return best;
    }
    const std::wstring path = windows_form(windows_path);
    if (auto shadow = locate_shadow(path))
        return *shadow;
    for (auto& v : model_.volumes) {
        if (auto rest = rest_below(path, v.name))
            keep_longest(best, {location_kind::volume, &v, nullptr, 0, v.name, *rest});
        for (auto& mount : v.mounts)
            if (auto rest = rest_below(path, mount))
                keep_longest(best, {location_kind::volume, &v, nullptr, 0, mount, *rest});
    }
    for (auto& s : model_.shares)
        for (auto* prefix : {&s.unc, &s.root})
            if (auto rest = rest_below(path, *prefix))
                keep_longest(best, {location_kind::share, nullptr, &s, 0, *prefix, *rest});
    return best;
}

std::optional<fs::path> host_t::map_path(const std::wstring& windows_path) const {
    auto loc = locate(windows_path);
    switch (loc.kind) {
    case location_kind::native: {
        std::replace(loc.rest.begin(), loc.rest.end(), L'\\', L'/');
        return fs::path(to_utf8(loc.rest));
    }
    case location_kind::volume:
        return resolve_below(loc.volume->dir, loc.rest);
    case location_kind::share:
        return resolve_below(loc.share->dir, loc.rest);
    case location_kind::shadow:
        if (!state_)
            return std::nullopt;
        return resolve_below(state_->shadow_dir(loc.shadow), loc.rest);
    case location_kind::none:
        break;
    }
    return std::nullopt;
}

snapshot_target_t host_t::find_target(const std::wstring& name) const {
    const std::wstring wanted = with_trailing_backslash(windows_form(name));
    for (auto& v : model_.volumes)
        if (snapshot_target_t{&v, nullptr}.named_by(wanted))
            return {&v, nullptr};
    for (auto& s : model_.shares)
        if (snapshot_target_t{nullptr, &s}.named_by(wanted))
            return {nullptr, &s};
    return {};
}

bool snapshot_target_t::named_by(const std::wstring& name) const {
    if (share)
        return iequals(name, share->root) || iequals(name, share->unc);
    return volume && (iequals(name, volume->name) ||
                      std::any_of(volume->mounts.begin(), volume->mounts.end(),
                                  [&](const std::wstring& mount) { return iequals(name, mount); }));
}

const provider_t* host_t::find_provider(const GUID& id) const {
    for (auto& p : model_.providers)
        if (p.id == id)
            return &p;
    return nullptr;
}

std::optional<std::wstring> host_t::environment_variable(const std::wstring& name) const {
    for (auto& [var, value] : model_.environment)
        if (iequals(var, name))
            return value;
    if (const char* value = std::getenv(to_utf8(name).c_str()))
        return from_utf8(value);
    if (iequals(name, L"SystemDrive"))
        return L"C:";
    if (iequals(name, L"ProgramData"))
        return L"C:\\ProgramData";
    return std::nullopt;
}

std::shared_ptr<host_t> current_host() {
    static std::mutex mutex;
    static std::shared_ptr<host_t> cached;
    // The host's folder and its host.xml's time and size when it was read.
    static std::tuple<std::string, fs::file_time_type, std::uintmax_t> cached_key;

    const char* dir = std::getenv("MIRRACK_HOST");
    std::lock_guard guard(mutex);
    if (!dir || !*dir) {
        static const auto nothing = host_t::empty();
        return nothing;
    }
    std::error_code ec;
    const fs::path file = fs::path(dir) / "host.xml";
    auto time = fs::last_write_time(file, ec);
    auto size = ec ? 0 : fs::file_size(file, ec);
    auto key = std::make_tuple(std::string(dir), time, size);
    if (!cached || key != cached_key) {
        cached = host_t::open(dir);
        cached_key = std::move(key);
    }
    return cached;
}

} // namespace hostsim
