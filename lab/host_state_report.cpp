#include "lab/host_state_report.h"

#include "hostsim/host.h"
#include "hostsim/state_store.h"
#include "hostsim/wide_text.h"

#include <algorithm>
#include <cstdio>
#include <iomanip>
#include <sstream>

namespace lab {

namespace {

using hostsim::to_utf8;

std::string owner_text(const hostsim::process_identity_t& owner) {
    return "pid " + std::to_string(owner.pid) + (hostsim::is_alive(owner) ? "" : " (gone)");
}

// How long ago a copy was made, from its FILETIME stamp: hours, minutes and seconds.
std::string age_text(std::int64_t created) {
    const std::int64_t seconds = std::max<std::int64_t>(0, (hostsim::filetime_now() - created) / 10000000);
    char text[32];
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", static_cast<long long>(seconds / 3600),
                  static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
    return text;
}

// The VM name of a Hyper-V component, for people who know their VMs by name.
std::string caption_of(const hostsim::host_t& host, const std::wstring& component) {
    for (auto& writer : host.model().writers)
        for (auto& c : writer.components)
            if (hostsim::iequals(c.name, component))
                return to_utf8(c.caption);
    return "";
}

using shadow_iterator = std::vector<hostsim::shadow_record_t>::const_iterator;

// One row a copy: its number, volume, provider and the caller's last column, then its device
// and set.
template <class LastColumn>
void shadow_table(std::ostream& out, shadow_iterator first, shadow_iterator last, const char* last_heading,
                  LastColumn last_column) {
    if (first == last)
        return;
    out << "  " << std::left << std::setw(4) << "N" << std::setw(52) << "Volume" << std::setw(40)
        << "Provider" << last_heading << "\n";
    for (auto s = first; s != last; ++s)
        out << "  " << std::setw(4) << s->number << std::setw(52) << to_utf8(s->volume_name) << std::setw(40)
            << to_utf8(hostsim::guid_text(s->provider_id)) << last_column(*s) << "\n"
            << "      device \\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy" << s->number << "  set "
            << to_utf8(hostsim::guid_text(s->set_id)) << "\n";
}

// Copies that a process owns, and apart from them the transportable copies that no process
// owns any more: they stay on the storage until an import takes them, whatever became of the
// job that made them.
void report_shadows(std::ostream& out, const hostsim::state_store_t& state) {
    auto shadows = state.shadows();
    const auto waiting = std::stable_partition(
        shadows.begin(), shadows.end(), [](const hostsim::shadow_record_t& s) { return s.owner.pid != 0; });
    out << "Live shadow copies: " << (waiting - shadows.begin()) << "\n";
    shadow_table(out, shadows.cbegin(), shadow_iterator(waiting), "Owner",
                 [](const hostsim::shadow_record_t& s) { return owner_text(s.owner); });
    out << "Shadow copies waiting for import: " << (shadows.end() - waiting) << "\n";
    shadow_table(out, shadow_iterator(waiting), shadows.cend(), "Age",
                 [](const hostsim::shadow_record_t& s) { return age_text(s.created); });
}

void report_creation(std::ostream& out, const hostsim::state_store_t& state) {
    auto creations = state.creations();
    if (creations.empty()) {
        out << "Shadow-copy creation: none in progress\n";
        return;
    }
    for (auto& c : creations)
        out << "Shadow-copy creation: in progress for set " << to_utf8(hostsim::guid_text(c.set_id)) << ", "
            << owner_text(c.owner) << ", since " << to_utf8(c.since) << "\n";
}

std::string job_text(const GUID& set_id) {
    return set_id == GUID_NULL ? "no snapshot set" : "set " + to_utf8(hostsim::guid_text(set_id));
}

void report_csv(std::ostream& out, const hostsim::host_t& host, const hostsim::state_store_t& state) {
    auto volumes = state.csv_volumes();
    out << "Cluster shared volumes in backup: " << volumes.size() << "\n";
    for (auto& v : volumes) {
        auto target = host.find_target(v.volume_name);
        out << "  " << to_utf8(v.volume_name);
        if (target.volume)
            out << "  " << to_utf8(target.volume->mounts.front());
        out << "\n";
        for (auto& p : v.preparations)
            out << "    prepared by " << job_text(p.set_id) << " for " << to_utf8(p.path) << "\n";
    }
}

void report_backups(std::ostream& out, const hostsim::host_t& host, unsigned last) {
    std::vector<std::vector<std::wstring>> backups; // the set line's fields, then each component's
    for (auto& line : hostsim::read_lines(host.dir() / "state" / "backups.txt")) {
        auto fields = hostsim::split_fields(line);
        if (fields[0] == L"backup")
            backups.push_back({fields.size() > 1 ? fields[1] : L""});
        else if (fields[0] == L"component" && fields.size() >= 3 && !backups.empty())
            backups.back().insert(backups.back().end(), {fields[1], fields[2]});
    }
    out << "Backups completed: " << backups.size();
    if (backups.size() > last)
        out << " (the last " << last << " shown)";
    out << "\n";
    for (std::size_t b = backups.size() > last ? backups.size() - last : 0; b < backups.size(); ++b) {
        auto& backup = backups[b];
        out << "  Snapshot set " << to_utf8(backup[0]) << "\n";
        out << "    " << std::left << std::setw(40) << "Component" << std::setw(16) << "VM"
            << "Result\n";
        for (std::size_t i = 1; i + 1 < backup.size(); i += 2)
            out << "    " << std::setw(40) << to_utf8(backup[i]) << std::setw(16)
                << caption_of(host, backup[i]) << to_utf8(backup[i + 1]) << "\n";
    }
}

} // namespace

std::string host_state_report(const std::filesystem::path& host_dir, unsigned last_backups) {
    // Opening the host runs the sweep of copies and creations whose owner died, so the report
    // shows what lives.
    auto host = hostsim::host_t::open(host_dir);
    std::ostringstream out;
    out << "Host " << to_utf8(host->model().name) << " in " << host_dir.string() << "\n";
    if (!host->usable()) {
        out << "The host is unusable: " << host->complaint() << "\n";
        return out.str();
    }
    const auto& state = *host->state();
    auto lock = state.lock();
    report_creation(out, state);
    report_shadows(out, state);
    report_csv(out, *host, state);
    report_backups(out, *host, last_backups);
    return out.str();
}

} // namespace lab
