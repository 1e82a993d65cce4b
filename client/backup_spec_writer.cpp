#include "client/backup_spec_writer.h"

#include "common/exc/convert.h"
#include "common/format/format.h"

#include <tinyxml.h>

namespace client {

namespace {

void add_provider(TiXmlElement& parent, const char* element, const spec_provider_t& provider) {
    TiXmlElement node(element);
    node.SetAttribute("type", static_cast<int>(provider.kind));
    node.SetAttribute("id", guid_to_string(provider.id).c_str());
    if (!provider.mountPoint.empty())
        node.SetAttribute("volMountPoint", to_utf8(provider.mountPoint).c_str());
    parent.InsertEndChild(node);
}

TiXmlElement vm_element(const spec_vm_entry_t& vm) {
    TiXmlElement node("VM");
    node.SetAttribute("id", to_utf8(vm.id).c_str());
    node.SetAttribute("crashConsistent", vm.crashConsistent ? 1 : 0);
    if (!vm.excludedDisks.empty()) {
        TiXmlElement disks("DiskExclusions");
        for (const std::wstring& disk : vm.excludedDisks) {
            TiXmlElement entry("disk");
            entry.InsertEndChild(TiXmlText(to_utf8(disk).c_str()));
            disks.InsertEndChild(entry);
        }
        node.InsertEndChild(disks);
    }
    for (const std::wstring& file : vm.auxFiles) {
        TiXmlElement aux("aux_file");
        aux.SetAttribute("path", to_utf8(file).c_str());
        node.InsertEndChild(aux);
    }
    return node;
}

} // namespace

std::string WriteBackupSpec(const backup_spec_t& spec) {
    TiXmlDocument document;
    document.InsertEndChild(TiXmlDeclaration("1.0", "UTF-8", ""));
    TiXmlElement root("HVBackupSpec");
    TiXmlElement vms("VMs");
    for (const spec_vm_entry_t& vm : spec.vms)
        vms.InsertEndChild(vm_element(vm));
    root.InsertEndChild(vms);
    if (spec.defaultProvider)
        add_provider(root, "VSSProvider", *spec.defaultProvider);
    if (!spec.volumeProviders.empty()) {
        TiXmlElement volumes("volumes");
        for (const spec_provider_t& provider : spec.volumeProviders)
            add_provider(volumes, "volProvider", provider);
        root.InsertEndChild(volumes);
    }
    TiXmlElement offhost("Offhost");
    offhost.SetAttribute("type", spec.offhost ? 1 : 0);
    root.InsertEndChild(offhost);
    TiXmlElement settings("Settings");
    settings.SetAttribute("UseCsvVssWriter", spec.useCsvWriter ? "true" : "false");
    root.InsertEndChild(settings);
    document.InsertEndChild(root);

    TiXmlPrinter printer;
    printer.SetIndent("  ");
    document.Accept(&printer);
    return printer.CStr();
}

} // namespace client
