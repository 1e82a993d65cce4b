// A simulated host made for one test in a fresh directory, selected through MIRRACK_HOST
// for as long as it lives, and the small steps a requester takes against it.
#pragma once

#include "compat/com_ptr.h"
#include "compat/vss_api.h"
#include "journaled_host.h"
#include "tests/support/text_file.h"

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace hostsim_test {

// The sample host of these tests: C: with two VMs' files, a cluster shared volume, an SMB
// share, the usual providers, a transportable hardware provider for C:, the Hyper-V writer
// and a system writer. extra goes inside <Host> (faults, for instance).
std::string sample_host_xml(const std::string& extra = "");

extern const GUID hyperv_writer_id;
extern const GUID hyperv_writer_instance;
extern const GUID system_provider_id;
extern const GUID hardware_provider_id;
extern const wchar_t c_volume_name[];
extern const wchar_t vm1_component[];

class scratch_host_t : public journaled_host_t {
public:
    // prefix names its folder: a name is bytes, which need not be UTF-8.
    explicit scratch_host_t(const std::string& host_xml = sample_host_xml(),
                            const std::string& prefix = "mirrack-hostsim");

    std::vector<std::vector<std::string>> journal() const; // fields of each line
};

using test_support::read_file;
std::filesystem::path local_path(const std::wstring& windows_path); // fails the test if unmapped

// Polls until the operation has ended; its final status.
HRESULT wait_for(compat::com_ptr_t<IVssAsync> async);
HRESULT run(IVssBackupComponents* backup, HRESULT (IVssBackupComponents::*op)(IVssAsync**));

compat::com_ptr_t<IVssBackupComponents> new_backup();
// Created and initialized for a backup.
compat::com_ptr_t<IVssBackupComponents> initialised_backup();
// Created, initialized, writers gathered: the state in which a requester picks components.
compat::com_ptr_t<IVssBackupComponents> gathered_backup();
// Gathered, vm1 added, C: in a started set with the system provider, prepared.
compat::com_ptr_t<IVssBackupComponents> prepared_backup(VSS_ID* snapshot_id = nullptr);

// Gathers the writers' status: each writer's state, and its failure code into failures if given.
std::vector<VSS_WRITER_STATE> writer_states(IVssBackupComponents* backup,
                                            std::vector<HRESULT>* failures = nullptr);

// Adds a volume to the started set; the snapshot's id into snapshot_id if given.
HRESULT add_volume(IVssBackupComponents* backup, std::wstring volume, const GUID& provider = GUID_NULL,
                   VSS_ID* snapshot_id = nullptr);
// A component of the Hyper-V writer: added to the backup, or given its outcome.
HRESULT add_component(IVssBackupComponents* backup, const wchar_t* component = vm1_component);
HRESULT set_outcome(IVssBackupComponents* backup, const wchar_t* component, bool succeeded);
// Starts a snapshot set; its id.
GUID start_set(IVssBackupComponents* backup);

// This process as the host's records name it: pid and start time.
std::string this_process_text();
// The pid of a process that has ended.
int dead_pid();
// Runs body in a child process; true if it returned 0.
template <class Body> bool in_child_process(Body body) {
    const pid_t pid = fork();
    if (pid == 0) {
        int code = 1;
        try {
            code = body();
        } catch (...) {
        }
        _exit(code);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace hostsim_test
