#include "snapshot_test_support.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log_install.h"
#include "common/win/event.h"
#include "spec/hv_backup_spec.h"

#include <gtest/gtest.h>

namespace snapshot_test {

namespace {

std::string log_path() {
    static const std::string path =
        logging::install_log_file((std::filesystem::temp_directory_path() /
                                   ("mirrack-snapshot-test-" + std::to_string(getpid()) + ".log"))
                                      .string());
    return path;
}

std::string read_all(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace

log_capture_t::log_capture_t() : start_(read_all(log_path()).size()) {}

std::string log_capture_t::text() const {
    return read_all(log_path()).substr(start_);
}

std::size_t log_capture_t::count(const std::string& piece) const {
    const std::string all = text();
    std::size_t found = 0;
    for (auto at = all.find(piece); at != std::string::npos; at = all.find(piece, at + piece.size()))
        ++found;
    return found;
}

std::vector<std::string> failure_lines(const std::function<void()>& action) {
    try {
        action();
    } catch (const exc::exc_base_t& e) {
        std::vector<std::string> lines;
        for (const auto& entry : e.messages())
            lines.push_back(entry.text);
        return lines;
    }
    ADD_FAILURE() << "no failure was raised";
    return {};
}

std::shared_ptr<CHvBackupSpec> parse_spec(const std::string& text) {
    return std::make_shared<CHvBackupSpec>(text);
}

std::unique_ptr<impl::CVssSnapshot> take_snapshot(const std::string& spec) {
    log_path();
    return std::make_unique<impl::CVssSnapshot>(parse_spec(spec),
                                                std::make_shared<win::win_manual_reset_event_t>());
}

ItemsList items_of(const impl::CVssSnapshot& snapshot, const std::string& vmId) {
    auto result = snapshot.BuildResult();
    auto vm = result->vmFiles.find(string_to_guid(vmId));
    return vm == result->vmFiles.end() ? ItemsList() : vm->second;
}

} // namespace snapshot_test
