#include "lab/sample_host.h"

#include "lab/backup_spec_writer.h"

#include "hostsim/wide_text.h"

#include <pugixml.hpp>

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace lab {

namespace fs = std::filesystem;
using hostsim::to_utf8;

const wchar_t sample_c_volume[] = L"\\\\?\\Volume{6a1b0c3e-5d2f-4e11-9a70-000000000c01}\\";
const wchar_t sample_csv_volume[] = L"\\\\?\\Volume{6a1b0c3e-5d2f-4e11-9a70-000000c5f001}\\";
const wchar_t sample_proxy_volume[] = L"\\\\?\\Volume{9b2c1d4f-7e3a-4c22-8b81-000000000c01}\\";
const wchar_t hardware_provider_id[] = L"{7f1d6a2e-3b4c-4d5e-8f60-71829304a5b6}";

namespace {

const wchar_t hyperv_writer[] = L"{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}";
const wchar_t csv_writer[] = L"{1072ae1c-e5a7-4ea1-9e4a-6f7964656570}";
const wchar_t system_writer[] = L"{e8132975-6f93-4464-a53e-1050253ae220}";

pugi::xml_node add(pugi::xml_node parent, const char* name,
                   std::initializer_list<std::pair<const char*, std::wstring>> attributes) {
    auto node = parent.append_child(name);
    for (auto& [attribute, value] : attributes)
        node.append_attribute(attribute) = to_utf8(value).c_str();
    return node;
}

void add_common_parts(pugi::xml_node host) {
    add(add(host, "Environment", {}), "Var", {{"name", L"SystemDrive"}, {"value", L"C:"}});
    auto key = add(add(host, "Registry", {}), "Key", {{"path", L"SOFTWARE\\Orlix\\Orlix Keepsafe"}});
    add(key, "Value", {{"name", L"LogDirectory"}, {"type", L"REG_SZ"}, {"data", L"C:\\Logs\\"}});
}

void add_writer(pugi::xml_node host, const wchar_t* id, const std::wstring& instance, const wchar_t* name,
                const std::vector<sample_vm_t>& vms) {
    auto writer = add(host, "Writer", {{"id", id}, {"instance", instance}, {"name", name}});
    for (auto& vm : vms) {
        auto component = add(writer, "Component",
                             {{"name", vm.id}, {"caption", vm.name}, {"type", L"2"}, {"logicalPath", L""}});
        for (auto& spec : vm.specs)
            add(component, "File",
                {{"path", spec.path},
                 {"spec", spec.spec},
                 {"recursive", spec.recursive ? L"true" : L"false"}});
    }
}

void write_host_xml(const fs::path& dir, const std::vector<sample_vm_t>& vms, unsigned local_volumes) {
    pugi::xml_document doc;
    auto host = add(doc, "Host", {{"name", L"HV01"}});
    add_common_parts(host);
    add(host, "Volume", {{"name", sample_c_volume}, {"dir", L"volumes/c"}, {"mount", L"C:\\"}});
    for (unsigned k = 1; k < local_volumes; ++k) {
        const auto mounted = mounted_volume(k);
        add(host, "Volume",
            {{"name", mounted.name}, {"dir", mounted.dir.wstring()}, {"mount", mounted.mount}});
    }
    add(host, "Volume",
        {{"name", sample_csv_volume},
         {"dir", L"volumes/csv1"},
         {"mount", L"C:\\ClusterStorage\\Volume1\\"},
         {"csv", L"true"}});
    add(host, "Share",
        {{"unc", L"\\\\fs01\\vms\\"}, {"root", L"\\\\fs01\\vms\\"}, {"dir", L"shares/fs01-vms"}});
    add(host, "Provider", {{"id", L"{b5946137-7b9f-4925-af80-51abd60b20d5}"}, {"type", L"system"}});
    add(host, "Provider", {{"id", L"{89300202-3cec-4981-9171-19f59559e0f2}"}, {"type", L"fileshare"}});
    add(host, "Provider", {{"id", L"{400a2ff4-5eb1-44b0-8a05-1fcac0bcf9ff}"}, {"type", L"csv"}});
    add(host, "Provider",
        {{"id", hardware_provider_id},
         {"type", L"hardware"},
         {"transportable", L"true"},
         {"volumes", std::wstring(sample_c_volume) + L";" + sample_csv_volume}});
    add_writer(host, hyperv_writer, L"{0e2b7c41-1d5a-4b8e-9f03-aa11bb22cc01}",
               L"Microsoft Hyper-V VSS Writer", vms);
    add_writer(host, csv_writer, L"{0e2b7c41-1d5a-4b8e-9f03-aa11bb22cc02}",
               L"Cluster Shared Volume VSS Writer", {});
    add_writer(host, system_writer, L"{0e2b7c41-1d5a-4b8e-9f03-aa11bb22cc03}", L"System Writer", {});
    doc.save_file((dir / "host.xml").c_str(), "  ");
}

void write_proxy_xml(const fs::path& dir) {
    pugi::xml_document doc;
    auto host = add(doc, "Host", {{"name", L"PROXY01"}});
    add_common_parts(host);
    add(host, "Volume", {{"name", sample_proxy_volume}, {"dir", L"volumes/c"}, {"mount", L"C:\\"}});
    add(host, "Provider", {{"id", L"{b5946137-7b9f-4925-af80-51abd60b20d5}"}, {"type", L"system"}});
    add(host, "Provider",
        {{"id", hardware_provider_id}, {"type", L"hardware"}, {"transportable", L"true"}, {"volumes", L"*"}});
    add_writer(host, system_writer, L"{0e2b7c41-1d5a-4b8e-9f03-aa11bb22cc13}", L"System Writer", {});
    doc.save_file((dir / "host.xml").c_str(), "  ");
}

// Content that differs from file to file, so that a copy read from the wrong place shows.
void write_sample_file(const fs::path& file, std::uint64_t size) {
    fs::create_directories(file.parent_path());
    std::string block = file.filename().string() + "\n";
    while (block.size() < 64 * 1024)
        block += block;
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    for (std::uint64_t written = 0; written < size;) {
        auto n = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), size - written));
        out.write(block.data(), static_cast<std::streamsize>(n));
        written += n;
    }
    if (!out)
        throw std::runtime_error("Cannot write " + file.string());
}

} // namespace

void create_sample_host(const fs::path& dir, const sample_options_t& options) {
    if (fs::exists(dir / "host.xml"))
        throw std::runtime_error("There is a host in " + dir.string() + " already.");
    fs::create_directories(dir / "volumes" / "c" / "Logs");
    if (options.proxy) {
        write_proxy_xml(dir);
        return;
    }
    fs::create_directories(dir / "volumes" / "c" / "ClusterStorage" / "Volume1");
    for (unsigned k = 1; k < options.local_volumes; ++k)
        fs::create_directories(dir / mounted_volume(k).dir);
    const auto vms = plan_sample_vms(options);
    for (auto& vm : vms) {
        for (auto& file : vm.files)
            write_sample_file(dir / file.local, file.size);
        if (!vm.aux_file.empty())
            write_sample_file(dir / "volumes/c/Hyper-V" / to_utf8(vm.name) / "notes.txt", 512);
    }
    write_host_xml(dir, vms, options.local_volumes);
    write_backup_spec(dir / "spec.xml", vms, false);
    write_backup_spec(dir / "spec-offhost.xml", vms, true);
}

} // namespace lab
