#include "lab/backup_spec_writer.h"

#include "lab/sample_host.h"

#include "hostsim/wide_text.h"

#include <pugixml.hpp>

namespace lab {

namespace {

void add_provider(pugi::xml_node parent, const char* element, int type, const std::wstring& id,
                  const std::wstring& mount_point) {
    auto node = parent.append_child(element);
    node.append_attribute("type") = type;
    node.append_attribute("id") = hostsim::to_utf8(id).c_str();
    if (!mount_point.empty())
        node.append_attribute("volMountPoint") = hostsim::to_utf8(mount_point).c_str();
}

} // namespace

void write_backup_spec(const std::filesystem::path& file, const std::vector<sample_vm_t>& vms, bool offhost) {
    pugi::xml_document doc;
    auto spec = doc.append_child("HVBackupSpec");
    auto list = spec.append_child("VMs");
    for (auto& vm : vms) {
        // A share can't be carried to a proxy: the off-host backup leaves that VM out.
        if (offhost && vm.place == vm_place::smb)
            continue;
        auto node = list.append_child("VM");
        node.append_attribute("id") = hostsim::to_utf8(vm.id).c_str();
        node.append_attribute("crashConsistent") = "0";
        if (!vm.aux_file.empty())
            node.append_child("aux_file").append_attribute("path") = hostsim::to_utf8(vm.aux_file).c_str();
    }
    if (offhost) {
        add_provider(spec, "VSSProvider", 3, hardware_provider_id, L"");
    } else {
        add_provider(spec, "VSSProvider", 1, L"{b5946137-7b9f-4925-af80-51abd60b20d5}", L"");
        auto volumes = spec.append_child("volumes");
        add_provider(volumes, "volProvider", 5, L"{400a2ff4-5eb1-44b0-8a05-1fcac0bcf9ff}",
                     L"C:\\ClusterStorage\\Volume1\\");
        add_provider(volumes, "volProvider", 4, L"{89300202-3cec-4981-9171-19f59559e0f2}",
                     L"\\\\fs01\\vms\\");
    }
    spec.append_child("Offhost").append_attribute("type") = offhost ? 1 : 0;
    spec.append_child("Settings").append_attribute("UseCsvVssWriter") = "true";
    doc.save_file(file.c_str(), "  ");
}

} // namespace lab
