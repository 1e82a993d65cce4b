// What each worker thread is doing: a process-wide collection of thread
// states under their roles, each with the stack of steps that the log blocks
// push and pop.
#pragma once

#include "compat/win_types.h"

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace monitoring {

class CThreadTrace {
public:
    CThreadTrace(DWORD tick_count, std::string text) : tick_count_(tick_count), text_(std::move(text)) {}
    DWORD tick_count() const { return tick_count_; }
    const std::string& text() const { return text_; }

private:
    DWORD tick_count_;
    std::string text_;
};

// Changed only by its own thread, so the steps need no lock.
class CThreadState {
public:
    CThreadState(std::string role, DWORD thread_id) : role_(std::move(role)), thread_id_(thread_id) {}

    void push(const std::string& text);
    // Takes the last step; nothing when there is none.
    void pop();

    const std::string& role() const { return role_; }
    DWORD thread_id() const { return thread_id_; }
    // In push order. Read it on the state's own thread, or after that thread
    // has synchronised with the reader.
    const std::vector<std::shared_ptr<CThreadTrace>>& steps() const { return steps_; }

private:
    std::string role_;
    DWORD thread_id_;
    std::vector<std::shared_ptr<CThreadTrace>> steps_;
};

class CThreadStatesCollection {
public:
    // The process-wide collection, made on first use.
    static std::shared_ptr<CThreadStatesCollection> get();

    // Adds the state under its thread id; false, and nothing replaced, when
    // the id is there already.
    bool add(const std::shared_ptr<CThreadState>& state);
    void remove(DWORD thread_id);
    std::shared_ptr<CThreadState> find(DWORD thread_id) const;
    std::size_t size() const;

private:
    mutable std::recursive_mutex lock_;
    std::map<DWORD, std::shared_ptr<CThreadState>> states_;
};

// For the log blocks: a step on the calling thread's state, if the thread has
// one (threads not started as win::win_thread_t have none). Never throw.
void push_step(const std::string& text) noexcept;
void pop_step() noexcept;

} // namespace monitoring
