#pragma once

#include "dsp/plugin_dsp.h"
#include "tests/dsp/reference/engine_face.h"

namespace KAV::Tests {

/// The product's engine with the interface that scenarios drive.
class CEngineSubject final : public Reference::IEngine {
public:
    void SetSampleRate(float rate) override { _engine.SetSampleRate(rate); }
    void SetBlockSize(int frames) override { _engine.SetBlockSize(frames); }
    void Apply(const Reference::SSettings& settings) override;
    void Process(float* const* channels, int channelCount, int frames) override;
    int GetLatency() override { return _engine.Latency(); }
    double ReportedGain(int group) override { return _engine.Limiter(group).ReportedGain(); }
    void SetLatch(int group) override { _engine.Limiter(group).Latch(); }
    float Meter(int tag) override;
    /// Allocations, releases and locks in all calls of Process() so far.
    std::size_t SystemCalls() const { return _systemCalls; }

private:
    CPluginDSP<float, float, DSP::CPluginMC<float, float>> _engine;
    std::size_t _systemCalls = 0;
};

} // namespace KAV::Tests
