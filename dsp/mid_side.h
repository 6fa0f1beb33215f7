#pragma once

#include "utils/realtime.h"

#include <cstdint>
#include <span>

namespace KAV::DSP {

/// What a mid/side group processes. The values are combinations of bits: 1 mid, 2 side, 4 mid on both sides,
/// 8 side on both.
enum class EMidSide : std::uint8_t { Off = 0, Mid = 1, Side = 2, Both = 3, MidSolo = 4, SideSolo = 8 };

constexpr EMidSide MidSideMode(bool mid, bool side, bool solo) noexcept {
    if (mid && side) return EMidSide::Both;
    if (mid) return solo ? EMidSide::MidSolo : EMidSide::Mid;
    if (side) return solo ? EMidSide::SideSolo : EMidSide::Side;
    return EMidSide::Off;
}

/// Left becomes mid, right becomes side, in place. Both may be the same buffer, which then holds the side.
KAV_REALTIME inline void EncodeMidSide(std::span<float> left, float* right) noexcept {
    for (std::size_t i = 0; i < left.size(); ++i) {
        const float l = left[i];
        const float r = right[i];
        left[i] = (l + r) * 0.5f;
        right[i] = (l - r) * 0.5f;
    }
}

/// The reverse. A soloed half goes to both channels, a soloed side in opposite phase.
KAV_REALTIME inline void DecodeMidSide(EMidSide mode, std::span<float> mid, float* side) noexcept {
    for (std::size_t i = 0; i < mid.size(); ++i) {
        const float m = mid[i];
        const float s = side[i];
        switch (mode) {
        case EMidSide::MidSolo:
            side[i] = m;
            break;
        case EMidSide::SideSolo:
            mid[i] = s;
            side[i] = -s;
            break;
        default:
            mid[i] = m + s;
            side[i] = m - s;
        }
    }
}

} // namespace KAV::DSP
