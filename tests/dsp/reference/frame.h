#pragma once

#include "tests/dsp/reference/coverage.h"
#include "tests/dsp/reference/engine_face.h"
#include "tests/dsp/reference/fx_group.h"
#include "tests/dsp/reference/gain_stage.h"
#include "tests/dsp/reference/meters.h"
#include "tests/dsp/reference/oversampler.h"
#include "tests/dsp/reference/silence_gate.h"
#include "tests/dsp/reference/smoother.h"

#include <array>
#include <memory>
#include <vector>

namespace KAV::Reference {

/// The whole signal path, one channel and one sample at a time.
class CFrame final : public IEngine {
public:
    explicit CFrame(CCoverage& coverage);

    void SetSampleRate(float rate) override;
    void SetBlockSize(int frames) override;
    void Apply(const SSettings& settings) override;
    void Process(float* const* channels, int channelCount, int frames) override;
    int GetLatency() override;
    double ReportedGain(int group) override;
    void SetLatch(int group) override;
    float Meter(int tag) override;

private:
    /// A main gain: a smoothed position that moves to the parameter, or to 0 dB under bypass.
    struct SMainGain {
        CGainStage stage;
        float position = 0.0f;
    };
    /// A group's input in one block. `buffers` are the host's own, or private copies in parallel mode.
    struct SList {
        std::vector<float*> buffers;
        std::vector<std::size_t> channels;
        std::vector<int> entries; // of the routing, one per channel
        std::vector<std::vector<float>> copies;
    };

    void ProcessSlice(float* const* channels, std::size_t count, int frames);
    void ProcessFlushed(float* const* channels, std::size_t count, int frames);
    void CountMaterial(const float* channel, int frames);
    void OpenChannels(float* const* channels, std::size_t count, int frames);
    void RunMainGain(SMainGain& gain, float parameter, ECase steps, ECase settled, ECase zeroFromStart);
    void RunGroup(std::size_t group);
    SList Gather(std::size_t group);
    bool GroupRuns(std::size_t group);
    void MeterSources(float* const* channels);
    void MeterGroup(std::size_t group, const SList& list);
    void CountListRepeats(const SList& list);
    void AddToSums(const SList& list);
    void CopySums();
    void CountConnections();
    void SilenceUntaken();

    CCoverage& _coverage;
    SSettings _settings;
    float _sampleRate = 44100.0f;
    int _announced = 0; // largest block that the host has announced
    bool _hostAnnounced = false;
    bool _processed = false;

    CSmoother _gainSmoother{100.0f, 100.0f};
    SMainGain _input;
    SMainGain _output;
    std::array<CSilenceGate, 16> _gates;
    std::vector<std::unique_ptr<CFxGroup>> _groups;

    // Of the current block.
    std::size_t _channels = 0;
    int _frames = 0;
    int _factor = 1;
    bool _anySolo = false;
    std::array<float*, 16> _active{}; // null for a channel the gate has dropped
    std::array<bool, 16> _used{};
    std::array<int, 16> _takers{}; // how many groups took the channel; only used for coverage
    std::array<std::vector<float>, 16> _sums;
    bool _parallel = false;
    COversampler _oversampler;
    bool _quality = false;
    int _lastFactor = 1;
    int _shown = 0; // the group that the meters show
    CMeters _meters{_coverage};
};

} // namespace KAV::Reference
