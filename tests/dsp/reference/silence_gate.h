#pragma once

#include "tests/dsp/reference/coverage.h"

#include <cstdint>

namespace KAV::Reference {

/// Detects that a channel has been inaudible for so long that the path may drop it.
class CSilenceGate final {
public:
    void SetRate(float rateHz); // the limit becomes five seconds of whole-hertz samples
    void Watch(const float* channel, int length, CCoverage& coverage);
    bool IsSilent() const;

private:
    std::uint64_t _limit = 5 * 44100;
    std::uint64_t _count = 0;
    bool _silent = false;
};

} // namespace KAV::Reference
