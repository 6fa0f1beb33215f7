#pragma once

#include "tests/dsp/reference/coverage.h"
#include "tests/dsp/reference/smoother.h"

#include <array>

namespace KAV::Reference {

/// The peak of one block, or 0 if there is nothing above it; NaN never counts as a peak.
float PeakOf(const float* channel, int length, float atLeast = 0.0f);

/// The four families of meters, with values 0..1.
class CMeters final {
public:
    explicit CMeters(CCoverage& coverage) : _coverage(coverage) {}
    void SetRate(float blocksPerSecond);

    void Source(int entry, float peak);
    void Group(int group, float peak);
    void Entry(int entry, float in, float out);
    float Read(int tag) const; // -4..-55

    static double SevenPoints(double db);
    static double FivePoints(double db);

private:
    void Move(float& meter, const CSmoother& smoother, double target);
    double ToDb(float peak);

    CCoverage& _coverage;
    CSmoother _level{0.0f, 500.0f};
    CSmoother _channel{0.0f, 2000.0f};
    std::array<float, 52> _values{}; // in the order of the tags
};

} // namespace KAV::Reference
