#pragma once

#include <cstdint>

namespace KAV::Host {

/// Even random numbers that are the same on every system and in every run, for dither and test signals:
/// xorshift64* (Vigna, "An experimental exploration of Marsaglia's xorshift generators, scrambled", 2016).
class CRandom final {
public:
    explicit CRandom(std::uint64_t seed = 0x9E3779B97F4A7C15u) noexcept : _state(seed | 1) {}

    /// 0 <= result < 1, in steps of 2^-32.
    double Unit() noexcept {
        _state ^= _state >> 12;
        _state ^= _state << 25;
        _state ^= _state >> 27;
        return static_cast<double>((_state * 0x2545F4914F6CDD1Du) >> 32) * 0x1p-32;
    }

    /// -1 <= result < 1.
    double Bipolar() noexcept { return 2 * Unit() - 1; }

private:
    std::uint64_t _state; ///< never 0
};

} // namespace KAV::Host
