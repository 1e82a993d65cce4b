#include "import_test_support.h"

#include "common/exc/convert.h"
#include "common/format/format.h"
#include "documents/snapshot_ids.h"
#include "lab/sample_host.h"
#include "snapshot/snapshot_result.h"
#include "spec/hv_backup_spec.h"

#include <regex>

namespace import_test {

host_and_proxy_t::host_and_proxy_t(const std::string& proxyExtra) {
    // Small: two VMs, one on C: and one on the cluster shared volume, so two snapshots.
    lab::sample_options_t options{.vms_on_c = 1, .files_per_vm = 4, .file_size = 8192};
    lab::create_sample_host(host.dir(), options);
    options.proxy = true;
    lab::create_sample_host(proxy.dir(), options);
    if (!proxyExtra.empty()) {
        std::string xml = read_file(proxy.dir() / "host.xml");
        proxy.write("host.xml", xml.insert(xml.rfind("</Host>"), proxyExtra + "\n"));
    }
}

std::string host_and_proxy_t::OffhostSpec() const {
    return read_file(host.dir() / "spec-offhost.xml");
}

std::vector<std::string> host_and_proxy_t::OffhostVms() const {
    std::vector<std::string> ids;
    const std::string spec = OffhostSpec();
    const std::regex vm(R"re(<VM id="([^"]+)")re");
    for (auto it = std::sregex_iterator(spec.begin(), spec.end(), vm); it != std::sregex_iterator(); ++it)
        ids.push_back((*it)[1].str());
    return ids;
}

host_snapshot_t TakeOffhostSnapshot(const host_and_proxy_t& hosts) {
    hosts.host.select();
    host_snapshot_t taken;
    {
        auto snapshot = snapshot_test::take_snapshot(hosts.OffhostSpec());
        auto result = snapshot->BuildResult();
        taken.backupDoc = result->info->BackupDoc;
        taken.snapshotsXml = result->info->SnapshotsXML;
        for (const auto& [vm, items] : result->vmFiles)
            taken.items.insert(taken.items.end(), items.begin(), items.end());
    }
    hosts.proxy.select();
    return taken;
}

} // namespace import_test
