// What runs after a crash dump: handlers registered by the application, in
// order of registration.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

namespace crash {

class deinit_handler_t {
public:
    virtual ~deinit_handler_t() = default;
    virtual void execute() = 0;
};

class deinit_seq_t {
public:
    void add(std::shared_ptr<deinit_handler_t> handler);
    // Calls each handler in turn under the sequence's lock; the first failure
    // stops the walk and goes to the caller.
    void execute_all();
    std::size_t size() const;

private:
    mutable std::mutex lock_;
    std::vector<std::shared_ptr<deinit_handler_t>> handlers_;
};

// Runs the sequence inside a log block; a failure is logged and kept inside.
void run_crash_handlers(deinit_seq_t& sequence) noexcept;

} // namespace crash
