#pragma once

#include "tests/dsp/reference/coverage.h"

#include <array>
#include <vector>

namespace KAV::Reference {

/// A Butterworth low-pass, one sample of one channel at a time.
class CLowPass final {
public:
    explicit CLowPass(int order);
    void Design(double cutoff); // fraction of the rate; empties the delays

    /// Filters in passes of at most `width` channels: a pass of one in plain arithmetic, others fused.
    void Run(const std::vector<float*>& channels, int length, int width, CCoverage& coverage);

private:
    struct SStage {
        double a1, a2, b0, b1, b2;
        std::array<double, 16> w1, w2; // per place in the list of channels
    };
    float Sample(float sample, std::size_t slot, bool fused);
    void Recover(std::size_t slot, CCoverage& coverage);

    int _order;
    std::vector<SStage> _stages;
    double _bias = 1e-8;
};

/// Zero-stuffing and low-pass up, low-pass and dropping down.
class COversampler final {
public:
    void Prepare(float rate, int factor); // designs the filters again if either has changed
    void Up(std::array<float*, 16>& channels, int frames, bool quality, int width, CCoverage& coverage);
    void Down(std::array<float*, 16>& channels, int frames, bool quality, int width, CCoverage& coverage);

    /// Channels per pass: 4 with wide registers and fused arithmetic, 2 with fused arithmetic, otherwise 1.
    static int Width(bool simd);

private:
    void Filter(CLowPass& filter, int frames, int width, CCoverage& coverage);

    float _rate = 0.0f;
    int _factor = 1;
    std::array<float*, 16> _in{};
    std::array<std::vector<float>, 16> _raised;
    CLowPass _standardUp{4}, _standardDown{4}, _qualityUp{32}, _qualityDown{32};
};

} // namespace KAV::Reference
