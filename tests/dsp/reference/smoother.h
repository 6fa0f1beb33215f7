#pragma once

#include "tests/dsp/reference/coverage.h"

namespace KAV::Reference {

/// One-pole ramp for a value stepped once per block, with separate times for rising and falling.
class CSmoother final {
public:
    explicit CSmoother(float riseMs, float fallMs);
    void SetRate(float rateHz); // steps per second

    /// The state after one step from `state` towards `target`.
    float Step(float state, float target, CCoverage& coverage) const;

private:
    struct SHalf {
        float rateHz = 0.0f;
        float fraction = 0.99f; // of a step, covered within the time
        float timeMs = 0.0f;
        float coefficient = 0.0f;
    };
    static void SetHalfRate(SHalf& half, float rateHz);
    SHalf _rise;
    SHalf _fall;
};

} // namespace KAV::Reference
