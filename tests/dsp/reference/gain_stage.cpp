#include "tests/dsp/reference/gain_stage.h"

#include <cmath>

namespace KAV::Reference {

void CGainStage::SetGain(float gain) {
    _gain = gain;
}

void CGainStage::Apply(float* channel, int length, CCoverage& coverage) const {
    if (_gain == 1.0f || _mix == 0.0f || _off) {
        coverage.Hit(ECase::GainUnity);
        return;
    }
    coverage.Hit(ECase::GainApplied);
    for (int i = 0; i < length; ++i) {
        const float x = channel[i];
        coverage.HitIf(std::isinf(x), ECase::GainOnInfinity);
        channel[i] = _mix * _gain * x + (1.0f - _mix) * x;
    }
}

} // namespace KAV::Reference
