#pragma once

// In an unnamed namespace, because sources with their own compiler flags include it; see lanes.h.

#include <cmath>
#include <cstdint>

#if defined(__FMA__) && defined(__GLIBC__)
#define KAV_CORRECTLY_ROUNDED

namespace KAV::DSP {
namespace {

// The maths library's pow(x, 4) and exp(x), to the bit, in a third of the time. Both are computed here to far
// more digits than a number holds. A library's result is off by little more than half a unit in the last
// place (glibc's by at most 0.54). So where the true value is at least 0.04 units away from the midpoint of
// two numbers, the library can only have rounded to the same side. Elsewhere, for one value in twelve, the
// library is called. Other libraries promise no such accuracy, so they are always called.

/// Whether any library rounds `high` + `low` to `high`. Also true if `high` has underflowed to 0.
inline bool RoundsTo(double high, double low) noexcept {
    constexpr std::uint64_t exponent = 0x7FF0000000000000u;
    // Just below a power of 2 numbers are closer together: there the unit of the previous number counts.
    const double power = __builtin_bit_cast(double, (__builtin_bit_cast(std::uint64_t, high) - 1) & exponent);
    return __builtin_fabs(low) < power * (0.46 * 0x1p-52);
}

/// pow(x, 4) for 0 < x <= 1.
inline double FourthPower(double x) noexcept {
    const double square = x * x;
    const double squareRest = __builtin_fma(x, x, -square);
    const double fourth = square * square;
    const double fourthRest = __builtin_fma(2.0 * square, squareRest, __builtin_fma(square, square, -fourth));
    const double sum = fourth + fourthRest;
    if (!RoundsTo(sum, fourth - sum + fourthRest)) [[unlikely]]
        return std::pow(x, 4.0);
    return sum;
}

/// exp(-i / 64) in two parts, for i = 0..64.
struct SExponentials {
    double high[65];
    double low[65];
};

constexpr SExponentials MakeExponentials() {
    // Sums and products of numbers in two parts. They run at compile time, so they need no fused operations.
    struct STwo {
        double high;
        double low;
    };
    const auto sum = [](double a, double b) {
        const double high = a + b;
        const double part = high - a;
        return STwo{high, a - (high - part) + (b - part)};
    };
    const auto split = [](double a) {
        const double scaled = a * 134217729.0; // 2^27 + 1
        const double high = scaled - (scaled - a);
        return STwo{high, a - high};
    };
    const auto product = [&](STwo a, STwo b) {
        const double high = a.high * b.high;
        const STwo x = split(a.high);
        const STwo y = split(b.high);
        const double rest = x.high * y.high - high + x.high * y.low + x.low * y.high + x.low * y.low;
        return sum(high, rest + a.high * b.low + a.low * b.high);
    };
    // exp(-1/64) by its series: each term is the previous one times -1 / (64 n).
    STwo step{1.0, 0.0};
    STwo term{1.0, 0.0};
    for (int n = 1; n < 16; ++n) {
        const double divisor = -64.0 * n;
        const double quotient = term.high / divisor;
        const STwo back = product({quotient, 0.0}, {divisor, 0.0});
        term = sum(quotient, (term.high - back.high - back.low + term.low) / divisor);
        const STwo next = sum(step.high, term.high);
        step = sum(next.high, next.low + step.low + term.low);
    }
    SExponentials table{};
    STwo power{1.0, 0.0};
    for (int i = 0; i <= 64; ++i) {
        table.high[i] = power.high;
        table.low[i] = power.low;
        power = product(power, step);
    }
    return table;
}

inline constexpr SExponentials Exponentials = MakeExponentials();

/// exp(x) for -1 <= x <= 0.
inline double Exponential(double x) noexcept {
    constexpr double shift = 0x1.8p46; // for a number of this size the last place is a sixty-fourth
    const double shifted = x + shift;
    const double rest = x - (shifted - shift); // exact; at most 1/128 either way
    const auto i = static_cast<std::size_t>(
        __builtin_bit_cast(std::uint64_t, shift) - __builtin_bit_cast(std::uint64_t, shifted));
    // exp(rest) - 1, by its series up to the seventh power.
    const double square = rest * rest;
    const double second = __builtin_fma(rest, 1.0 / 6.0, 0.5);
    const double fourth = __builtin_fma(rest, 1.0 / 120.0, 1.0 / 24.0);
    const double sixth = __builtin_fma(rest, 1.0 / 5040.0, 1.0 / 720.0);
    const double series = __builtin_fma(square, __builtin_fma(square, sixth, fourth), second);
    const double grown = __builtin_fma(square, series, rest);
    const double high = Exponentials.high[i];
    const double low = __builtin_fma(high, grown, Exponentials.low[i]);
    const double sum = high + low;
    if (!RoundsTo(sum, high - sum + low)) [[unlikely]]
        return std::exp(x);
    return sum;
}

} // namespace
} // namespace KAV::DSP

#endif
