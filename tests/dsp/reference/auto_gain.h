#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace KAV::Reference {

struct SAutoGainSettings {
    int filter = 1; // 0 flat, 1 K-weighted
    double suspendDb = -60.0;
    double rmsTimeMs = 2000.0;
    double toleranceDb = 1.0;
    double maximumGainDb = 10.0;
    double maximumCutDb = 20.0;
};

/// Equal loudness before and after, written one step after another.
class CAutoGain final {
public:
    using CChannels = std::vector<std::vector<float>>;

    SAutoGainSettings settings;

    void SetRate(float rateHz);
    void Prepare(bool disabled, bool autoOn, const CChannels& active);
    /// `used[k]`: whether some group took channel k. The position of the output gain may move.
    void Run(CChannels& active, const std::vector<bool>& used, float& position);

    bool disabled = true;
    bool refresh = false;
    bool autoOn = false;
    bool adjusting = false;
    double ratio = 1.0;
    double correctedRatio = 1.0;
    double gain = 1.0;
    // How often a branch was taken.
    int adjusted = 0, held = 0, clampedUp = 0, clampedDown = 0, suspended = 0, wrapped = 0;

private:
    struct SWindow {
        std::vector<double> squares;
        double timeMs = 0.0;
        double sum = 0.0;
        std::size_t length = 1;
        std::size_t index = 0;
        bool full = false;
    };
    struct SBiquad {
        double w1 = 0.0, w2 = 0.0;
    };
    using CBank = std::array<std::array<SBiquad, 2>, 16>;

    void Restart(SWindow& window) const;
    bool Push(SWindow& window, const std::vector<double>& values, double h) const;
    static double Rms(const SWindow& window);
    double Weight(std::array<SBiquad, 2>& filter, double x) const;

    float _rateHz = 0.0f;
    SWindow _in, _out, _outGain;
    double _c = 0.0; // the same for rise and fall
    CChannels _copies;
    CBank _inFilters{}, _outFilters{};
};

} // namespace KAV::Reference
