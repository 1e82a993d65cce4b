#include "hostsim/state_store.h"

#include "hostsim/wide_text.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <optional>
#include <sstream>

namespace hostsim {

namespace fs = std::filesystem;

namespace {

std::uint64_t start_time_of(int pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    auto close = text.rfind(')');
    if (close == std::string::npos)
        return 0;
    std::istringstream fields(text.substr(close + 1));
    std::string field;
    // Field 22 of the line, the 20th after the command name.
    for (int i = 0; i < 20 && fields >> field; ++i) {
    }
    return std::strtoull(field.c_str(), nullptr, 10);
}

std::wstring identity_text(const process_identity_t& p) {
    if (p.pid == 0)
        return L"-";
    return std::to_wstring(p.pid) + L":" + std::to_wstring(p.start);
}

process_identity_t parse_identity(const std::wstring& text) {
    process_identity_t p;
    if (text == L"-")
        return p;
    auto colon = text.find(L':');
    p.pid = std::stoi(text.substr(0, colon));
    if (colon != std::wstring::npos)
        p.start = std::stoull(text.substr(colon + 1));
    return p;
}

std::wstring clean_field(std::wstring text) {
    std::replace_if(
        text.begin(), text.end(), [](wchar_t c) { return c == L'\t' || c == L'\n' || c == L'\r'; }, L' ');
    return text;
}

void write_file_atomically(const fs::path& file, const std::string& content) {
    fs::path temp = file;
    temp += ".new";
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        out << content;
    }
    fs::rename(temp, file);
}

std::string join_lines(const std::vector<std::wstring>& lines) {
    std::string out;
    for (auto& line : lines)
        out += to_utf8(line) + "\n";
    return out;
}

// A file of records, one a line of at least min_fields fields; a line that doesn't parse is left out.
template <class Record>
std::vector<Record> read_records(const fs::path& file, std::size_t min_fields,
                                 Record (*parse)(const std::vector<std::wstring>&)) {
    std::vector<Record> records;
    for (auto& line : read_lines(file)) {
        const auto fields = split_fields(line);
        try {
            if (fields.size() >= min_fields)
                records.push_back(parse(fields));
        } catch (const std::exception&) {
        }
    }
    return records;
}

template <class Record, class Format>
void write_records(const fs::path& file, const std::vector<Record>& records, Format format) {
    std::vector<std::wstring> lines;
    for (auto& r : records)
        lines.push_back(format(r));
    write_file_atomically(file, join_lines(lines));
}

std::wstring shadow_line(const shadow_record_t& s) {
    return std::to_wstring(s.number) + L"\t" + guid_text(s.snapshot_id) + L"\t" + guid_text(s.set_id) +
           L"\t" + guid_text(s.provider_id) + L"\t" + clean_field(s.volume_name) + L"\t" +
           identity_text(s.owner) + L"\t" + std::to_wstring(s.attributes) + L"\t" +
           std::to_wstring(s.created) + L"\t" + clean_field(s.machine);
}

shadow_record_t parse_shadow_line(const std::vector<std::wstring>& f) {
    return {static_cast<unsigned>(std::stoul(f[0])),
            parse_guid(f[1]).value_or(GUID_NULL),
            parse_guid(f[2]).value_or(GUID_NULL),
            parse_guid(f[3]).value_or(GUID_NULL),
            f[4],
            parse_identity(f[5]),
            static_cast<std::int32_t>(std::stol(f[6])),
            std::stoll(f[7]),
            f[8]};
}

std::wstring creation_line(const creation_record_t& c) {
    return guid_text(c.set_id) + L"\t" + identity_text(c.owner) + L"\t" + clean_field(c.since);
}

creation_record_t parse_creation_line(const std::vector<std::wstring>& f) {
    return {parse_guid(f[0]).value(), parse_identity(f[1]), f[2]};
}

std::wstring csv_line(const csv_state_t& v) {
    std::wstring line = clean_field(v.volume_name);
    for (auto& p : v.preparations)
        line += L"\t" + guid_text(p.set_id) + L"\t" + identity_text(p.owner) + L"\t" + clean_field(p.path);
    return line;
}

csv_state_t parse_csv_line(const std::vector<std::wstring>& f) {
    csv_state_t v{f[0], {}};
    for (std::size_t i = 1; i + 2 < f.size(); i += 3)
        v.preparations.push_back({parse_guid(f[i]).value_or(GUID_NULL), parse_identity(f[i + 1]), f[i + 2]});
    return v;
}

} // namespace

std::wstring utc_now_text() {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm utc{};
    gmtime_r(&now, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &utc);
    return from_utf8(text);
}

std::int64_t filetime_now() {
    using namespace std::chrono;
    const std::int64_t unix_to_filetime = 116444736000000000LL;
    return unix_to_filetime +
           duration_cast<microseconds>(system_clock::now().time_since_epoch()).count() * 10;
}

process_identity_t this_process() {
    int pid = static_cast<int>(getpid());
    return {pid, start_time_of(pid)};
}

bool is_alive(const process_identity_t& process) {
    if (process.pid <= 0)
        return false;
    if (kill(process.pid, 0) != 0 && errno == ESRCH)
        return false;
    return process.start == 0 || start_time_of(process.pid) == process.start;
}

std::vector<std::wstring> read_lines(const fs::path& file) {
    std::vector<std::wstring> lines;
    std::ifstream in(file, std::ios::binary);
    std::string line;
    while (std::getline(in, line))
        if (!line.empty())
            lines.push_back(from_utf8(line));
    return lines;
}

