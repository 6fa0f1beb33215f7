#include "tools/kavhost/play/device_samples.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace KAV::Host {

namespace {

/// The whole number for a sample, of that many bits.
std::int32_t Whole(float sample, int bits) noexcept {
    const double scale = std::ldexp(1.0, bits - 1);
    const double value = std::isnan(sample) ? 0.0 : static_cast<double>(sample);
    return static_cast<std::int32_t>(std::clamp(std::nearbyint(value * scale), -scale, scale - 1));
}

} // namespace

std::size_t BytesOf(EDeviceSamples kind) noexcept {
    switch (kind) {
    case EDeviceSamples::Int16:
        return 2;
    case EDeviceSamples::Int24:
        return 3;
    case EDeviceSamples::Float32:
    case EDeviceSamples::Int32:
        break;
    }
    return 4;
}

void StoreSamples(std::span<const float> samples, EDeviceSamples kind, unsigned char* to) noexcept {
    if (kind == EDeviceSamples::Float32) {
        std::memcpy(to, samples.data(), samples.size_bytes());
        return;
    }
    const auto bytes = BytesOf(kind);
    for (const float sample : samples) {
        const auto whole = Whole(sample, static_cast<int>(bytes) * 8);
        std::memcpy(to, &whole, bytes); // the lower bytes come first
        to += bytes;
    }
}

} // namespace KAV::Host
