// What the import tests share: a sample Hyper-V host and its proxy made by the lab
// in a folder of the test, the documents of a transportable snapshot taken on the
// host, and the proxy's view of the shadow copies.
#pragma once

#include "compat/win_types.h"
#include "documents/files_list.h"
#include "tests/snapshot/snapshot_test_support.h"
#include "tests/support/host_folder.h"
#include "tests/support/text_file.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace import_test {

using snapshot_test::failure_lines;
using snapshot_test::log_capture_t;
using snapshot_test::read_through;

class host_and_proxy_t {
public:
    // proxyExtra goes into the proxy's host.xml: faults, most of the time.
    explicit host_and_proxy_t(const std::string& proxyExtra = "");

    const std::filesystem::path& HostDir() const { return hostDir; }
    const std::filesystem::path& ProxyDir() const { return proxyDir; }
    // The simulated host this process works on from now on.
    void SelectHost() const;
    void SelectProxy() const;

    std::string OffhostSpec() const;
    // The ids of the off-host specification's VMs, in its order.
    std::vector<GUID> OffhostVms() const;
    // The lines of state/shadows.txt: one per live shadow copy.
    std::vector<std::string> Shadows(const std::filesystem::path& dir) const;
    // The journal's op names (with their arguments, tab-separated), in order.
    std::vector<std::string> Calls(const std::filesystem::path& dir) const;

private:
    test_support::host_folder_t folder{"mirrack-import"};
    std::filesystem::path hostDir = folder.dir() / "host", proxyDir = folder.dir() / "proxy";
};

struct host_snapshot_t {
    std::wstring backupDoc;
    std::wstring snapshotsXml;
    // Each VM's items in volume-name form, as the host task leaves them.
    std::map<GUID, ItemsList, VSSUtils::VssIdLess> items;
};

// A transportable snapshot of the off-host specification's VMs, taken on the host and
// released there; the proxy is selected afterwards.
host_snapshot_t TakeOffhostSnapshot(const host_and_proxy_t& hosts);

// Every item of the snapshot, in VM order.
ItemsList AllItems(const host_snapshot_t& snapshot);

using test_support::contains;
using test_support::read_file;

} // namespace import_test
