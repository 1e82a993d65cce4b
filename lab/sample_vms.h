// The virtual machines of a sample Hyper-V host: where each one lies, which files the
// Hyper-V writer publishes for it (direct files and wildcard specs) and which files are
// really there.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace lab {

struct sample_options_t {
    unsigned vms_on_c = 3;
    unsigned local_volumes = 1; // C: and the volumes mounted below C:\Mounts, VMs spread over them
    unsigned files_per_vm = 7;
    std::uint64_t file_size = 1 << 20;
    bool proxy = false;
};

enum class vm_place { local, csv, smb };

struct sample_file_spec_t {
    std::wstring path; // as the writer publishes it, with a closing backslash
    std::wstring spec;
    bool recursive = false;
};

struct sample_file_t {
    std::filesystem::path local; // relative to the host directory
    std::uint64_t size = 0;
};

struct sample_vm_t {
    std::wstring id;   // the component name: upper-case GUID without braces
    std::wstring name; // the caption
    vm_place place = vm_place::local;
    unsigned volume = 0; // of a local VM: 0 is C:, k the k-th volume of mounted_volume()
    std::vector<sample_file_spec_t> specs;
    std::vector<sample_file_t> files;
    std::wstring aux_file; // a file the backup specification adds, empty if none
};

// The k-th (from 1) local volume beside C:: its mount point (Windows form, closing
// backslash), its unique name and its folder relative to the host directory.
struct mounted_volume_t {
    std::wstring name; // \\?\Volume{...}\ .
    std::wstring mount;
    std::filesystem::path dir;
};
mounted_volume_t mounted_volume(unsigned k);

std::vector<sample_vm_t> plan_sample_vms(const sample_options_t& options);

} // namespace lab
