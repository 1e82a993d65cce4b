#include "hostsim/creation_lock.h"

#include "hostsim/wide_text.h"

#include <unistd.h>

#include <algorithm>

namespace hostsim {

bool take_creation(const state_store_t& state, const GUID& set_id) {
    auto lock = state.lock();
    auto creations = state.live_creations();
    if (std::any_of(creations.begin(), creations.end(),
                    [&](const creation_record_t& c) { return c.set_id != set_id; }))
        return false;
    if (creations.empty()) {
        creations.push_back({set_id, this_process(), utc_now_text()});
        state.save_creations(creations);
    }
    return true;
}

void end_creation(const state_store_t& state, const GUID& set_id) {
    auto lock = state.lock();
    auto creations = state.creations();
    if (std::erase_if(creations, [&](const creation_record_t& c) { return c.set_id == set_id; }))
        state.save_creations(creations);
}

std::optional<GUID> creation_of_this_process(const state_store_t& state) {
    const int pid = static_cast<int>(getpid());
    for (auto& c : state.live_creations())
        if (c.owner.pid == pid)
            return c.set_id;
    return std::nullopt;
}

} // namespace hostsim
