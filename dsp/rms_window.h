#pragma once

#include "utils/realtime.h"
#include "utils/zeroed_doubles.h"

#include <cstddef>
#include <span>

namespace KAV::DSP {

/// Root of the mean square over the last `length` pushes, by a running sum.
/// Threads: WithRate() while audio is stopped; the rest on the audio thread, allocates nothing.
class RmsWindow final {
public:
    /// The RMS of a window without any signal: -144 dB.
    static constexpr double Floor = 6.30957344480193e-8;

    /// A new window of the same time at another rate, with room for ten seconds. The memory isn't touched
    /// yet. Throws std::bad_alloc.
    RmsWindow WithRate(double rateHz) const;
    /// Length of the window, from one sample to ten seconds. Changing it empties the window.
    KAV_REALTIME void SetTime(double timeMs) noexcept;
    /// Pushes the mean over all channels of (gain x value) squared.
    KAV_REALTIME void Push(std::span<const double> values, double gain) noexcept;
    KAV_REALTIME double Rms() const noexcept;
    /// Empties the window if it contains not-a-number or infinity.
    KAV_REALTIME void Recover() noexcept;

private:
    void Reset() noexcept;
    void Empty() noexcept;

    Utils::CZeroedDoubles _buffer; // squares, for ten seconds
    double _rateHz = 0.0;
    double _timeMs = 0.0;
    double _sum = 0.0;       // of what the window holds
    std::size_t _length = 0; // 1 <= _length <= _buffer.Size() once there is a rate
    std::size_t _index = 0;  // where the next square goes; 0 <= _index < _length
    bool _full = false;
};

} // namespace KAV::DSP