state_store_t::state_store_t(fs::path host_dir)
    : host_dir_(std::move(host_dir)), state_dir_(host_dir_ / "state") {
    std::error_code ignored;
    fs::create_directories(state_dir_ / "shadows", ignored);
    journal_fd_.reset(
        ::open((state_dir_ / "journal.txt").c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644));
}

state_store_t::~state_store_t() = default;

fs::path state_store_t::shadow_dir(unsigned number) const {
    return state_dir_ / "shadows" / std::to_string(number);
}

void state_store_t::journal(std::string_view op, const std::vector<std::wstring>& args) const {
    if (!journal_fd_)
        return;
    std::string line = std::to_string(getpid()) + "\t" + std::string(op);
    for (auto& arg : args)
        line += "\t" + to_utf8(clean_field(arg));
    line += "\n";
    // One write per line: with O_APPEND the lines of several processes never mix.
    [[maybe_unused]] auto written = ::write(journal_fd_.get(), line.data(), line.size());
}

compat::unique_fd_t state_store_t::lock() const {
    // A descriptor of its own for each holder: flock excludes open file descriptions, so
    // the lock also holds between a process and the children it forked.
    compat::unique_fd_t fd(::open((state_dir_ / "lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    while (fd && flock(fd.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
    return fd;
}

std::vector<shadow_record_t> state_store_t::shadows() const {
    return read_records(state_dir_ / "shadows.txt", 9, parse_shadow_line);
}

void state_store_t::save_shadows(const std::vector<shadow_record_t>& shadows) const {
    write_records(state_dir_ / "shadows.txt", shadows, shadow_line);
}

unsigned state_store_t::allocate_shadow_number() const {
    auto file = state_dir_ / "next-shadow.txt";
    const auto lines = read_lines(file);
    const unsigned next = std::max(
        lines.empty() ? 1u : static_cast<unsigned>(std::wcstoul(lines.front().c_str(), nullptr, 10)), 1u);
    write_file_atomically(file, std::to_string(next + 1) + "\n");
    return next;
}

void state_store_t::remove_shadow_data(unsigned number) const {
    // Renamed first, so that the device disappears at once even if the removal takes a while.
    auto dir = shadow_dir(number);
    auto doomed = state_dir_ / "shadows" / (".removing-" + std::to_string(number));
    std::error_code ec;
    fs::rename(dir, doomed, ec);
    fs::remove_all(ec ? dir : doomed, ec);
}

std::vector<creation_record_t> state_store_t::creations() const {
    return read_records(state_dir_ / "creation.txt", 3, parse_creation_line);
}

void state_store_t::save_creations(const std::vector<creation_record_t>& creations) const {
    write_records(state_dir_ / "creation.txt", creations, creation_line);
}

std::vector<creation_record_t> state_store_t::live_creations() const {
    auto records = creations();
    if (std::erase_if(records, [&](const creation_record_t& c) {
            if (is_alive(c.owner))
                return false;
            journal("RemoveAbandonedCreation",
                    {guid_text(c.set_id), L"owner " + std::to_wstring(c.owner.pid) + L" is gone"});
            return true;
        }))
        save_creations(records);
    return records;
}

std::vector<csv_state_t> state_store_t::csv_volumes() const {
    return read_records(state_dir_ / "csv.txt", 1, parse_csv_line);
}

void state_store_t::save_csv_volumes(const std::vector<csv_state_t>& volumes) const {
    write_records(state_dir_ / "csv.txt", volumes, csv_line);
}

void state_store_t::record_backup(const GUID& set_id,
                                  const std::vector<component_result_t>& components) const {
    std::vector<std::wstring> lines{L"backup\t" + guid_text(set_id)};
    for (auto& c : components)
        lines.push_back(L"component\t" + clean_field(c.name) + L"\t" + c.result);
    std::ofstream out(state_dir_ / "backups.txt", std::ios::binary | std::ios::app);
    out << join_lines(lines);
}

void state_store_t::remove_abandoned_shadows() const {
    auto guard = lock();
    auto records = shadows();
    if (std::erase_if(records, [&](const shadow_record_t& s) {
            if (s.owner.pid == 0 || is_alive(s.owner))
                return false;
            remove_shadow_data(s.number);
            journal("RemoveAbandonedShadowCopy",
                    {std::to_wstring(s.number), guid_text(s.snapshot_id), s.volume_name,
                     L"owner " + std::to_wstring(s.owner.pid) + L" is gone"});
            return true;
        }))
        save_shadows(records);
    remove_leftovers(records);
    live_creations();
}

// Folders that no record owns: removals and imports that a dying process left half done.
void state_store_t::remove_leftovers(const std::vector<shadow_record_t>& live) const {
    std::error_code ec;
    for (fs::directory_iterator it(state_dir_ / "shadows", ec), end; !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        bool leftover = false;
        if (name.rfind(".removing-", 0) == 0) {
            leftover = true;
        } else if (name.rfind(".incoming-", 0) == 0) {
            leftover = !is_alive({std::atoi(name.c_str() + 10), 0});
        } else if (name.find_first_not_of("0123456789") == std::string::npos) {
            const auto number = static_cast<unsigned>(std::stoul(name));
            leftover = std::none_of(live.begin(), live.end(),
                                    [&](const shadow_record_t& s) { return s.number == number; });
        }
        if (leftover) {
            std::error_code ignored;
            fs::remove_all(it->path(), ignored);
        }
    }
}

} // namespace hostsim
