#include "common/win/robust_mutex_posix.h"

#include <cerrno>
#include <system_error>

namespace win::posix {

robust_mutex_t::robust_mutex_t() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    const int error = pthread_mutex_init(&mutex_, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), "pthread_mutex_init");
}

robust_mutex_t::~robust_mutex_t() {
    pthread_mutex_destroy(&mutex_);
}

void robust_mutex_t::lock() {
    const int error = pthread_mutex_lock(&mutex_);
    if (error == 0)
        return;
    // The holder died with it: what it guarded is taken as it stands, which for every user of this
    // lock is a state that a later call can work with.
    if (error == EOWNERDEAD && pthread_mutex_consistent(&mutex_) == 0)
        return;
    throw std::system_error(error, std::generic_category(), "pthread_mutex_lock");
}

void robust_mutex_t::unlock() noexcept {
    pthread_mutex_unlock(&mutex_);
}

} // namespace win::posix
