#include "client/vm_backup_steps.h"

#include "client/subcommand.h"
#include "client/terminal.h"
#include "common/format/format.h"

#include <chrono>
#include <cstdio>
#include <ostream>

namespace client {

namespace {

std::string status_text(bool failedOnRequest, const vm_copy_t& copy) {
    if (failedOnRequest)
        return "reported failed (--fail-vm)";
    return copy.Complete() ? "reported OK" : "reported failed (copy incomplete)";
}

} // namespace

void CheckFailedVmsAreInSpec(const backup_arguments_t& arguments, const std::vector<spec_vm_t>& vms) {
    for (const GUID& failed : arguments.failVms) {
        bool found = false;
        for (const spec_vm_t& vm : vms)
            found = found || vm.guid == failed;
        if (!found)
            throw usage_error_t{"--fail-vm " + to_ansi_nothrow(guid_to_wstring(failed)) +
                                " names no VM of the backup specification."};
    }
}

status_observer_t WaitLineOn(std::ostream& out, const std::string& activity, const std::string& task) {
    const auto start = std::chrono::steady_clock::now();
    const bool inPlace = IsTerminal(out);
    return [&out, start, inPlace, activity, task](const operation_status_t& status, unsigned polls) {
        const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        char line[160];
        if (!status.isCompleted && !inPlace)
            return;
        if (!status.isCompleted)
            std::snprintf(line, sizeof line, "\r%s: poll %u, %.1f s", activity.c_str(), polls, seconds);
        else
            std::snprintf(line, sizeof line, "%s%s %s after %u poll%s (%.1f s).\n", inPlace ? "\r" : "",
                          task.c_str(), status.isSucceeded ? "completed" : "failed", polls,
                          polls == 1 ? "" : "s", seconds);
        out << line << std::flush;
    };
}

std::vector<vm_copy_t> ListVmItems(const vm_items_source_t& itemsOf, const std::vector<spec_vm_t>& vms,
                                   const std::filesystem::path& dir, std::ostream& out) {
    std::vector<vm_copy_t> copies;
    for (const spec_vm_t& vm : vms) {
        try {
            const ItemsList items = itemsOf(vm);
            copies.push_back(PlanVmCopy(vm.id, items, dir));
            out << "  " << to_ansi_nothrow(vm.id) << ": " << items.size() << " files\n";
        } catch (const server_failure_exc_t& e) {
            copies.push_back({vm.id, {}, 0, 0, {e.what()}});
            out << "  " << to_ansi_nothrow(vm.id) << ": no list\n";
        }
    }
    return copies;
}

vm_items_work_t BackupWork(const backup_arguments_t& arguments) {
    return {"Copying into " + arguments.targetDir.string() + ":", arguments.targetDir, &CopyVmItems,
            [failVms = arguments.failVms](const spec_vm_t& vm, const vm_copy_t& copy) {
                const bool failedOnRequest = IsListed(failVms, vm.guid);
                return vm_verdict_t{!failedOnRequest && copy.Complete(), status_text(failedOnRequest, copy)};
            }};
}

std::vector<vm_summary_row_t> WorkAndReportVms(CInvokeClient& host, const vm_items_source_t& itemsOf,
                                               const std::vector<spec_vm_t>& vms, const vm_items_work_t& work,
                                               std::ostream& out) {
    std::vector<vm_copy_t> copies = ListVmItems(itemsOf, vms, work.dir, out);
    out << work.heading << '\n';
    work.run(copies, out);
    std::vector<vm_summary_row_t> rows;
    for (std::size_t i = 0; i < vms.size(); ++i) {
        const vm_verdict_t verdict = work.verdict(vms[i], copies[i]);
        ReportVmStatus(host, vms[i].guid, verdict.succeeded);
        rows.push_back(
            {vms[i].id, copies[i].filesCopied, copies[i].bytesCopied, verdict.status, copies[i].failures});
    }
    return rows;
}

int RowsExitStatus(const std::vector<vm_summary_row_t>& rows) {
    for (const vm_summary_row_t& row : rows) {
        if (!row.notes.empty())
            return exit_error_response;
    }
    return exit_success;
}

} // namespace client
