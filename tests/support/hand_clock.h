#pragma once

#include "utils/clock.h"

#include <atomic>
#include <cstdint>

namespace KAV::Tests {

/// A clock that advances when the test says so, or when something waits for it, instead of the system's
/// during its lifetime. One at a time.
class CHandClock final {
public:
    explicit CHandClock(std::uint32_t nowMs = 1000) {
        now = nowMs;
        Utils::UseClock([]() noexcept { return now.load(); }, [](std::uint32_t ms) noexcept { now += ms; });
    }
    ~CHandClock() { Utils::UseClock(nullptr); }
    CHandClock(const CHandClock&) = delete;
    CHandClock& operator=(const CHandClock&) = delete;

    void Advance(std::uint32_t ms) noexcept { now += ms; }
    std::uint32_t Now() const noexcept { return now; }

private:
    static inline std::atomic<std::uint32_t> now = 0;
};

} // namespace KAV::Tests
