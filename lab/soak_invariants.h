// What must hold after every job of the soak, and on the host after each round of jobs.
// Each check returns the first broken invariant in words, or nothing.
#pragma once

#include "lab/soak_host.h"
#include "lab/soak_job.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace lab {

// The job on its own: no hang, no trouble on the road, every answer a frame of the protocol
// whose failures have words, and every tool that was not killed ended normally.
std::string check_job(const job_record_t& record);

// What the soak carries from round to round.
struct host_audit_t {
    std::uintmax_t journal_offset = 0;   // the journal before the round
    std::set<std::wstring> offhost_sets; // snapshot sets of off-host jobs: theirs may wait for import
};

// A broken invariant of the host, and the job it concerns when it is one job's.
struct host_verdict_t {
    std::string broken;
    const job_record_t* job = nullptr;
};

// The host after the sweep, once the round's tools have all ended: no copy of a dead owner
// (transportable copies of off-host jobs aside), no creation in progress, no cluster shared
// volume in backup; in the journal every prepared backup completed or aborted, and each
// completed backup's results as the job's verdicts said. Moves the audit past the round.
host_verdict_t check_host(const soak_hosts_t& hosts, const std::vector<job_record_t>& round,
                          host_audit_t& audit);

} // namespace lab
