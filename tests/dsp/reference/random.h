#pragma once

#include <cstdint>
#include <initializer_list>
#include <random>

namespace KAV::Reference {

/// Random numbers that are the same with every standard library. The language defines the engine but not the
/// distributions, so those are written here.
class CRandom final {
public:
    explicit CRandom(std::uint64_t seed) : _engine(seed) {}

    std::uint64_t Bits() { return _engine(); }

    double Unit() { return static_cast<double>(_engine() >> 11) * 0x1p-53; } // 0 <= x < 1

    int Integer(int lowest, int highest) { // both inclusive
        const std::uint64_t span = static_cast<std::uint64_t>(highest - lowest) + 1;
        return lowest + static_cast<int>(_engine() % span);
    }

    bool Chance(double probability) { return Unit() < probability; }

    float Signed(float magnitude) { return static_cast<float>(2.0 * Unit() - 1.0) * magnitude; }

    template<class T>
    T OneOf(std::initializer_list<T> values) {
        return values.begin()[Integer(0, static_cast<int>(values.size()) - 1)];
    }

private:
    std::mt19937_64 _engine;
};

} // namespace KAV::Reference
