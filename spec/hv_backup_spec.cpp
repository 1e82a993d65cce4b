// Parsing the backup specification. Each reader adds its own line to whatever
// fails below it, so a failure reads from the root cause out to the document.
#include "spec/hv_backup_spec.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/path.h"
#include "common/xml/xml_node.h"

#include <algorithm>
#include <cstdio>
#include <utility>

struct CHvBackupSpec::parsed_t {
    std::vector<vm_ptr_t> vms;
    provider_ptr_t defaultProvider;
    std::vector<provider_ptr_t> volumeProviders;
    std::shared_ptr<COffhostInfo> offhost;
    bool useCsvVssWriter = false;
};

namespace {

std::vector<xml_node_t> child_elements_named(const xml_node_t& node, const std::string& name) {
    std::vector<xml_node_t> found;
    for (const xml_node_t& child : get_children(node))
        if (child.is_element() && node_name(child) == name)
            found.push_back(child);
    return found;
}

// A value that doesn't begin with an integer leaves the flag as it is.
bool read_crash_consistent(const xml_node_t& vm) {
    std::string text;
    int value = 0;
    if (find_attr(vm, "crashConsistent", text) && std::sscanf(text.c_str(), "%d", &value) == 1)
        return value != 0;
    return false;
}

// A disk without text ends the list quietly: it and every later one are dropped.
std::vector<std::string> read_excluded_disks(const xml_node_t& vm) {
    return exc::traced("Unable to parse list of excluded disks.", [&] {
        std::vector<std::string> disks;
        const xml_node_t exclusions = find_child(vm, "DiskExclusions");
        if (exclusions.is_null())
            return disks;
        for (const xml_node_t& disk : child_elements_named(exclusions, "disk")) {
            const std::vector<xml_node_t> content = get_children(disk);
            if (content.empty())
                break;
            disks.push_back(node_name(content.front()));
        }
        return disks;
    });
}

std::vector<std::string> read_aux_files(const xml_node_t& vm) {
    return exc::traced("Failed to parse list of auxiliary files.", [&] {
        std::vector<std::string> files;
        for (const xml_node_t& child : get_children(vm))
            if (node_name(child) == "aux_file")
                files.push_back(get_attr(child, "path"));
        return files;
    });
}

CHvBackupSpec::vm_ptr_t read_vm(const xml_node_t& vm) {
    return exc::traced("Failed to parse Hyper-V backup spec.", [&] {
        std::string id = get_attr(vm, "id");
        const bool crashConsistent = read_crash_consistent(vm);
        std::vector<std::string> disks = read_excluded_disks(vm);
        std::vector<std::string> auxFiles = read_aux_files(vm);
        return std::make_shared<CHvVmBackupSpec>(std::move(id), std::move(disks), std::move(auxFiles),
                                                 crashConsistent);
    });
}

CHvBackupSpec::vm_ptr_t make_vm(const xml_node_t& vm) {
    return exc::traced("Failed to parse VM specification.", [&] { return read_vm(vm); });
}

std::vector<CHvBackupSpec::vm_ptr_t> parse_vm_list(const xml_node_t& root) {
    return exc::traced("Failed to parse list of VMs.", [&] {
        std::vector<CHvBackupSpec::vm_ptr_t> vms;
        for (const xml_node_t& vm : child_elements_named(get_child(root, "VMs"), "VM"))
            vms.push_back(make_vm(vm));
        return vms;
    });
}

// Anything but an element leaves the default provider: type 0, nil id, no mount point.
CHvBackupSpec::provider_ptr_t make_provider(const xml_node_t& node) {
    if (!node.is_element())
        return std::make_shared<CVolVssProviderInfo>();
    const auto type = static_cast<std::uint32_t>(get_attr_int(node, "type"));
    const GUID id = string_to_guid(get_attr(node, "id"));
    std::string mountPoint;
    find_attr(node, "volMountPoint", mountPoint);
    return std::make_shared<CVolVssProviderInfo>(id, type, from_utf8(mountPoint));
}

CHvBackupSpec::provider_ptr_t parse_default_provider(const xml_node_t& root) {
    return exc::traced("Failed to parse default VSS provider settings",
                       [&] { return make_provider(find_child(root, "VSSProvider")); });
}

std::vector<CHvBackupSpec::provider_ptr_t> parse_volume_providers(const xml_node_t& root) {
    return exc::traced("Failed to parse list of volumes to snapshot.", [&] {
        std::vector<CHvBackupSpec::provider_ptr_t> providers;
        const xml_node_t volumes = find_child(root, "volumes");
        if (!volumes.is_element())
            return providers;
        for (const xml_node_t& provider : child_elements_named(volumes, "volProvider"))
            providers.push_back(make_provider(provider));
        return providers;
    });
}

std::shared_ptr<COffhostInfo> parse_offhost(const xml_node_t& root) {
    return exc::traced("Failed to parse off-host backup settings.", [&] {
        const xml_node_t offhost = find_child(root, "Offhost");
        if (!offhost.is_element())
            return std::make_shared<COffhostInfo>();
        return std::make_shared<COffhostInfo>(get_attr_int(offhost, "type"));
    });
}

bool parse_use_csv_writer(const xml_node_t& root) {
    return exc::traced("Failed to parse additional backup settings.", [&] {
        const xml_node_t settings = find_child(root, "Settings");
        std::string text;
        return !settings.is_null() && find_attr(settings, "UseCsvVssWriter", text) && string_to_bool(text);
    });
}

} // namespace

