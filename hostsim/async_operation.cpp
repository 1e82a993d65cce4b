#include "hostsim/async_operation.h"

namespace hostsim {

async_operation_t::async_operation_t(std::shared_ptr<host_t> host, async_plan_t plan)
    : host_(std::move(host)), plan_(std::move(plan)),
      due_(std::chrono::steady_clock::now() + std::chrono::milliseconds(plan_.delay_ms)) {}

void async_operation_t::end_if_due() {
    if (ended_ || std::chrono::steady_clock::now() < due_)
        return;
    ended_ = true;
    // Cancelled is a success code, yet it means the operation ended without its effect.
    if (plan_.status == VSS_S_ASYNC_CANCELLED) {
        status_ = VSS_S_ASYNC_CANCELLED;
        if (plan_.cancel)
            plan_.cancel();
        return;
    }
    status_ = plan_.finish ? plan_.finish(plan_.status) : plan_.status;
}

HRESULT async_operation_t::QueryStatus(HRESULT* pHrResult, INT*) {
    if (HRESULT hr = host_->refuse("QueryStatus", {plan_.op}, pHrResult))
        return hr;
    std::lock_guard guard(mutex_);
    end_if_due();
    *pHrResult = status_;
    return S_OK;
}

HRESULT async_operation_t::Cancel() {
    if (HRESULT hr = host_->refuse("Cancel", {plan_.op}))
        return hr;
    std::lock_guard guard(mutex_);
    end_if_due();
    if (ended_) {
        if (FAILED(status_))
            return status_; // what the operation met, as VSS answers for one that failed
        return status_ == VSS_S_ASYNC_CANCELLED ? VSS_S_ASYNC_CANCELLED : VSS_S_ASYNC_FINISHED;
    }
    ended_ = true;
    status_ = VSS_S_ASYNC_CANCELLED;
    if (plan_.cancel)
        plan_.cancel();
    return S_OK;
}

} // namespace hostsim
