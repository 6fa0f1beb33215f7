#include "tools/kavhost/audio/quantiser.h"

#include <algorithm>
#include <cmath>

namespace KAV::Host {

CQuantiser::CQuantiser(int bits, bool dither) noexcept
    : _shift(32 - bits), _scale(std::ldexp(1.0, bits - 1)), _dither(dither) {}

void CQuantiser::Quantise(std::span<const float> samples, std::span<std::int32_t> results) noexcept {
    for (std::size_t i = 0; i < samples.size(); ++i) results[i] = Quantise(samples[i]);
}

std::int32_t CQuantiser::Quantise(float sample) noexcept {
    const double noise =
        _dither ? _random.Unit() - _random.Unit() : 0.0; // drawn always: one sample never moves the rest
    double steps = std::floor(static_cast<double>(sample) * _scale + noise + 0.5);
    if (std::isnan(steps)) return 0;
    if (steps < -_scale || steps > _scale - 1) {
        const double exact = static_cast<double>(sample) * _scale; // dither alone clips nothing
        const double beyond = exact < 0 ? -_scale - exact : exact - (_scale - 1);
        if (beyond > 1) {
            ++_clipped;
            _clippedBy = std::max(_clippedBy, beyond);
        }
        steps = steps < 0 ? -_scale : _scale - 1;
    }
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::int64_t>(steps)) << _shift);
}

float SampleOf(std::int32_t topAligned) noexcept {
    return static_cast<float>(static_cast<double>(topAligned) * 0x1p-31);
}

} // namespace KAV::Host
