// IVssAsync of the simulator. An operation finishes at its first QueryStatus, unless
// a fault keeps it pending for a while; Cancel ends it at once, and of one that has
// ended already it answers how it ended.
#pragma once

#include "compat/vss_api.h"
#include "hostsim/com_object.h"
#include "hostsim/host.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace hostsim {

struct async_plan_t {
    std::wstring op;                       // the call that started it, for the journal
    HRESULT status = VSS_S_ASYNC_FINISHED; // a fault's status, or finished
    unsigned delay_ms = 0;
    // Runs once when the operation ends by itself, with the planned status; returns the
    // status the operation ends with.
    std::function<HRESULT(HRESULT)> finish;
    // Runs once when the operation is cancelled before it ended, or ends with a planned
    // cancelled status (in place of finish).
    std::function<void()> cancel;
};

class async_operation_t final : public com_object_t<IVssAsync> {
public:
    async_operation_t(std::shared_ptr<host_t> host, async_plan_t plan);

    HRESULT STDMETHODCALLTYPE Cancel() override;
    HRESULT STDMETHODCALLTYPE QueryStatus(HRESULT* pHrResult, INT* pReserved) override;

private:
    bool answers_to(REFIID riid) const override { return riid == IID_IVssAsync; }
    void end_if_due();

    std::shared_ptr<host_t> host_;
    async_plan_t plan_;
    std::chrono::steady_clock::time_point due_;
    std::mutex mutex_;
    bool ended_ = false;
    HRESULT status_ = VSS_S_ASYNC_PENDING;
};

} // namespace hostsim
