// The limiter's stages alone, per sample.

#include "bench/material.h"
#include "dsp/box_average.h"
#include "dsp/lookahead_limiter.h"
#include "dsp/min_tree.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>

using namespace KAV;

namespace {

constexpr std::size_t Block = 512;

/// Required gains of hard-driven material.
std::vector<double> Gains() {
    std::vector<double> gains;
    for (const float x : Bench::Material(48000.0))
        gains.push_back(std::min(1.0, 0.25 / std::fabs(static_cast<double>(x))));
    return gains;
}

void WindowMinimum(benchmark::State& state) {
    const auto gains = Gains();
    DSP::MinTree window;
    window.Reset(static_cast<std::size_t>(state.range(0)));
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(window.Push(gains[i]));
        if (++i == gains.size()) i = 0;
    }
}
BENCHMARK(WindowMinimum)->Arg(64)->Arg(576)->Arg(2176);

void Average(benchmark::State& state) {
    const auto gains = Gains();
    DSP::BoxAverage average;
    average.Reset(33);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(average.Push(gains[i]));
        if (++i == gains.size()) i = 0;
    }
}
BENCHMARK(Average);

/// Nanoseconds per frame are the time divided by the items. Channels, then the release.
void Limiter(benchmark::State& state) {
    const auto channels = static_cast<std::size_t>(state.range(0));
    const auto material = Bench::Material(48000.0);
    DSP::LookaheadLimiter limiter;
    limiter.SetRate(48000.0);
    limiter.SetParams(0.6f, 1.0f, 0.6f, state.range(1) != 0); // +12 dB of drive
    std::array<std::array<float, Block>, 16> work{};
    std::array<float*, 16> pointers{};
    for (std::size_t c = 0; c < 16; ++c) pointers[c] = work[c].data();
    std::size_t start = 0;
    for (auto _ : state) {
        for (std::size_t c = 0; c < channels; ++c)
            std::copy_n(material.begin() + static_cast<std::ptrdiff_t>(start), Block, pointers[c]);
        limiter.Process(std::span(pointers).first(channels), Block);
        benchmark::ClobberMemory();
        start = start + 2 * Block <= material.size() ? start + Block : 0;
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(Block));
}
BENCHMARK(Limiter)->ArgsProduct({{1, 2, 16}, {0, 1}})->ArgNames({"channels", "auto"});

} // namespace
