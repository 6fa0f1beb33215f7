#pragma once

#include <cstdint>

namespace KAV::Native {

/// Wakes a poll() at a steady rate: every 1/30, 1/60 or 1/100 s, to the nanosecond. Threads: one.
class CTickTimer final {
public:
    CTickTimer() noexcept; ///< not running
    ~CTickTimer();
    CTickTimer(const CTickTimer&) = delete;
    CTickTimer& operator=(const CTickTimer&) = delete;

    bool IsThere() const noexcept { return _descriptor >= 0; } ///< false: the system has no more descriptors
    int Descriptor() const noexcept { return _descriptor; }    ///< readable when a tick is due
    void Start(std::uint32_t perSecond) const noexcept;        ///< 1 to 1000
    /// Whether a tick has been due since the last call, once for all that have been missed.
    bool Take() const noexcept;

private:
    int _descriptor;
};

} // namespace KAV::Native
