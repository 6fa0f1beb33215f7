#include "platform/thread_time.h"

#include <ctime>

namespace KAV::Platform {

namespace {

std::int64_t Nanoseconds(const timespec& time) noexcept {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

} // namespace

std::int64_t ThreadTimeNs() noexcept {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return Nanoseconds(time);
}

std::int64_t ThreadTimeStepNs() noexcept {
    timespec step{};
    clock_getres(CLOCK_THREAD_CPUTIME_ID, &step);
    return Nanoseconds(step);
}

} // namespace KAV::Platform
