#include "lab/soak_road.h"

#include "client/offhost_road.h"
#include "client/snapshot_road.h"
#include "common/exc/exc.h"
#include "common/format/format.h"

#include <thread>

namespace lab {

namespace {

using client::CInvokeClient;
using client::server_failure_exc_t;

constexpr std::chrono::milliseconds poll_interval{20};

// The server leaves the road here: after its close or its disconnect, or after a failure.
struct road_left_t {};

class road_t {
public:
    road_t(const std::vector<road_vm_t>& vms_, const road_links_t& links_,
           std::chrono::steady_clock::time_point origin, job_record_t& record_)
        : vms(vms_), links(links_), record(record_),
          moment(origin + std::chrono::milliseconds(record_.draw.moment_ms)) {}

    void run(const std::string& spec_document) {
        const client::backup_job_t job{L"Soak", L"Soak console", spec_document};
        step([&] { client::BeginSnapshot(links.host, job); });
        wait_for_task(links.host);
        client::snapshot_documents_t documents;
        step([&] { documents = client::GetSnapshotDocuments(links.host); });
        CInvokeClient* proxy = nullptr;
        if (record.draw.action == server_action::offhost && !documents.snapshotsXml.empty())
            proxy = import(documents, job);
        for (auto& vm : vms)
            list_items(vm.vm, proxy);
        for (auto& vm : vms)
            report(vm);
        // The proxy lets go of the copies it read before the host completes the backup.
        if (proxy)
            close_session(*proxy);
        close_session(links.host);
    }

    // The close or disconnect of the draw, when its moment has come.
    void checkpoint() {
        const auto action = record.draw.action;
        if ((action != server_action::close && action != server_action::disconnect) ||
            std::chrono::steady_clock::now() < moment)
            return;
        host_left = true;
        if (action == server_action::close)
            close_session(links.host);
        links.host.Disconnect();
        throw road_left_t{};
    }

private:
    template <class call_t> void step(const call_t& call) {
        checkpoint();
        try {
            call();
        } catch (const server_failure_exc_t&) {
            leave(links.host);
        }
    }

    void wait_for_task(CInvokeClient& tool) {
        const client::status_observer_t observer = [&](const client::operation_status_t& status, unsigned) {
            if (status.isCompleted && !status.isSucceeded)
                record.task_failures.push_back(status.errDescription);
            if (!status.isCompleted)
                checkpoint();
        };
        checkpoint();
        try {
            client::WaitForCompletion(tool, observer, poll_interval);
        } catch (const server_failure_exc_t&) {
            leave(tool);
        }
    }

    CInvokeClient* import(const client::snapshot_documents_t& documents, const client::backup_job_t& job) {
        CInvokeClient& proxy = links.proxy();
        try {
            client::BeginSnapshotImport(proxy, documents, job);
            wait_for_task(proxy);
            return &proxy;
        } catch (const server_failure_exc_t&) {
            proxy.Disconnect();
        } catch (const road_left_t&) {
            // A failed import has ended the proxy's session only; the host's close or disconnect
            // ends the road.
            if (host_left) {
                close_session(proxy);
                throw;
            }
        }
        return nullptr;
    }

    void list_items(const client::spec_vm_t& vm, CInvokeClient* proxy) {
        checkpoint();
        try {
            const ItemsList items = client::GetVmItems(links.host, vm.guid);
            if (proxy)
                client::ConvertOffhostPaths(*proxy, items);
        } catch (const server_failure_exc_t&) {
            // A VM whose items can't be had is a failed VM, not a failed backup.
        }
    }

    void report(const road_vm_t& vm) {
        if (vm.verdict == vm_verdict::unreported)
            return;
        checkpoint();
        const bool succeeded = vm.verdict == vm_verdict::succeeded;
        try {
            client::ReportVmStatus(links.host, vm.vm.guid, succeeded);
            record.verdicts.emplace_back(vm.vm.id, succeeded);
        } catch (const server_failure_exc_t&) {
        }
    }

    // Closes the task, whatever the answer, and ends the session.
    static void close_session(CInvokeClient& tool) {
        try {
            client::CloseSnapshotTask(tool);
        } catch (const server_failure_exc_t&) {
        }
        tool.Disconnect();
    }

    [[noreturn]] void leave(CInvokeClient& tool) {
        close_session(tool);
        host_left = host_left || &tool == &links.host;
        throw road_left_t{};
    }

    const std::vector<road_vm_t>& vms;
    const road_links_t& links;
    job_record_t& record;
    const std::chrono::steady_clock::time_point moment;
    bool host_left = false;
};

} // namespace

void drive_road(const std::string& spec_document, const std::vector<road_vm_t>& vms,
                const road_links_t& links, std::chrono::steady_clock::time_point origin,
                job_record_t& record) {
    road_t road(vms, links, origin, record);
    try {
        road.run(spec_document);
    } catch (const road_left_t&) {
    } catch (const std::exception& e) {
        if (!links.killed())
            record.trouble = e.what();
    }
}

} // namespace lab
