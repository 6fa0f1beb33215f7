#include "platform/thread_time.h"

#include <ctime>

namespace KAV::Platform {

std::int64_t ThreadTimeNs() noexcept {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

} // namespace KAV::Platform
