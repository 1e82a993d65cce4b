// What one job of the soak does, drawn from the soak's seed and the job's number alone, so
// that a job can be drawn again on its own to replay it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lab {

enum class server_action { backup, close, disconnect, kill, offhost };
enum class vm_verdict { succeeded, failed, unreported };

// A <Fault> or <WriterFault> element for the job's own view of the host.
struct fault_draw_t {
    std::string op; // the call, or "writer:<phase>" for a writer fault
    std::string element;
    unsigned delay_ms = 0;
};

struct job_draw_t {
    std::uint64_t index = 0;
    std::vector<unsigned> vms; // indexes into the host's VMs
    bool stranger = false;     // the specification also names a VM the host doesn't have
    std::vector<fault_draw_t> faults;
    server_action action = server_action::backup;
    unsigned moment_ms = 0;           // of a close, a disconnect or a kill, after the task began
    std::vector<vm_verdict> verdicts; // one per VM of vms
};

// The VMs a job may choose from and whether the off-host road is open.
struct draw_limits_t {
    unsigned vms = 0;
    bool offhost = false;
};

job_draw_t draw_job(std::uint64_t seed, std::uint64_t index, const draw_limits_t& limits);
// How many jobs run side by side from job first on: 1 to parallel.
unsigned draw_concurrency(std::uint64_t seed, std::uint64_t first, unsigned parallel);

const char* action_name(server_action action);
const char* verdict_name(vm_verdict verdict);
// One line for people: VMs, faults, action, moment and verdicts.
std::string describe(const job_draw_t& job);

} // namespace lab
