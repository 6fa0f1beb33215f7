#pragma once

#include "dsp/min_tree.h"

#include <array>
#include <cstddef>
#include <vector>

namespace KAV::Bench {

/// What speed is measured against: each stage of the limiter as one loop over the block, one sample and one
/// channel at a time, with the same tree for the minimum. Compiled at -O2 for any processor.
class CReferenceLimiter final {
public:
    CReferenceLimiter(double rateHz, double driveDb, double releaseSeconds, bool autoRelease);
    void Process(float* const* channels, std::size_t count, std::size_t length);

private:
    struct SAverage {
        std::vector<double> values;
        std::size_t index = 0;
        double sum = 0.0;
    };
    void Fixed(std::size_t length);
    void Automatic(std::size_t length);
    void Average(SAverage& average, std::size_t length);
    double Coefficient(double seconds) const;
    double Weight(double u) const;

    bool _auto;
    double _tau;
    double _drive;
    double _release;
    double _fall;
    double _rise;
    std::array<double, 3> _curve{};
    double _state = 1.0;
    double _slow = 1.0;
    double _autoCoefficient;
    DSP::MinTree _window;
    std::array<SAverage, 2> _averages;
    std::array<std::vector<double>, 16> _delays;
    std::array<std::size_t, 16> _delayIndex{};
    std::vector<double> _gains;
};

/// A Butterworth low-pass as a cascade of biquads, stage after stage for each sample, of one channel.
class CReferenceCascade final {
public:
    CReferenceCascade(std::size_t order, double cutoff);
    void Process(float* channel, std::size_t length);

private:
    struct SStage {
        double a1 = 0.0, a2 = 0.0, b0 = 1.0, b1 = 2.0, b2 = 1.0, w1 = 0.0, w2 = 0.0;
    };
    std::vector<SStage> _stages;
    double _extra = 1e-8;
};

} // namespace KAV::Bench
