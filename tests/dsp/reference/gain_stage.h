#pragma once

#include "tests/dsp/reference/coverage.h"

namespace KAV::Reference {

/// A gain with a dry/wet mix. An infinite sample times a dry share of zero is NaN, and stays so.
class CGainStage final {
public:
    void SetGain(float gain);
    void Apply(float* channel, int length, CCoverage& coverage) const;

private:
    bool _off = false;
    float _mix = 1.0f;
    float _gain = 1.0f;
};

} // namespace KAV::Reference
