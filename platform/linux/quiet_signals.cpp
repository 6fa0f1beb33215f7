#include "platform/quiet_signals.h"

#include <csignal>
#include <new>
#include <pthread.h>

namespace KAV::Platform {

CQuietSignals::CQuietSignals() noexcept {
    static_assert(sizeof(sigset_t) <= sizeof(_before));
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, new (_before) sigset_t);
}

CQuietSignals::~CQuietSignals() {
    pthread_sigmask(SIG_SETMASK, std::launder(reinterpret_cast<sigset_t*>(_before)), nullptr);
}

} // namespace KAV::Platform
