#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace KAV::Pixels {

/// What each of `to` pixels takes of `from` ones in a row: `taps` weights, an even number, from pixel `first`
/// on. The weights of a pixel add up to 1 << bits. If there are more taps than pixels, those beyond the last
/// one weigh nothing.
struct SWeights {
    std::int32_t from = 0;
    std::int32_t to = 0;
    std::int32_t taps = 0;
    int bits = 0;
    std::vector<std::int32_t> first;  // `to` of them, in rising order
    std::vector<std::int16_t> values; // to * taps

    const std::int16_t* Of(std::int32_t pixel) const noexcept {
        return values.data() + static_cast<std::size_t>(pixel) * static_cast<std::size_t>(taps);
    }
};

/// The weights of Resampled(), as precise as 16 bits each and `maxBits` allow. Sizes are 1 or more. Any
/// thread. Throws std::bad_alloc.
SWeights CubicWeights(std::int32_t from, std::int32_t to, int maxBits);

} // namespace KAV::Pixels
