// What the import tests share: a sample Hyper-V host and its proxy made by the lab, and the
// documents of a transportable snapshot taken on the host.
#pragma once

#include "compat/win_types.h"
#include "documents/files_list.h"
#include "tests/hostsim/journaled_host.h"
#include "tests/snapshot/snapshot_test_support.h"
#include "tests/support/text_file.h"

#include <filesystem>
#include <string>
#include <vector>

namespace import_test {

using snapshot_test::failure_lines;
using snapshot_test::log_capture_t;
using snapshot_test::read_through;
using snapshot_test::wait_for;
using snapshot_test::wait_for_verdict;

// Two hosts made by the lab; the proxy is selected. The test's own files (pipes, a copy, a report)
// go in the host's folder, beside its volumes.
class host_and_proxy_t {
public:
    // proxyExtra goes into the proxy's host.xml: faults, most of the time.
    explicit host_and_proxy_t(const std::string& proxyExtra = "");

    std::string OffhostSpec() const;
    // The ids of the off-host specification's VMs, in its order and spelling.
    std::vector<std::string> OffhostVms() const;

    hostsim_test::journaled_host_t host{"mirrack-import-host"}, proxy{"mirrack-import-proxy"};
};

struct host_snapshot_t {
    std::wstring backupDoc;
    std::wstring snapshotsXml;
    // Every VM's items in volume-name form, as the host task leaves them, in VM order.
    ItemsList items;
};

// A transportable snapshot of the off-host specification's VMs, taken on the host and
// released there; the proxy is selected afterwards.
host_snapshot_t TakeOffhostSnapshot(const host_and_proxy_t& hosts);

// The items as an import's task or result converts them to paths on the proxy.
template <class Converter> ItemsList Converted(Converter&& converter, const ItemsList& items) {
    ItemsList converted;
    DeserializeItemsListUtf8(converter.ConvertOffhostPaths(SerializeItemsListUtf8(items)), converted);
    return converted;
}

using test_support::contains;
using test_support::read_file;

} // namespace import_test
