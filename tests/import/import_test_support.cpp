#include "import_test_support.h"

#include "common/exc/convert.h"
#include "common/format/format.h"
#include "documents/snapshot_ids.h"
#include "lab/sample_host.h"
#include "snapshot/snapshot_result.h"
#include "spec/hv_backup_spec.h"

#include <cstdlib>
#include <fstream>
#include <regex>

namespace import_test {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> lines_of(const fs::path& file) {
    std::ifstream in(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        if (!line.empty())
            lines.push_back(line);
    return lines;
}

void add_to_host_xml(const fs::path& dir, const std::string& extra) {
    std::string xml = read_file(dir / "host.xml");
    xml.insert(xml.rfind("</Host>"), extra + "\n");
    std::ofstream(dir / "host.xml", std::ios::binary | std::ios::trunc) << xml;
}

} // namespace

host_and_proxy_t::host_and_proxy_t(const std::string& proxyExtra) {
    // Small: two VMs, one on C: and one on the cluster shared volume, so two snapshots.
    lab::sample_options_t options;
    options.vms_on_c = 1;
    options.files_per_vm = 4;
    options.file_size = 8192;
    lab::create_sample_host(hostDir, options);
    options.proxy = true;
    lab::create_sample_host(proxyDir, options);
    if (!proxyExtra.empty())
        add_to_host_xml(proxyDir, proxyExtra);
}

void host_and_proxy_t::SelectHost() const {
    ::setenv("MIRRACK_HOST", hostDir.c_str(), 1);
}

void host_and_proxy_t::SelectProxy() const {
    ::setenv("MIRRACK_HOST", proxyDir.c_str(), 1);
}

std::string host_and_proxy_t::OffhostSpec() const {
    return read_file(hostDir / "spec-offhost.xml");
}

std::vector<GUID> host_and_proxy_t::OffhostVms() const {
    std::vector<GUID> ids;
    const std::string spec = OffhostSpec();
    const std::regex vm(R"re(<VM id="([^"]+)")re");
    for (auto it = std::sregex_iterator(spec.begin(), spec.end(), vm); it != std::sregex_iterator(); ++it)
        ids.push_back(string_to_guid((*it)[1].str()));
    return ids;
}

std::vector<std::string> host_and_proxy_t::Shadows(const fs::path& dir) const {
    return lines_of(dir / "state" / "shadows.txt");
}

std::vector<std::string> host_and_proxy_t::Calls(const fs::path& dir) const {
    std::vector<std::string> calls;
    for (const std::string& line : lines_of(dir / "state" / "journal.txt"))
        calls.push_back(line.substr(line.find('\t') + 1));
    return calls;
}

host_snapshot_t TakeOffhostSnapshot(const host_and_proxy_t& hosts) {
    hosts.SelectHost();
    host_snapshot_t taken;
    {
        auto snapshot = snapshot_test::take_snapshot(hosts.OffhostSpec());
        auto result = snapshot->BuildResult();
        taken.backupDoc = result->info->BackupDoc;
        taken.snapshotsXml = result->info->SnapshotsXML;
        for (const auto& [vmId, items] : result->vmFiles)
            taken.items[vmId] = items;
    }
    hosts.SelectProxy();
    return taken;
}

ItemsList AllItems(const host_snapshot_t& snapshot) {
    ItemsList all;
    for (const auto& entry : snapshot.items)
        all.insert(all.end(), entry.second.begin(), entry.second.end());
    return all;
}

} // namespace import_test
