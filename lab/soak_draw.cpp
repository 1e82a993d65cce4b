#include "lab/soak_draw.h"

#include <array>
#include <cstdio>
#include <random>
#include <sstream>

namespace lab {

namespace {

using engine_t = std::mt19937_64;

// Calls the tool makes on a host or a proxy; Win32-style ones fail with an error code.
const std::array<const char*, 33> com_calls = {"CreateVssBackupComponentsInternal",
                                               "InitializeForBackup",
                                               "SetContext",
                                               "EnableWriterClasses",
                                               "GatherWriterMetadata",
                                               "GetWriterMetadataCount",
                                               "GetWriterMetadata",
                                               "GetIdentity",
                                               "GetFileCounts",
                                               "GetComponent",
                                               "GetComponentInfo",
                                               "GetFile",
                                               "GetPath",
                                               "GetFilespec",
                                               "GetRecursive",
                                               "AddComponent",
                                               "SetBackupState",
                                               "StartSnapshotSet",
                                               "IsVolumeSupported",
                                               "AddToSnapshotSet",
                                               "PrepareForBackup",
                                               "DoSnapshotSet",
                                               "GatherWriterStatus",
                                               "GetWriterStatus",
                                               "GetSnapshotProperties",
                                               "SetBackupSucceeded",
                                               "BackupComplete",
                                               "SaveAsXML",
                                               "GetRootAndLogicalPrefixPaths",
                                               "ImportSnapshots",
                                               "QueryStatus",
                                               "Cancel",
                                               "AbortBackup"};
const std::array<const char*, 9> win32_calls = {"GetVolumePathNameW",
                                                "GetVolumeNameForVolumeMountPointW",
                                                "FindFirstFileW",
                                                "FindNextFileW",
                                                "CreateFileW",
                                                "ExpandEnvironmentStringsW",
                                                "ClusterIsPathOnSharedVolume",
                                                "ClusterPrepareSharedVolumeForBackup",
                                                "ClusterClearBackupStateForSharedVolume"};
// Operations that end through IVssAsync, where a status or a delay applies.
const std::array<const char*, 5> async_calls = {"GatherWriterMetadata", "PrepareForBackup", "DoSnapshotSet",
                                                "GatherWriterStatus", "ImportSnapshots"};
const std::array<const char*, 8> failures = {"0x80004005", "0x80042301", "0x80042302", "0x80042306",
                                             "0x80042316", "0x8004231f", "0x800423f2", "0x80070005"};
const std::array<const char*, 5> win32_errors = {"5", "2", "3", "87", "5023"};
const std::array<const char*, 5> async_statuses = {"0x0004230b", "0x80042302", "0x80042306", "0x800423f4",
                                                   "0x80042319"};
const std::array<const char*, 3> writers = {"{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}",
                                            "{1072ae1c-e5a7-4ea1-9e4a-6f7964656570}",
                                            "{e8132975-6f93-4464-a53e-1050253ae220}"};
const std::array<const char*, 4> phases = {"identify", "prepare", "snapshot", "complete"};
const std::array<const char*, 5> writer_hrs = {"0x00000000", "0x800423f0", "0x800423f2", "0x800423f3",
                                               "0x800423f4"};

unsigned below(engine_t& engine, unsigned n) {
    return static_cast<unsigned>(engine() % n);
}

bool chance(engine_t& engine, unsigned percent) {
    return below(engine, 100) < percent;
}

template <std::size_t N> const char* pick(engine_t& engine, const std::array<const char*, N>& items) {
    return items[below(engine, N)];
}

std::string nth_attribute(engine_t& engine) {
    return chance(engine, 50) ? " nth=\"" + std::to_string(1 + below(engine, 4)) + "\"" : "";
}

fault_draw_t draw_async_fault(engine_t& engine) {
    fault_draw_t fault;
    fault.op = pick(engine, async_calls);
    std::string effect;
    if (chance(engine, 50)) {
        fault.delay_ms = 100 + below(engine, 1900);
        effect = " delayMs=\"" + std::to_string(fault.delay_ms) + "\"";
    } else {
        effect = std::string(" status=\"") + pick(engine, async_statuses) + "\"";
    }
    fault.element = "<Fault op=\"" + fault.op + "\"" + effect + nth_attribute(engine) + "/>";
    return fault;
}

fault_draw_t draw_call_fault(engine_t& engine) {
    fault_draw_t fault;
    const bool win32 = chance(engine, 25);
    fault.op = win32 ? pick(engine, win32_calls) : pick(engine, com_calls);
    const std::string effect = win32 ? std::string(" err=\"") + pick(engine, win32_errors) + "\""
                                     : std::string(" hr=\"") + pick(engine, failures) + "\"";
    fault.element = "<Fault op=\"" + fault.op + "\"" + effect + nth_attribute(engine) + "/>";
    return fault;
}

fault_draw_t draw_writer_fault(engine_t& engine) {
    fault_draw_t fault;
    const char* phase = pick(engine, phases);
    fault.op = std::string("writer:") + phase;
    fault.element = std::string("<WriterFault writer=\"") + pick(engine, writers) + "\" at=\"" + phase +
                    "\" state=\"" + std::to_string(1 + below(engine, 15)) + "\" hr=\"" +
                    pick(engine, writer_hrs) + "\"/>";
    return fault;
}

fault_draw_t draw_fault(engine_t& engine) {
    const unsigned kind = below(engine, 10);
    if (kind < 3)
        return draw_async_fault(engine);
    if (kind < 8)
        return draw_call_fault(engine);
    return draw_writer_fault(engine);
}

std::vector<unsigned> draw_vms(engine_t& engine, unsigned count) {
    std::vector<unsigned> vms;
    const unsigned mode = below(engine, 10);
    for (unsigned i = 0; i < count; ++i)
        if (mode >= 8 || (mode > 0 && chance(engine, 50)))
            vms.push_back(i);
    return vms;
}

server_action draw_action(engine_t& engine, bool offhost) {
    const unsigned kinds = offhost ? 5 : 4;
    // Whole backups are what a server mostly does; the others come one time in eight each.
    const unsigned roll = below(engine, 8);
    if (roll >= kinds - 1)
        return server_action::backup;
    const std::array<server_action, 4> others = {server_action::close, server_action::disconnect,
                                                 server_action::kill, server_action::offhost};
    return others[roll];
}

engine_t engine_of(std::uint64_t seed, std::uint64_t index, std::uint64_t stream) {
    std::seed_seq sequence{static_cast<std::uint32_t>(seed), static_cast<std::uint32_t>(seed >> 32),
                           static_cast<std::uint32_t>(index), static_cast<std::uint32_t>(index >> 32),
                           static_cast<std::uint32_t>(stream)};
    return engine_t(sequence);
}

} // namespace

job_draw_t draw_job(std::uint64_t seed, std::uint64_t index, const draw_limits_t& limits) {
    engine_t engine = engine_of(seed, index, 1);
    job_draw_t job;
    job.index = index;
    job.vms = draw_vms(engine, limits.vms);
    job.stranger = job.vms.empty() ? chance(engine, 50) : chance(engine, 10);
    for (unsigned n = below(engine, 3); n > 0; --n)
        job.faults.push_back(draw_fault(engine));
    job.action = draw_action(engine, limits.offhost);
    job.moment_ms = below(engine, 1500);
    for (std::size_t i = 0; i < job.vms.size(); ++i)
        job.verdicts.push_back(static_cast<vm_verdict>(below(engine, 3)));
    return job;
}

unsigned draw_concurrency(std::uint64_t seed, std::uint64_t first, unsigned parallel) {
    engine_t engine = engine_of(seed, first, 2);
    return parallel <= 1 ? 1 : 1 + below(engine, parallel);
}

const char* action_name(server_action action) {
    switch (action) {
    case server_action::backup:
        return "backup";
    case server_action::close:
        return "close";
    case server_action::disconnect:
        return "disconnect";
    case server_action::kill:
        return "kill";
    case server_action::offhost:
        return "offhost";
    }
    return "?";
}

const char* verdict_name(vm_verdict verdict) {
    switch (verdict) {
    case vm_verdict::succeeded:
        return "succeeded";
    case vm_verdict::failed:
        return "failed";
    case vm_verdict::unreported:
        return "not-reported";
    }
    return "?";
}

std::string describe(const job_draw_t& job) {
    std::ostringstream out;
    out << "job " << job.index << ": VMs";
    for (unsigned vm : job.vms)
        out << " " << vm;
    if (job.stranger)
        out << " stranger";
    out << "; " << action_name(job.action);
    if (job.action != server_action::backup && job.action != server_action::offhost)
        out << " at " << job.moment_ms << " ms";
    out << "; verdicts";
    for (auto verdict : job.verdicts)
        out << " " << verdict_name(verdict);
    out << "; faults";
    if (job.faults.empty())
        out << " none";
    for (auto& fault : job.faults)
        out << " " << fault.element;
    return out.str();
}

} // namespace lab
