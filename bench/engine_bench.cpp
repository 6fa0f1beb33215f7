// The whole engine, per frame at the base rate.

#include "bench/material.h"
#include "dsp/plugin_dsp.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>

using namespace KAV;

namespace {

using Engine = CPluginDSP<float, float, DSP::CPluginMC<float, float>>;

struct SCase {
    std::size_t channels = 2;
    std::size_t block = 512;
    std::int32_t oversampling = 0; ///< the factor is 2 to this power
    bool highQuality = false;
    bool automatic = false;
    bool simd = true;
    std::size_t groups = 1; ///< in parallel, each with its share of the channels
    float thresholdDb = -12;
    float gain = 1.0f; ///< of the sound, linear; 0 is silence
};

void SetUp(Engine& engine, const SCase& settings) {
    auto& values = engine.parameters;
    values.mainInputGain.SetBase(0.5f);
    values.mainOutputGain.SetBase(0.5f);
    for (std::size_t g = 0; g < 4; ++g) {
        values.inputGain[g].SetBase(1.0f);
        values.threshold[g].SetBase((30.0f + settings.thresholdDb) / 30.0f);
        values.ceiling[g].SetBase(1.0f);
        values.release[g].SetBase(0.6f);
        values.limiter[g] = true;
        values.autoRelease[g] = settings.automatic;
    }
    for (std::size_t c = 0; c < settings.channels; ++c) {
        const std::size_t group = c * settings.groups / settings.channels;
        values.channelInGroup[c][group] = true;
        engine.routing[group].SetPair(static_cast<int>(c), static_cast<int>(c), -1);
    }
    values.oversampling = settings.oversampling;
    values.highQuality = settings.highQuality;
    engine.simd = settings.simd;
    engine.groupsParallel = settings.groups > 1;
    engine.SetSampleRate(48000.0f);
    engine.SetBlockSize(static_cast<int>(settings.block));
}

void Process(benchmark::State& state, const SCase& settings) {
    Engine engine;
    SetUp(engine, settings);
    const std::size_t block = settings.block;
    auto material = Bench::Material(48000.0);
    for (float& sample : material) sample *= settings.gain;
    std::vector<std::vector<float>> work(settings.channels, std::vector<float>(block));
    std::array<float*, 16> pointers{};
    for (std::size_t c = 0; c < settings.channels; ++c) pointers[c] = work[c].data();
    std::size_t start = 0;
    const auto run = [&] {
        for (auto& channel : work)
            std::copy_n(material.begin() + static_cast<std::ptrdiff_t>(start), block, channel.begin());
        engine.Process(
            pointers.data(), nullptr, static_cast<int>(settings.channels), static_cast<int>(block));
        start = start + 2 * block <= material.size() ? start + block : 0;
    };
    // Run until the ramps have ended and silence is detected.
    for (std::size_t frames = 0; frames < 6 * 48000; frames += block) run();
    for (auto _ : state) {
        run();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(block));
}
BENCHMARK_CAPTURE(Process, stereo, SCase{});
BENCHMARK_CAPTURE(Process, automatic release, SCase{.automatic = true});
BENCHMARK_CAPTURE(Process, nothing to limit, SCase{.thresholdDb = 0, .gain = 0.25f});
BENCHMARK_CAPTURE(Process, silence, SCase{.gain = 0});
BENCHMARK_CAPTURE(Process, blocks of 32, SCase{.block = 32});
BENCHMARK_CAPTURE(Process, blocks of 64, SCase{.block = 64});
BENCHMARK_CAPTURE(Process, vector code off, SCase{.simd = false});
BENCHMARK_CAPTURE(Process, 16 channels, SCase{.channels = 16});
BENCHMARK_CAPTURE(Process, x4, SCase{.oversampling = 2});
BENCHMARK_CAPTURE(Process, x8, SCase{.oversampling = 3});
BENCHMARK_CAPTURE(Process, x8 high quality, SCase{.oversampling = 3, .highQuality = true});
BENCHMARK_CAPTURE(
    Process, x8 high quality vector code off, SCase{.oversampling = 3, .highQuality = true, .simd = false});
BENCHMARK_CAPTURE(Process, 16 channels four groups x8 high quality,
    SCase{.channels = 16, .oversampling = 3, .highQuality = true, .groups = 4});

} // namespace
