#include "native/linux/tick_timer.h"

#include <algorithm>
#include <sys/timerfd.h>
#include <unistd.h>

namespace KAV::Native {

CTickTimer::CTickTimer() noexcept
    : _descriptor(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {}

CTickTimer::~CTickTimer() {
    if (_descriptor >= 0) close(_descriptor);
}

void CTickTimer::Start(std::uint32_t perSecond) const noexcept {
    constexpr std::int64_t second = 1'000'000'000;
    const std::int64_t interval = second / std::clamp<std::int64_t>(perSecond, 1, 1000);
    const timespec time{static_cast<time_t>(interval / second), static_cast<long>(interval % second)};
    const itimerspec setting{time, time};
    timerfd_settime(_descriptor, 0, &setting, nullptr);
}

bool CTickTimer::Take() const noexcept {
    std::uint64_t missed = 0;
    return read(_descriptor, &missed, sizeof(missed)) == sizeof(missed) && missed > 0;
}

} // namespace KAV::Native
