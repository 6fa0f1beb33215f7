#pragma once

#include <complex>
#include <span>

namespace KAV::Measure {

double Db(double amplitude) noexcept;
double FromDb(double db) noexcept;

double SamplePeak(std::span<const float> samples) noexcept;

/// Peak of the signal between its samples, found at 8 times the rate with a windowed sinc of 64 taps per
/// phase (Kaiser, beta 10). Shares nothing with the library that measures true peak by ITU-R BS.1770.
double TruePeak(std::span<const float> samples);

/// The complex amplitude at `frequency` in cycles per sample: 2 / n times the sum of x[i] e^(-2 pi j f i). A
/// sine with a whole number of cycles in the length yields its own amplitude.
std::complex<double> Amplitude(std::span<const float> samples, double frequency) noexcept;

/// The frequency response of an impulse response at `frequency` in cycles per sample.
double Response(std::span<const float> impulse, double frequency) noexcept;

} // namespace KAV::Measure
