#include "utils/clock.h"

#include "platform/system_info.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace KAV::Utils {

namespace {

std::atomic<std::uint32_t (*)() noexcept> testClock{nullptr};
std::atomic<void (*)(std::uint32_t ms) noexcept> testWait{nullptr};

} // namespace

std::uint32_t TickMs() noexcept {
    auto* const clock = testClock.load(std::memory_order_acquire);
    return clock != nullptr ? clock() : Platform::TickMs();
}

void WaitMs(std::uint32_t ms) {
    auto* const wait = testWait.load(std::memory_order_acquire);
    if (wait != nullptr) return wait(ms);
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void UseClock(std::uint32_t (*clock)() noexcept, void (*wait)(std::uint32_t ms) noexcept) noexcept {
    testClock.store(clock, std::memory_order_release);
    testWait.store(wait, std::memory_order_release);
}

} // namespace KAV::Utils
