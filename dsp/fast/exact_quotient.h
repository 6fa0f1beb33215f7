#pragma once

// In an unnamed namespace, because sources with compiler flags of their own include it; see lanes.h.

namespace KAV::DSP {
namespace {

/// dividend / divisor, rounded as a division rounds it, for an odd whole divisor below 2^50 whose reciprocal,
/// rounded, is known; on a processor with fused multiply-add in a third of the time.
///
/// The first product is off by less than 1.5 units of its last place, so the remainder is exact: a multiple
/// of that unit, below 1.5 x divisor units. With it the last step computes the quotient to some 2^-52 units
/// before it rounds, and that can't go wrong: dividend - divisor x (a middle between two numbers) is a
/// multiple of half a unit, and not 0 because an odd divisor makes the product longer than a number can be.
/// So the quotient stays at least 0.5 / divisor units away from where rounding changes its mind.
inline double ExactQuotient(double dividend, double divisor, double reciprocal) noexcept {
    const double quotient = dividend * reciprocal;
    const double remainder = __builtin_fma(-quotient, divisor, dividend);
    return __builtin_fma(remainder, reciprocal, quotient);
}

} // namespace
} // namespace KAV::DSP
