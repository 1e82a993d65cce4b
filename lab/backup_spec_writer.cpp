#include "lab/backup_spec_writer.h"

#include "lab/sample_host.h"

#include "client/backup_spec_writer.h"
#include "common/exc/convert.h"
#include "common/format/format.h"

#include <fstream>
#include <stdexcept>

namespace lab {

namespace {

client::spec_provider_t provider(client::provider_kind_t kind, const wchar_t* id,
                                 const wchar_t* mount_point) {
    return {kind, string_to_guid(std::wstring(id)), mount_point};
}

} // namespace

void write_backup_spec(const std::filesystem::path& file, const std::vector<sample_vm_t>& vms, bool offhost) {
    using client::provider_kind_t;
    client::backup_spec_t spec;
    for (auto& vm : vms) {
        // A share can't be carried to a proxy: the off-host backup leaves that VM out.
        if (offhost && vm.place == vm_place::smb)
            continue;
        client::spec_vm_entry_t entry{vm.id, false, {}, {}};
        if (!vm.aux_file.empty())
            entry.auxFiles.push_back(vm.aux_file);
        spec.vms.push_back(entry);
    }
    if (offhost) {
        spec.defaultProvider = provider(provider_kind_t::hardware, hardware_provider_id, L"");
    } else {
        spec.defaultProvider =
            provider(provider_kind_t::system, L"{b5946137-7b9f-4925-af80-51abd60b20d5}", L"");
        spec.volumeProviders = {provider(provider_kind_t::csv, L"{400a2ff4-5eb1-44b0-8a05-1fcac0bcf9ff}",
                                         L"C:\\ClusterStorage\\Volume1\\"),
                                provider(provider_kind_t::fileshare,
                                         L"{89300202-3cec-4981-9171-19f59559e0f2}", L"\\\\fs01\\vms\\")};
    }
    spec.offhost = offhost;
    spec.useCsvWriter = true;
    std::ofstream out(file, std::ios::binary);
    out << client::WriteBackupSpec(spec);
    if (!out)
        throw std::runtime_error("cannot write " + file.string());
}

} // namespace lab
