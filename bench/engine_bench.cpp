// The whole engine, per frame at the base rate.

#include "bench/material.h"
#include "dsp/plugin_dsp.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>

using namespace KAV;

namespace {

using Engine = CPluginDSP<float, float, DSP::CPluginMC<float, float>>;

void SetUp(Engine& engine, std::size_t channels, float thresholdPos) {
    auto& values = engine.parameters;
    values.mainInputGain.SetBase(0.5f);
    values.mainOutputGain.SetBase(0.5f);
    for (std::size_t g = 0; g < 4; ++g) {
        values.inputGain[g].SetBase(1.0f);
        values.threshold[g].SetBase(thresholdPos);
        values.ceiling[g].SetBase(1.0f);
        values.release[g].SetBase(0.6f);
        values.limiter[g] = true;
    }
    for (std::size_t c = 0; c < channels; ++c) {
        values.channelInGroup[c][0] = true;
        engine.routing[0].SetPair(static_cast<int>(c), static_cast<int>(c), -1);
    }
    engine.SetSampleRate(48000.0f);
}

/// Channels, block length, oversampling index, threshold in dB.
void Process(benchmark::State& state) {
    const auto channels = static_cast<std::size_t>(state.range(0));
    const auto block = static_cast<std::size_t>(state.range(1));
    Engine engine;
    SetUp(engine, channels, static_cast<float>(30 + state.range(3)) / 30.0f);
    engine.SetBlockSize(static_cast<int>(block));
    engine.parameters.oversampling = static_cast<std::int32_t>(state.range(2));
    const auto material = Bench::Material(48000.0);
    std::vector<std::vector<float>> work(channels, std::vector<float>(block));
    std::array<float*, 16> pointers{};
    for (std::size_t c = 0; c < channels; ++c) pointers[c] = work[c].data();
    std::size_t start = 0;
    const auto run = [&] {
        for (auto& channel : work)
            std::copy_n(material.begin() + static_cast<std::ptrdiff_t>(start), block, channel.begin());
        engine.Process(pointers.data(), nullptr, static_cast<int>(channels), static_cast<int>(block));
        start = start + 2 * block <= material.size() ? start + block : 0;
    };
    for (std::size_t frames = 0; frames < 48000; frames += block) run(); // until the ramps have ended
    for (auto _ : state) {
        run();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(block));
}
BENCHMARK(Process)
    ->ArgNames({"channels", "block", "factor", "threshold"})
    ->Args({2, 512, 0, -12})
    ->Args({2, 512, 0, 0})
    ->Args({2, 32, 0, -12})
    ->Args({16, 512, 0, -12})
    ->Args({2, 512, 2, -12})
    ->Args({2, 512, 3, -12});

} // namespace
