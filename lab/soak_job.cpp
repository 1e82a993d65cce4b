#include "lab/soak_job.h"

#include "lab/soak_road.h"
#include "lab/tool_process.h"

#include "common/exc/convert.h"
#include "common/format/format.h"
#include "hostsim/wide_text.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace lab {

namespace fs = std::filesystem;
using steady_clock_t = std::chrono::steady_clock;

namespace {

// Startup, a whole road and the end of a tool, with room for a sanitizer on a busy two-core machine.
constexpr unsigned base_budget_ms = 60000;
// How long a client tries to reach a tool that is starting, in tries short enough to notice a
// tool that the draw killed before it made its pipe.
constexpr unsigned connect_tries = 40;
constexpr DWORD connect_try_ms = 500;

unsigned budget_of(const job_draw_t& draw) {
    unsigned delays = 0;
    for (auto& fault : draw.faults)
        delays += fault.delay_ms;
    // A delay without nth holds every call of its operation, and a job makes a few.
    return base_budget_ms + 4 * delays;
}

// Kills the host tool at the draw's moment, and every tool of a job that outlives its budget.
class job_watch_t {
public:
    job_watch_t(const job_draw_t& draw, steady_clock_t::time_point origin, job_record_t& record)
        : kill_at(draw.action == server_action::kill ? origin + std::chrono::milliseconds(draw.moment_ms)
                                                     : steady_clock_t::time_point::max()),
          deadline(origin + std::chrono::milliseconds(record.budget_ms)), thread([this] { watch(); }) {}
    ~job_watch_t() {
        {
            std::lock_guard guard(mutex);
            done = true;
        }
        wake.notify_all();
        thread.join();
    }

    void add(tool_process_t& tool) {
        std::lock_guard guard(mutex);
        tools.push_back(&tool);
        if (killed_by_draw && tools.size() == 1)
            tool.kill();
    }
    bool killed() {
        std::lock_guard guard(mutex);
        return killed_by_draw || hung;
    }
    bool hang_seen() {
        std::lock_guard guard(mutex);
        return hung;
    }

private:
    void watch() {
        std::unique_lock lock(mutex);
        if (!wake.wait_until(lock, std::min(kill_at, deadline), [this] { return done; }) &&
            kill_at <= deadline) {
            killed_by_draw = true;
            if (!tools.empty())
                tools.front()->kill();
        }
        if (!wake.wait_until(lock, deadline, [this] { return done; })) {
            hung = true;
            for (auto* tool : tools)
                tool->kill();
        }
    }

    const steady_clock_t::time_point kill_at;
    const steady_clock_t::time_point deadline;
    std::mutex mutex;
    std::condition_variable wake;
    std::vector<tool_process_t*> tools;
    bool done = false;
    bool killed_by_draw = false;
    bool hung = false;
    std::thread thread;
};

std::vector<road_vm_t> road_vms(const soak_hosts_t& hosts, const job_draw_t& draw,
                                const std::string& document) {
    std::vector<road_vm_t> vms;
    for (auto& vm : client::SpecVms(document)) {
        road_vm_t entry{vm, vm_verdict::unreported};
        for (std::size_t i = 0; i < draw.vms.size(); ++i)
            if (hostsim::iequals(hosts.vms[draw.vms[i]].id, vm.id))
                entry.verdict = draw.verdicts[i];
        vms.push_back(entry);
    }
    return vms;
}

// A tool of the job with its client; the client hears every frame for the record.
struct tool_link_t {
    std::unique_ptr<tool_process_t> process;
    std::unique_ptr<client::CInvokeClient> client;
};

tool_link_t start_tool(const fs::path& tool, const fs::path& view, const std::string& pipe,
                       job_watch_t& watch, job_record_t& record) {
    tool_link_t link;
    fs::create_directories(view / "run");
    link.process = std::make_unique<tool_process_t>(tool, view, pipe, view / "run");
    watch.add(*link.process);
    for (unsigned attempt = 1; !link.client; ++attempt) {
        try {
            link.client = client::CInvokeClient::Connect(to_unicode(pipe), connect_try_ms);
        } catch (const std::exception&) {
            if (attempt == connect_tries || watch.killed())
                throw;
        }
    }
    link.client->Observe([&record](const client::exchange_t& exchange) {
        if (!exchange.response.empty())
            record.frames.push_back(exchange.response);
    });
    return link;
}

tool_end_t end_of(const std::string& role, tool_process_t& process, bool killed) {
    return {role, process.pid(), process.wait(), killed, process.log(), process.output()};
}

} // namespace

job_record_t run_job(const soak_hosts_t& hosts, const job_draw_t& draw, const fs::path& folder,
                     const fs::path& tool) {
    job_record_t record;
    record.draw = draw;
    record.folder = folder;
    record.budget_ms = budget_of(draw);
    const bool offhost = draw.action == server_action::offhost;
    std::vector<std::string> faults;
    for (auto& fault : draw.faults)
        faults.push_back(fault.element);
    make_host_view(hosts.host, folder / "host", faults);
    if (offhost)
        make_host_view(hosts.proxy, folder / "proxy", faults);
    write_job_spec(folder / "spec.xml", hosts, draw.vms, draw.stranger, offhost);
    const std::string document = client::ReadSpecDocument(folder / "spec.xml");
    const std::vector<road_vm_t> vms = road_vms(hosts, draw, document);

    const std::string pipe = "soak-" + std::to_string(draw.index);
    const auto origin = steady_clock_t::now();
    tool_link_t host, proxy;
    {
        job_watch_t watch(draw, origin, record);
        try {
            host = start_tool(tool, folder / "host", pipe + "-host", watch, record);
            const road_links_t links{*host.client,
                                     [&]() -> client::CInvokeClient& {
                                         proxy = start_tool(tool, folder / "proxy", pipe + "-proxy", watch,
                                                            record);
                                         return *proxy.client;
                                     },
                                     [&] { return watch.killed(); }};
            drive_road(document, vms, links, origin, record);
        } catch (const std::exception& e) {
            if (!watch.killed())
                record.trouble = e.what();
        }
        host.client.reset();
        proxy.client.reset();
        // The tools end on their own once their client has gone, or the watch ends them.
        for (auto* link : {&host, &proxy})
            if (link->process)
                link->process->wait();
        record.hung = watch.hang_seen();
        const bool killed = watch.killed();
        if (host.process)
            record.tools.push_back(end_of("host", *host.process, killed));
        if (proxy.process)
            record.tools.push_back(end_of("proxy", *proxy.process, record.hung));
    }
    return record;
}

} // namespace lab
