#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace KAV::Bench {

/// Two seconds that resemble music: three tones with a slow swell, and noise. Peaks at about 1; the same in
/// every run.
inline std::vector<float> Material(double rateHz, std::uint32_t seed = 1) {
    std::vector<float> samples(static_cast<std::size_t>(2.0 * rateHz));
    std::uint32_t noise = seed;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        noise = noise * 1664525u + 1013904223u;
        const double t = static_cast<double>(i) / rateHz;
        const double swell = 0.6 + 0.4 * std::sin(9.0 * t);
        const double tones =
            0.5 * std::sin(345.0 * t) + 0.25 * std::sin(2765.0 * t) + 0.1 * std::sin(13000.0 * t);
        samples[i] =
            static_cast<float>(swell * tones + 0.15 * (static_cast<double>(noise >> 8) / 8388608.0 - 1.0));
    }
    return samples;
}

} // namespace KAV::Bench
