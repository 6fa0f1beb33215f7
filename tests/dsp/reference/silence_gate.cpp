#include "tests/dsp/reference/silence_gate.h"

#include <cmath>

namespace KAV::Reference {

void CSilenceGate::SetRate(float rateHz) {
    _limit = 5 * static_cast<std::uint64_t>(rateHz);
}

void CSilenceGate::Watch(const float* channel, int length, CCoverage& coverage) {
    for (int i = 0; i < length; ++i) {
        const bool tiny = std::fabs(channel[i]) < 2e-8f;
        if (tiny && !_silent) {
            // Only the exact count closes the gate: a limit that shrinks below the count has no effect.
            if (_count == _limit) {
                _silent = true;
                coverage.Hit(ECase::GateCloses);
            }
            coverage.HitIf(_count > _limit, ECase::GateLimitPassed);
            ++_count;
        }
        if (!tiny) {
            _count = 0;
            coverage.HitIf(_silent, ECase::GateReopens);
            _silent = false;
        }
    }
}

bool CSilenceGate::IsSilent() const {
    return _silent;
}

} // namespace KAV::Reference
