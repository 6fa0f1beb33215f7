#pragma once

// In an unnamed namespace, because sources with their own compiler flags include it; see lanes.h.

namespace KAV::DSP {
namespace {

/// dividend / divisor, rounded as a division rounds it, for an odd integer divisor below 2^50 with a known
/// rounded reciprocal. On a processor with fused multiply-add it takes a third of the time.
///
/// The first product is off by less than 1.5 units in its last place, so the remainder is exact: a multiple
/// of that unit, below 1.5 x divisor units. With it the last step computes the quotient to about 2^-52 units
/// before rounding. That is always enough: dividend - divisor x (a midpoint between two numbers) is a
/// multiple of half a unit, and not 0 because an odd divisor makes the product longer than a number can be.
/// So the quotient is at least 0.5 / divisor units away from where the rounding would change.
inline double ExactQuotient(double dividend, double divisor, double reciprocal) noexcept {
    const double quotient = dividend * reciprocal;
    const double remainder = __builtin_fma(-quotient, divisor, dividend);
    return __builtin_fma(remainder, reciprocal, quotient);
}

} // namespace
} // namespace KAV::DSP
