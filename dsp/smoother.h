#pragma once

#include "utils/realtime.h"

#include <cmath>

namespace KAV::DSP {

/// A one-pole ramp for a value that is updated once per block or sample, with separate times for rising and
/// falling. It holds no value itself: Step() takes the state and returns the next. Threads: the audio thread
/// while audio runs.
class Smoother final {
public:
    /// `riseMs`, `fallMs`: time in which the ramp covers 99 % of a step; 0 jumps. `rateHz`: updates per
    /// second.
    Smoother(float riseMs, float fallMs, float rateHz) noexcept;

    /// Sets the updates per second of both halves; costs two exponentials, and only if the rate has changed.
    KAV_REALTIME void SetRate(float rateHz) noexcept {
        _rise.SetRate(rateHz);
        _fall.SetRate(rateHz);
    }

    /// Sets the ramp's times, as in the constructor.
    KAV_REALTIME void SetTimes(float riseMs, float fallMs) noexcept {
        _rise.SetTime(riseMs);
        _fall.SetTime(fallMs);
    }

    /// The fraction of the distance that remains after one step, 0..1.
    KAV_REALTIME float RiseCoefficient() const noexcept { return _rise.coefficient; }
    KAV_REALTIME float FallCoefficient() const noexcept { return _fall.coefficient; }

    /// One step from `state` towards `target`. Arrives exactly once the distance is at most 0.01.
    KAV_REALTIME float Step(float state, float target) const noexcept {
        // A conditional move instead of branches: whether a meter rises or falls can't be predicted.
        const float kept = target > state ? _rise.coefficient : _fall.coefficient;
        const float next = (1.0f - kept) * target + kept * state;
        return std::fabs(state - target) <= 1.0f - Fraction ? target : next;
    }

private:
    static constexpr float Fraction = 0.99f; // of a step, covered within the time

    struct SHalf {
        float rateHz;
        float timeMs;
        float coefficient = 0.0f; // fraction of the distance left after one step, 0..1

        void SetRate(float newRateHz) noexcept {
            if (newRateHz == rateHz) return;
            rateHz = newRateHz;
            Compute();
        }
        void SetTime(float newTimeMs) noexcept {
            if (newTimeMs == timeMs) return;
            timeMs = newTimeMs;
            Compute();
        }
        void Compute() noexcept;
    };

    SHalf _rise;
    SHalf _fall;
};

} // namespace KAV::DSP
