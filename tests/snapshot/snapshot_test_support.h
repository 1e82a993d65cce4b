// What the snapshot task's unit tests share: the log written meanwhile, the lines
// of a failure, and a snapshot taken on the test's own thread.
#pragma once

#include "hyperv_test_host.h"
#include "snapshot/vss_snapshot.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class CHvBackupSpec;

namespace snapshot_test {

// The log text written from construction on.
class log_capture_t {
public:
    log_capture_t();
    std::string text() const;
    bool has(const std::string& piece) const { return text().find(piece) != std::string::npos; }
    std::size_t count(const std::string& piece) const;

private:
    std::size_t start_;
};

// The lines of the exception the action throws, cause first; fails the test if none is thrown.
std::vector<std::string> failure_lines(const std::function<void()>& action);

std::shared_ptr<CHvBackupSpec> parse_spec(const std::string& text);
std::unique_ptr<impl::CVssSnapshot> take_snapshot(const std::string& spec);

// The items of a VM in the snapshot's result, or an empty list.
ItemsList items_of(const impl::CVssSnapshot& snapshot, const std::string& vmId);

} // namespace snapshot_test