namespace spec {

bool SamePath(const std::wstring& a, const std::wstring& b) {
    return std::ranges::equal(win::path_components(a), win::path_components(b),
                              [](const std::wstring& x, const std::wstring& y) { return iequals(x, y); });
}

} // namespace spec

CHvVmBackupSpec::CHvVmBackupSpec(std::string vmId_, std::vector<std::string> excludedDisks_,
                                 std::vector<std::string> auxFiles_, bool crashConsistent_)
    : vmId(std::move(vmId_)), excludedDisks(std::move(excludedDisks_)), auxFiles(std::move(auxFiles_)),
      crashConsistent(crashConsistent_) {}

CVolVssProviderInfo::CVolVssProviderInfo(const GUID& providerId_, std::uint32_t providerType_,
                                         std::wstring mountPoint_)
    : providerId(providerId_), providerType(providerType_), mountPoint(std::move(mountPoint_)) {}

CHvBackupSpec::CHvBackupSpec(const std::string& document) try : CHvBackupSpec(Parse(document)) {
} catch (const std::exception& e) {
    exc::rethrow_with_message("Cannot parse backup specification document (%1).", document, e);
}

CHvBackupSpec::CHvBackupSpec(parsed_t&& parsed)
    : vms(std::move(parsed.vms)), defaultProvider(std::move(parsed.defaultProvider)),
      volumeProviders(std::move(parsed.volumeProviders)), offhost(std::move(parsed.offhost)),
      useCsvVssWriter(parsed.useCsvVssWriter) {}

// The first top-level node named HVBackupSpec; when there is none, reading the
// VM list reports the missing VMs node.
CHvBackupSpec::parsed_t CHvBackupSpec::Parse(const std::string& document) {
    const xml_node_t root = find_child(xml_node_t(parse_xml(document)), "HVBackupSpec");
    parsed_t parsed;
    parsed.vms = parse_vm_list(root);
    parsed.defaultProvider = parse_default_provider(root);
    parsed.volumeProviders = parse_volume_providers(root);
    parsed.offhost = parse_offhost(root);
    parsed.useCsvVssWriter = parse_use_csv_writer(root);
    return parsed;
}

CHvBackupSpec::provider_ptr_t CHvBackupSpec::FindVolumeProvider(const std::wstring& path) const {
    for (const provider_ptr_t& provider : volumeProviders)
        if (spec::SamePath(provider->mountPoint, path))
            return provider;
    return defaultProvider;
}
