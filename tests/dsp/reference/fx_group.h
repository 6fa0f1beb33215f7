#pragma once

#include "tests/dsp/reference/coverage.h"
#include "tests/dsp/reference/engine_face.h"
#include "tests/dsp/reference/gain_stage.h"
#include "tests/dsp/reference/limiter.h"
#include "tests/dsp/reference/smoother.h"

#include <array>
#include <span>
#include <vector>

namespace KAV::Reference {

/// One of the four effect groups: input gain, limiter, and the crossfade into host bypass.
class CFxGroup final {
public:
    CFxGroup(int number, CCoverage& coverage);

    void SetSampleRate(float rateHz); // of the host, before oversampling
    void SetBlock(int length);        // at the oversampled rate

    /// Takes the settings that the next block needs, one smoother step each.
    void Update(const SSettings& settings, int factor);
    int MidSideMode() const; // 0: none
    void Run(std::span<float* const> channels, int length);
    void RunEmpty();

    bool IsCrossfading() const; // between processed and bypassed
    std::size_t LookAhead() const;
    void SetLatch();
    float TakeInputPeak(std::size_t slot);
    float TakeOutputPeak(std::size_t slot);
    double ReportedGain() const;

private:
    void SetFactor(int factor);
    void StepMix(bool hostBypass);
    void StepInputGain(float target);
    bool StepPosition(float& position, float target); // returns whether the limiter needs the new position
    void GiveParams();
    void CountMix();
    void RunPlain(std::span<float* const> channels, int length);
    void RunMidSide(std::span<float* const> channels, int length);
    void CountMidSide(std::span<float* const> channels);

    int _number;
    CCoverage& _coverage;
    bool _firstBlock = true;
    float _sampleRate = 44100.0f;
    int _block = 0;
    int _factor = 1;

    bool _bypass = false;
    CSmoother _mixSmoother{250.0f, 250.0f};
    float _mixPosition = 0.0f; // 0 = processed, 1 = bypassed
    CSmoother _parameterSmoother{100.0f, 100.0f};

    CGainStage _gainStage;
    float _inputGain = 0.0f;
    float _threshold = 0.0f;
    float _ceiling = 0.0f;
    float _release = 0.0f;
    bool _auto = false;
    bool _limiterOn = false;
    CLimiter _limiter;
    int _mode = 0; // mid/side: bits 1 mid, 2 side, 4 mid soloed, 8 side soloed
    std::array<float, 16> _inputPeaks{};
    std::array<float, 16> _outputPeaks{};
};

} // namespace KAV::Reference
