#include "snapshot_test_support.h"

#include "common/exc/convert.h"
#include "common/win/event.h"
#include "spec/hv_backup_spec.h"

namespace snapshot_test {

std::shared_ptr<CHvBackupSpec> parse_spec(const std::string& text) {
    return std::make_shared<CHvBackupSpec>(text);
}

std::unique_ptr<impl::CVssSnapshot> take_snapshot(const std::string& spec) {
    test_support::install_test_log();
    return std::make_unique<impl::CVssSnapshot>(parse_spec(spec),
                                                std::make_shared<win::win_manual_reset_event_t>());
}

ItemsList items_of(const CVssSnapshotResult& result, const std::string& vmId) {
    auto vm = result.vmFiles.find(string_to_guid(vmId));
    return vm == result.vmFiles.end() ? ItemsList() : vm->second;
}

} // namespace snapshot_test
