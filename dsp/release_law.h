#pragma once

// In an unnamed namespace, because sources with their own compiler flags include it; see lanes.h.

#include "dsp/correctly_rounded.h"
#include "dsp/limiter_run.h"

#include <cmath>

namespace KAV::DSP {
namespace {

// Symbols of the programme-dependent release, all gains and per sample:
//   slow  an envelope of the required gain, falling to 10 % of the distance in 0.25 s and rising in 0.5 s
//   g     the gain: never above the required one nor the slow envelope, recovering with the coefficient a x k
//   a     coefficient of (1 - g)^4 seconds: the deeper the reduction, the slower the recovery
//   u     a value near g in steady state, ahead of it while the slow envelope is above it
//   k     weight of a over u, see ReleaseWeight()

/// exp(-1 / (t x tau)): the fraction of the distance that a one-pole keeps per sample to fall to 10 % in
/// `seconds`.
inline double CoefficientOf(double seconds, double tau) noexcept {
    return std::exp(-1.0 / (seconds * tau));
}

/// 1 below a gain of 0.25, then through the three curve points at 0.5, 0.71 and 1, linear between them.
inline double ReleaseWeight(const SReleaseCoefficients& coefficients, double u) noexcept {
    if (u < 0.25) return 1.0;
    if (u < 0.5) return (u - 0.25) * 4.0 * (coefficients.curve[0] - 1.0) + 1.0;
    if (u < 0.71)
        return (coefficients.curve[1] - coefficients.curve[0]) * ((u - 0.5) / 0.21) + coefficients.curve[0];
    return (coefficients.curve[2] - coefficients.curve[1]) * ((u - 0.71) / 0.29) + coefficients.curve[1];
}

/// The fraction of its distance that the sample after one of gain `g` keeps.
inline double AutomaticCoefficient(const SReleaseCoefficients& coefficients, double g, double slow) noexcept {
    const double ahead = 2.0 * slow - g;
    const double u = 1.0 < ahead ? 1.0 : ahead;
    double a = coefficients.coefficientFloor;
    if (g < coefficients.floorGain) {
#if defined(KAV_CORRECTLY_ROUNDED)
        const double longer = Exponential(-1.0 / (FourthPower(1.0 - g) * coefficients.tau));
#else
        const double longer = CoefficientOf(std::pow(1.0 - g, 4.0), coefficients.tau);
#endif
        if (longer > a) a = longer;
    }
    return ReleaseWeight(coefficients, u) * a;
}

/// The coefficient for the next sample of the programme-dependent release; computed only when it is needed.
inline double KnownCoefficient(const SReleaseCoefficients& coefficients, SLimiterState& state) noexcept {
    if (!state.isCoefficientKnown) {
        state.automaticCoefficient = AutomaticCoefficient(coefficients, state.automatic, state.slow);
        state.isCoefficientKnown = true;
    }
    return state.automaticCoefficient;
}

} // namespace
} // namespace KAV::DSP
