#pragma once

#include <string>
#include <vector>

namespace KAV::Host {

struct SPlot;

/// The part of a quantity that a picture shows, and where its labels are.
struct SAxis {
    double from = 0; ///< at the left or at the bottom
    double to = 1;
    std::vector<double> ticks;
};

SAxis TimeAxis(double seconds);

/// Symmetric about 0; full scale unless the sound is above it or far below.
SAxis AmplitudeAxis(const SPlot& plot);

/// Loudness and peaks: up to 0 dB, or to the highest of them; down to -60 dB at most, and no further than
/// sound reaches for a twentieth of the time.
SAxis LevelAxis(const SPlot& plot);

/// 0 dB at the top, or the highest gain above it.
SAxis ReductionAxis(const SPlot& plot);

/// Minutes and seconds, or hours as well; with as many decimals as steps of this length need.
std::string TimeText(double seconds, double step);

} // namespace KAV::Host
