#include "utils/clock.h"

#include "platform/system_info.h"

#include <atomic>

namespace KAV::Utils {

namespace {

std::atomic<std::uint32_t (*)() noexcept> testClock{nullptr};

} // namespace

std::uint32_t TickMs() noexcept {
    auto* const clock = testClock.load(std::memory_order_acquire);
    return clock != nullptr ? clock() : Platform::TickMs();
}

void UseClock(std::uint32_t (*clock)() noexcept) noexcept {
    testClock.store(clock, std::memory_order_release);
}

} // namespace KAV::Utils
