#include "lab/soak_host.h"

#include "lab/backup_spec_writer.h"
#include "lab/sample_host.h"

#include <pugixml.hpp>

#include <fstream>
#include <stdexcept>

namespace lab {

namespace fs = std::filesystem;

namespace {

const char soak_marker[] = "soak.txt";

void prepare_folder(const fs::path& dir) {
    if (fs::exists(dir / soak_marker))
        fs::remove_all(dir);
    if (fs::exists(dir) && !fs::is_empty(dir))
        throw std::runtime_error("The folder " + dir.string() + " is not empty and holds no earlier soak.");
    fs::create_directories(dir);
    std::ofstream(dir / soak_marker) << "A soak of mirrack-lab: removed by the next soak in this folder.\n";
}

} // namespace

soak_hosts_t make_soak_hosts(const fs::path& dir, bool offhost) {
    prepare_folder(dir);
    soak_hosts_t hosts;
    hosts.host = fs::absolute(dir / "host");
    // Small VMs: the soak is about the road, and every snapshot copies their files.
    sample_options_t options;
    options.vms_on_c = 2;
    options.files_per_vm = 4;
    options.file_size = 16 << 10;
    create_sample_host(hosts.host, options);
    hosts.vms = plan_sample_vms(options);
    if (offhost) {
        hosts.proxy = fs::absolute(dir / "proxy");
        sample_options_t proxy;
        proxy.proxy = true;
        create_sample_host(hosts.proxy, proxy);
    }
    return hosts;
}

void make_host_view(const fs::path& host, const fs::path& folder,
                    const std::vector<std::string>& fault_elements) {
    fs::create_directories(folder);
    fs::create_directories(host / "state");
    for (const char* part : {"volumes", "shares", "state"})
        if (fs::exists(host / part))
            fs::create_directory_symlink(host / part, folder / part);
    pugi::xml_document doc;
    if (!doc.load_file((host / "host.xml").c_str()))
        throw std::runtime_error("Cannot read " + (host / "host.xml").string());
    auto root = doc.child("Host");
    for (const auto& element : fault_elements) {
        pugi::xml_document fault;
        fault.load_string(element.c_str());
        root.append_copy(fault.first_child());
    }
    doc.save_file((folder / "host.xml").c_str(), "  ");
}

void write_job_spec(const fs::path& file, const soak_hosts_t& hosts, const std::vector<unsigned>& vms,
                    bool stranger, bool offhost) {
    std::vector<sample_vm_t> chosen;
    for (unsigned vm : vms)
        chosen.push_back(hosts.vms[vm]);
    if (stranger) {
        sample_vm_t unknown;
        unknown.id = L"5EA50000-0000-4000-8000-00000000F00D";
        chosen.push_back(unknown);
    }
    write_backup_spec(file, chosen, offhost);
}

} // namespace lab
