// The backup server's side of a soak job: the road of client/snapshot_road.h, walked as the
// draw says, with a close or a disconnect at its moment and the verdicts it drew.
#pragma once

#include "client/invoke_client.h"
#include "client/spec_file_vms.h"
#include "lab/soak_job.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace lab {

// A VM of the job's specification and what the server reports for it.
struct road_vm_t {
    client::spec_vm_t vm;
    vm_verdict verdict = vm_verdict::unreported;
};

struct road_links_t {
    client::CInvokeClient& host;
    // Starts the proxy's tool and connects to it, for an off-host job's import.
    std::function<client::CInvokeClient&()> proxy;
    // True once the draw or the watch killed a tool: a pipe gone is then no trouble.
    std::function<bool()> killed;
};

// Walks the road; the moment of a close or a disconnect counts from origin.
void drive_road(const std::string& spec_document, const std::vector<road_vm_t>& vms,
                const road_links_t& links, std::chrono::steady_clock::time_point origin,
                job_record_t& record);

} // namespace lab
