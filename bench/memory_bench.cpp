// How much resident memory an instance of the engine needs.

#include "dsp/plugin_dsp.h"
#include "tests/support/process_memory.h"

#include <array>
#include <benchmark/benchmark.h>
#include <memory>
#include <vector>

using namespace KAV;

namespace {

using Engine = CPluginDSP<float, float, DSP::CPluginMC<float, float>>;

/// Arguments: the rate in Hz, and whether a second of stereo has run at x8. `resident` is the mean over many
/// instances, so that the allocator's step size doesn't show.
void ResidentBytes(benchmark::State& state) {
    constexpr std::size_t Instances = 16;
    constexpr int Block = 512;
    double resident = 0.0;
    for (auto _ : state) {
        const std::size_t before = Tests::ResidentBytes();
        std::vector<std::unique_ptr<Engine>> engines;
        for (std::size_t i = 0; i < Instances; ++i) {
            auto& engine = *engines.emplace_back(std::make_unique<Engine>());
            engine.SetSampleRate(static_cast<float>(state.range(0)));
            engine.SetBlockSize(Block);
            if (state.range(1) == 0) continue;
            engine.parameters.oversampling = 3;
            engine.parameters.channelInGroup[0][0] = true;
            engine.parameters.channelInGroup[1][0] = true;
            std::array<std::vector<float>, 2> audio{std::vector<float>(Block), std::vector<float>(Block)};
            std::array<float*, 2> channels{audio[0].data(), audio[1].data()};
            for (std::int64_t frames = 0; frames < state.range(0); frames += Block) {
                for (auto& channel : audio) channel.assign(Block, 0.25f);
                engine.Process(channels.data(), nullptr, 2, Block);
            }
        }
        resident = static_cast<double>(Tests::ResidentBytes() - before) / static_cast<double>(Instances);
    }
    state.counters["resident"] =
        benchmark::Counter(resident, benchmark::Counter::kDefaults, benchmark::Counter::kIs1024);
}
BENCHMARK(ResidentBytes)
    ->ArgNames({"rate", "run"})
    ->Args({384000, 0})
    ->Args({44100, 0})
    ->Args({44100, 1})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

} // namespace
