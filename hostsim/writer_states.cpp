#include "hostsim/writer_states.h"

#include <algorithm>

namespace hostsim {

namespace {

VSS_WRITER_STATE state_after(writer_phase phase) {
    switch (phase) {
    case writer_phase::identify:
        return VSS_WS_STABLE;
    case writer_phase::prepare:
        return VSS_WS_WAITING_FOR_FREEZE;
    case writer_phase::snapshot:
        return VSS_WS_WAITING_FOR_BACKUP_COMPLETE;
    case writer_phase::complete:
        return VSS_WS_STABLE;
    }
    return VSS_WS_UNKNOWN;
}

} // namespace

std::vector<writer_status_t> writer_states_t::report(const std::vector<const writer_t*>& writers,
                                                     const std::vector<writer_fault_t>& faults) const {
    std::vector<writer_status_t> statuses;
    for (const writer_t* w : writers) {
        writer_status_t s{w->instance, w->id, w->name, VSS_WS_STABLE, S_OK};
        if (aborted_) {
            statuses.push_back(s);
            continue;
        }
        if (!passed_.empty())
            s.state = state_after(passed_.back());
        // The earliest phase that failed is what the writer keeps reporting.
        for (writer_phase phase : passed_) {
            auto fault = std::find_if(faults.begin(), faults.end(), [&](const writer_fault_t& f) {
                return f.writer == w->id && f.at == phase;
            });
            if (fault != faults.end()) {
                s.state = fault->state;
                s.failure = fault->hr;
                break;
            }
        }
        statuses.push_back(s);
    }
    return statuses;
}

} // namespace hostsim
