#include "snapshot/task_worker.h"

#include "common/exc/exc.h"
#include "common/logging/log.h"
#include "common/runtime/win_thread.h"
#include "common/win/event.h"
#include "common/win/wait.h"

#include <list>
#include <mutex>

namespace impl {

struct CTaskWorker::SRun {
    std::function<void()> body;
    std::unique_ptr<win::win_thread_t> thread;

    bool HasEnded() const { return win::wait_for_object(thread->handle(), 0) == win::wait_object_0; }
};

namespace {

// Workers that didn't stop in time. Their runs stay here, reachable, until a
// later stop finds them ended; the list itself is never destroyed, so that
// process exit doesn't wait for a worker that hangs.
class abandoned_runs_t {
public:
    template <typename Run> void Add(std::unique_ptr<Run> run) {
        std::lock_guard<std::mutex> lock(mutex_);
        runs_.push_back(std::shared_ptr<Run>(std::move(run)));
    }
    // The ended runs are freed outside the lock: freeing joins their threads.
    template <typename Run> std::size_t ReapEnded() {
        std::list<std::shared_ptr<void>> ended;
        std::lock_guard<std::mutex> lock(mutex_);
        for (auto it = runs_.begin(); it != runs_.end();) {
            if (static_cast<Run*>(it->get())->HasEnded())
                ended.splice(ended.end(), runs_, it++);
            else
                ++it;
        }
        return runs_.size();
    }

private:
    std::mutex mutex_;
    std::list<std::shared_ptr<void>> runs_;
};

abandoned_runs_t& abandoned_runs() {
    static auto* runs = new abandoned_runs_t();
    return *runs;
}

} // namespace

CTaskWorker::CTaskWorker(const std::string& role, std::shared_ptr<win::win_manual_reset_event_t> closeEvent,
                         std::function<void()> body, DWORD joinLimitMs)
    : closeEvent_(std::move(closeEvent)), run_(std::make_unique<SRun>()), joinLimitMs_(joinLimitMs) {
    run_->body = std::move(body);
    run_->thread = std::make_unique<win::win_thread_t>(&CTaskWorker::Run, run_.get(), role);
}

CTaskWorker::~CTaskWorker() {
    Stop();
}

bool CTaskWorker::HasEnded() const {
    // A worker left running by Stop is no longer this object's to ask about.
    return !run_ || run_->HasEnded();
}

DWORD CTaskWorker::Run(void* run) {
    try {
        static_cast<SRun*>(run)->body();
    } catch (const std::exception& e) {
        log_exception(logging::tool_logger(), e);
    } catch (...) {
        log_error(logging::tool_logger(), "Unknown exception.");
    }
    return 0;
}

std::size_t CTaskWorker::ReapAbandoned() {
    return abandoned_runs().ReapEnded<SRun>();
}

void CTaskWorker::Stop() noexcept {
    if (stopped_)
        return;
    stopped_ = true;
    try {
        closeEvent_->set();
        if (!HasEnded())
            run_->thread->stop_wait_for(joinLimitMs_);
    } catch (const std::exception& e) {
        try {
            log_exception(logging::tool_logger(), e);
        } catch (...) {
        }
    }
    try {
        abandoned_runs().ReapEnded<SRun>();
        if (!HasEnded())
            abandoned_runs().Add(std::move(run_));
    } catch (...) {
        // Out of memory: leaking the run is still safer than freeing it under the worker.
        static_cast<void>(run_.release());
    }
}

} // namespace impl
