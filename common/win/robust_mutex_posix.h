// A lock that outlives a thread that dies holding it. The crash frame abandons a worker without
// unwinding, and the thread then ends with whatever it held; the next thread to lock takes the
// lock over instead of waiting for ever.
#pragma once

#include <pthread.h>

namespace win::posix {

class robust_mutex_t {
public:
    robust_mutex_t();
    ~robust_mutex_t();
    robust_mutex_t(const robust_mutex_t&) = delete;
    robust_mutex_t& operator=(const robust_mutex_t&) = delete;

    // Throws std::system_error only for a lock that cannot be taken at all.
    void lock();
    void unlock() noexcept;

private:
    pthread_mutex_t mutex_;
};

} // namespace win::posix
