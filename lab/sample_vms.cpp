#include "lab/sample_vms.h"

#include <cstdio>
#include <random>

namespace lab {

namespace {

// Fixed seed: the same options give the same host, so that demos and tests can name VMs.
std::wstring sample_guid(std::mt19937_64& engine) {
    std::uint64_t hi = engine(), lo = engine();
    wchar_t text[40];
    std::swprintf(text, 40, L"%08X-%04X-%04X-%04X-%012llX", static_cast<unsigned>(hi >> 32),
                  static_cast<unsigned>((hi >> 16) & 0xFFFF), static_cast<unsigned>((hi & 0x0FFF) | 0x4000),
                  static_cast<unsigned>(((lo >> 48) & 0x3FFF) | 0x8000),
                  static_cast<unsigned long long>(lo & 0xFFFFFFFFFFFFull));
    return text;
}

struct place_t {
    std::wstring root;           // Windows form, for direct files
    std::wstring search_root;    // Windows form, for wildcard specs
    std::filesystem::path local; // relative to the host directory
};

place_t place_of(vm_place where, unsigned volume) {
    switch (where) {
    case vm_place::local:
        if (volume > 0) {
            const auto mounted = mounted_volume(volume);
            // The mount point without its drive, for the search root that begins with a variable.
            return {mounted.mount + L"Hyper-V\\", L"%SystemDrive%" + mounted.mount.substr(2) + L"Hyper-V\\",
                    mounted.dir / "Hyper-V"};
        }
        return {L"C:\\Hyper-V\\", L"%SystemDrive%\\Hyper-V\\", "volumes/c/Hyper-V"};
    case vm_place::csv:
        return {L"C:\\ClusterStorage\\Volume1\\", L"%SystemDrive%\\ClusterStorage\\Volume1\\",
                "volumes/csv1"};
    case vm_place::smb:
        return {L"\\\\fs01\\vms\\", L"\\\\fs01\\vms\\", "shares/fs01-vms"};
    }
    return {};
}

std::filesystem::path local_name(const std::wstring& name) {
    std::string narrow(name.begin(), name.end());
    return narrow;
}

sample_vm_t plan_vm(std::mt19937_64& engine, const std::wstring& name, vm_place where, unsigned volume,
                    const sample_options_t& options) {
    sample_vm_t vm;
    vm.id = sample_guid(engine);
    vm.name = name;
    vm.place = where;
    vm.volume = volume;
    const place_t place = place_of(where, volume);
    const std::wstring root = place.root + name + L"\\";
    const std::wstring search_root = place.search_root + name + L"\\";
    const auto local = place.local / local_name(name);
    const std::uint64_t config_size = 4096;

    vm.specs.push_back({root + L"Virtual Machines\\", vm.id + L".vmcx", false});
    vm.specs.push_back({root + L"Virtual Machines\\", vm.id + L".vmrs", false});
    vm.specs.push_back({root + L"Virtual Hard Disks\\", name + L".vhdx", false});
    vm.specs.push_back({search_root + L"Virtual Hard Disks\\", name + L"_*.avhdx", false});
    vm.specs.push_back({search_root + L"Snapshots\\", L"*", true});

    const auto machines = local / "Virtual Machines";
    const auto disks = local / "Virtual Hard Disks";
    vm.files.push_back({machines / local_name(vm.id + L".vmcx"), config_size});
    vm.files.push_back({machines / local_name(vm.id + L".vmrs"), config_size});
    vm.files.push_back({disks / local_name(name + L".vhdx"), options.file_size});

    // What is left of the files per VM are checkpoints: differencing disks found by the
    // wildcard beside the disk, and checkpoint configurations in folders of their own.
    const unsigned extra = options.files_per_vm > 3 ? options.files_per_vm - 3 : 0;
    const unsigned disks_of_checkpoints = (extra + 1) / 2;
    for (unsigned i = 0; i < disks_of_checkpoints; ++i)
        vm.files.push_back(
            {disks / local_name(name + L"_" + sample_guid(engine) + L".avhdx"), options.file_size});
    for (unsigned i = disks_of_checkpoints; i < extra; ++i) {
        const std::wstring checkpoint = sample_guid(engine);
        vm.files.push_back(
            {local / "Snapshots" / local_name(checkpoint) / local_name(checkpoint + L".vmcx"), config_size});
    }
    return vm;
}

} // namespace

mounted_volume_t mounted_volume(unsigned k) {
    wchar_t number[8], name[64];
    std::swprintf(number, 8, L"%02u", k + 1);
    std::swprintf(name, 64, L"\\\\?\\Volume{6a1b0c3e-5d2f-4e11-9a70-%012x}\\", 0xd000u + k);
    return {name, L"C:\\Mounts\\Volume" + std::wstring(number) + L"\\",
            "volumes/v" + local_name(number).string()};
}

std::vector<sample_vm_t> plan_sample_vms(const sample_options_t& options) {
    std::mt19937_64 engine(20261121);
    std::vector<sample_vm_t> vms;
    const unsigned volumes = options.local_volumes > 0 ? options.local_volumes : 1;
    for (unsigned i = 1; i <= options.vms_on_c; ++i)
        vms.push_back(
            plan_vm(engine, L"vm" + std::to_wstring(i), vm_place::local, (i - 1) % volumes, options));
    vms.push_back(plan_vm(engine, L"vm-csv", vm_place::csv, 0, options));
    vms.push_back(plan_vm(engine, L"vm-smb", vm_place::smb, 0, options));
    if (!vms.empty() && vms.front().place == vm_place::local)
        vms.front().aux_file = L"C:\\Hyper-V\\" + vms.front().name + L"\\notes.txt";
    return vms;
}

} // namespace lab
