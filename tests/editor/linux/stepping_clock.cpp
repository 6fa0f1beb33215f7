// Preloaded into a process: adds the number of seconds that the file KAV_CLOCK_STEP holds, as a 64-bit
// integer, to every time of day that the process asks for. The number may change at any moment.

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

const volatile std::int64_t* Map() noexcept {
    static const std::int64_t none = 0;
    const char* const file = std::getenv("KAV_CLOCK_STEP");
    const int descriptor = file != nullptr ? open(file, O_RDONLY | O_CLOEXEC) : -1;
    if (descriptor < 0) return &none;
    void* const map = mmap(nullptr, sizeof(std::int64_t), PROT_READ, MAP_SHARED, descriptor, 0);
    close(descriptor);
    return map != MAP_FAILED ? static_cast<const std::int64_t*>(map) : &none;
}

std::time_t Step() noexcept {
    static const volatile std::int64_t* const step = Map();
    return static_cast<std::time_t>(*step);
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    const auto result = syscall(SYS_clock_gettime, clock, now);
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)) now->tv_sec += Step();
    return static_cast<int>(result);
}

std::time_t time(std::time_t* where) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (where != nullptr) *where = now.tv_sec;
    return now.tv_sec;
}

int gettimeofday(timeval* now, void*) noexcept {
    timespec exact{};
    clock_gettime(CLOCK_REALTIME, &exact);
    now->tv_sec = exact.tv_sec;
    now->tv_usec = exact.tv_nsec / 1000;
    return 0;
}
}
