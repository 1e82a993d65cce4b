// The soak's hosts: a sample host (and a proxy for off-host jobs) made once, and for each
// job a view of them with the job's own faults. A view is a folder with its own host.xml
// whose volumes, shares and state are links to the host's, so that every job meets the
// same shadow copies, creation lock and cluster state while its faults stay its own.
#pragma once

#include "lab/sample_vms.h"

#include <filesystem>
#include <string>
#include <vector>

namespace lab {

struct soak_hosts_t {
    std::filesystem::path host;  // DIR/host
    std::filesystem::path proxy; // DIR/proxy, empty without off-host jobs
    std::vector<sample_vm_t> vms;
};

// Makes DIR afresh; a DIR that holds an earlier soak is emptied first, any other that is
// not empty is refused with std::runtime_error.
soak_hosts_t make_soak_hosts(const std::filesystem::path& dir, bool offhost);

// A view of host in folder with the fault elements added to its host.xml.
void make_host_view(const std::filesystem::path& host, const std::filesystem::path& folder,
                    const std::vector<std::string>& fault_elements);

// The specification of a job: the chosen VMs, and one the host doesn't know when stranger.
void write_job_spec(const std::filesystem::path& file, const soak_hosts_t& hosts,
                    const std::vector<unsigned>& vms, bool stranger, bool offhost);

} // namespace lab
