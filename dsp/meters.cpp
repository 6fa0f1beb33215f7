#include "dsp/meters.h"

#include <cmath>
#include <span>

namespace KAV::DSP {

namespace {

constexpr std::array<double, 7> SevenPoints{-192.0, -96.0, -48.0, -24.0, -12.0, -6.0, 0.0};
constexpr std::array<double, 5> FivePoints{-48.0, -24.0, -12.0, -6.0, 0.0};

double Decibels(float peak) noexcept {
    return peak > 0.0f ? 20.0 * std::log10(static_cast<double>(peak)) : -999.9;
}

/// The segment that `db`, above the first point and below the last, lies in: from points[i] to points[i + 1],
/// that one included.
std::size_t Segment(std::span<const double> points, double db) noexcept {
    std::size_t i = 0;
    while (db > points[i + 1]) ++i;
    return i;
}

} // namespace

float SevenPointScale(float peak) noexcept {
    const double db = Decibels(peak);
    if (db >= SevenPoints.back()) return 1.0f;
    if (db <= SevenPoints.front()) return 0.0f;
    const std::size_t i = Segment(SevenPoints, db);
    const double part = (SevenPoints[i + 1] - db) / (SevenPoints[i + 1] - SevenPoints[i]);
    return static_cast<float>((static_cast<double>(i) + 2.0 - part) / 7.0);
}

float FivePointScale(float peak) noexcept {
    const double db = Decibels(peak);
    if (db <= FivePoints.front()) return 0.0f;
    if (db >= FivePoints.back()) return 1.0f;
    const std::size_t i = Segment(FivePoints, db);
    const double part = std::fabs((FivePoints[i + 1] - db) / (FivePoints[i + 1] - FivePoints[i]));
    return static_cast<float>((1.0 - part + static_cast<double>(i)) * 0.25);
}

void CMeters::SetBlockRate(float rateHz) noexcept {
    _levelSmoother.SetRate(rateHz);
    _entrySmoother.SetRate(rateHz);
}

void CMeters::StepSource(std::size_t entry, float peak) noexcept {
    _source.Step(_levelSmoother, entry, SevenPointScale(peak));
}

void CMeters::StepGroup(std::size_t group, float peak) noexcept {
    _group.Step(_levelSmoother, group, SevenPointScale(peak));
}

void CMeters::StepEntry(std::size_t entry, float inputPeak, float outputPeak) noexcept {
    _input.Step(_entrySmoother, entry, FivePointScale(inputPeak));
    _output.Step(_entrySmoother, entry, FivePointScale(outputPeak));
}

} // namespace KAV::DSP
