#include "common/monitoring/thread_states.h"

#include "common/win/thread_id.h"

namespace monitoring {

void CThreadState::push(const std::string& text) {
    steps_.push_back(std::make_shared<CThreadTrace>(win::tick_count(), text));
}

void CThreadState::pop() {
    if (!steps_.empty())
        steps_.pop_back();
}

std::shared_ptr<CThreadStatesCollection> CThreadStatesCollection::get() {
    static const std::shared_ptr<CThreadStatesCollection> collection =
        std::make_shared<CThreadStatesCollection>();
    return collection;
}

bool CThreadStatesCollection::add(const std::shared_ptr<CThreadState>& state) {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return states_.emplace(state->thread_id(), state).second;
}

void CThreadStatesCollection::remove(DWORD thread_id) {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    states_.erase(thread_id);
}

std::shared_ptr<CThreadState> CThreadStatesCollection::find(DWORD thread_id) const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    auto it = states_.find(thread_id);
    return it == states_.end() ? nullptr : it->second;
}

std::size_t CThreadStatesCollection::size() const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return states_.size();
}

void push_step(const std::string& text) noexcept {
    try {
        if (auto state = CThreadStatesCollection::get()->find(win::current_thread_id()))
            state->push(text);
    } catch (...) {
    }
}

void pop_step() noexcept {
    try {
        if (auto state = CThreadStatesCollection::get()->find(win::current_thread_id()))
            state->pop();
    } catch (...) {
    }
}

} // namespace monitoring
