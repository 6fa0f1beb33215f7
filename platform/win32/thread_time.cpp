#include "platform/thread_time.h"

#include <windows.h>

namespace KAV::Platform {

namespace {

std::int64_t Count(const FILETIME& time) noexcept {
    return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

} // namespace

std::int64_t ThreadTimeNs() noexcept {
    FILETIME created{}, ended{}, kernel{}, user{};
    GetThreadTimes(GetCurrentThread(), &created, &ended, &kernel, &user);
    return (Count(kernel) + Count(user)) * 100;
}

std::int64_t ThreadTimeStepNs() noexcept {
    return 15'625'000; // the scheduler's tick, 64 per second, unless a program has requested a faster one
}

} // namespace KAV::Platform
