#pragma once

#include "tools/kavhost/base/random.h"

#include <cstdint>
#include <span>

namespace KAV::Host {

/// Rounds samples to whole numbers of 8 to 32 bits. What does not fit is clipped to the nearest value that
/// does, so nothing wraps; not-a-number becomes 0. Dither adds triangular noise of two steps' width
/// before rounding, which makes the error's mean and power independent of the signal; its noise is the same
/// in every run.
class CQuantiser final {
public:
    CQuantiser(int bits, bool dither) noexcept;

    /// Full scale is -1 to 1. `results` are aligned to the top of 32 bits; the bits below the format's are 0.
    void Quantise(std::span<const float> samples, std::span<std::int32_t> results) noexcept;
    std::int32_t Quantise(float sample) noexcept;

    /// Samples so far that lay more than a step beyond the format's range. Full scale itself is one step
    /// above the highest number.
    std::uint64_t Clipped() const noexcept { return _clipped; }
    double ClippedBySteps() const noexcept { return _clippedBy; } ///< how far the farthest of them did

private:
    int _shift;    ///< from the format's lowest bit to 32 bits' lowest
    double _scale; ///< steps from 0 to full scale
    bool _dither;
    std::uint64_t _clipped = 0;
    double _clippedBy = 0;
    CRandom _random;
};

/// The sample that such a number stands for.
float SampleOf(std::int32_t topAligned) noexcept;

} // namespace KAV::Host
