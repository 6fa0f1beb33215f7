#include "tests/dsp/reference/smoother.h"

#include <cmath>

namespace KAV::Reference {

CSmoother::CSmoother(float riseMs, float fallMs) {
    _rise.timeMs = riseMs;
    _fall.timeMs = fallMs;
}

void CSmoother::SetRate(float rateHz) {
    SetHalfRate(_rise, rateHz);
    SetHalfRate(_fall, rateHz);
}

void CSmoother::SetHalfRate(SHalf& half, float rateHz) {
    if (half.rateHz == rateHz) return;
    half.rateHz = rateHz;
    if (half.timeMs == 0.0f) {
        half.coefficient = 0.0f;
        return;
    }
    const double timeMs = half.timeMs;
    const double fraction = half.fraction;
    const double rate = rateHz;
    const double steps = (-timeMs / 1000.0 / std::log(1.0 - fraction)) * rate;
    half.coefficient = static_cast<float>(std::exp(-1.0 / steps));
}

float CSmoother::Step(float state, float target, CCoverage& coverage) const {
    if (target == state) return state;
    const bool rises = target > state;
    const SHalf& half = rises ? _rise : _fall;
    if (std::fabs(state - target) <= 1.0f - half.fraction) {
        coverage.Hit(rises ? ECase::SmootherSnapsUp : ECase::SmootherSnapsDown);
        return target;
    }
    coverage.Hit(rises ? ECase::SmootherRises : ECase::SmootherFalls);
    const float c = half.coefficient;
    return (1.0f - c) * target + c * state;
}

} // namespace KAV::Reference
