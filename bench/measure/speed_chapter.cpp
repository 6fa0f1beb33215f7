#include "bench/material.h"
#include "bench/measure/chapters.h"
#include "bench/speed_reference.h"
#include "bench/turns.h"
#include "dsp/biquad_cascade.h"
#include "dsp/flush_denormals.h"
#include "dsp/lookahead_limiter.h"
#include "utils/cpu_features.h"

#include <algorithm>
#include <ostream>

namespace KAV::Measure {

namespace {

constexpr std::size_t Block = 512;
constexpr std::size_t Frames = 32 * Block;
constexpr int Runs = 101;

/// Runs `process` on two channels of the benchmarks' material, which is filled in again before each block.
template<typename TProcess>
void Play(const std::vector<float>& material, Audio& work, const TProcess& process) {
    std::array<float*, 2> channels{work[0].data(), work[1].data()};
    for (std::size_t at = 0; at < Frames; at += Block) {
        for (std::size_t c = 0; c < 2; ++c) {
            std::copy_n(material.begin() + static_cast<std::ptrdiff_t>(at + 37 * c), Block, channels[c]);
        }
        process(channels);
    }
}

template<typename TSubject, typename TReference>
void Row(std::ostream& out, const char* name, const TSubject& subject, const TReference& reference) {
    const auto material = Bench::Material(48000.0);
    Audio work(2, std::vector<float>(Block));
    Bench::CTurns turns;
    const DSP::CFlushDenormals flushing;
    for (int i = 0; i < Runs; ++i) {
        turns.Run([&] { Play(material, work, subject); }, [&] { Play(material, work, reference); });
    }
    const double ns = 1e9 / static_cast<double>(Frames);
    out << "| " << name << " | " << turns.Subject() * ns << " | " << turns.Reference() * ns << " | "
        << turns.Reference() / turns.Subject() << " |\n";
}

void LimiterRow(std::ostream& out, const char* name, double rateHz, float thresholdPos, bool autoRelease,
    std::uint64_t features) {
    DSP::LookaheadLimiter limiter;
    limiter.Reserve(rateHz);
    limiter.SetRate(rateHz);
    limiter.SetParams(thresholdPos, 1.0f, 0.6f, autoRelease);
    Bench::CReferenceLimiter reference(rateHz, thresholdPos, 0.6f, autoRelease);
    Row(
        out, name,
        [&](std::span<float* const> channels) { limiter.Process(channels, Block, DSP::PathFor(features)); },
        [&](std::span<float* const> channels) { reference.Process(channels, Block); });
}

void FilterRow(std::ostream& out, const char* name, std::size_t order, std::uint64_t features) {
    const double cutoff = (order == 32 ? 0.99 : 0.9) * 0.5 / 8.0;
    DSP::BiquadCascade cascade(order);
    cascade.Design(cutoff);
    Bench::CReferenceCascade reference(order, cutoff);
    Row(
        out, name, [&](std::span<float* const> channels) { cascade.Process(channels, Block, features); },
        [&](std::span<float* const> channels) { reference.Process(channels, Block); });
}

} // namespace

void Speed(std::ostream& out) {
    const std::uint64_t all = Utils::DetectFeatures();
    out << R"(## Speed of the blocks

The figures are nanoseconds of processor time per frame of two channels, in blocks of 512, on the machine that wrote this
page. The reference is the plain model with which the tests compare the engine: one sample and one channel at a time,
compiled at -O2. Engine and reference alternate in the same run. All figures are medians. Only the last column is
meaningful on other machines.

| block | ns | reference, ns | times as fast |
|---|---|---|---|
)";
    LimiterRow(out, "limiter, 12 dB of limiting", 48000.0, 0.6f, false, all);
    LimiterRow(out, "limiter without the processor's features", 48000.0, 0.6f, false, 0);
    LimiterRow(out, "limiter, nothing to limit", 48000.0, 1.0f, false, all);
    LimiterRow(out, "limiter, auto release, 12 dB", 48000.0, 0.6f, true, all);
    LimiterRow(out, "limiter, auto release, 3 dB", 48000.0, 0.9f, true, all);
    LimiterRow(out, "limiter at 384 kHz", 384000.0, 0.6f, false, all);
    FilterRow(out, "filter of order 32, one way", 32, all);
    FilterRow(out, "filter of order 32 without the features", 32, 0);
    FilterRow(out, "filter of order 4, one way", 4, all);
    FilterRow(out, "filter of order 4 without the features", 4, 0);
    out << R"(
The next table shows how many cycles of a current processor the arithmetic needs at least, and where the rest of the time
is spent. Measured on Zen 3, additions and multiplications take 3 cycles and fused operations 4. Eight fused operations
start within 4.1 cycles, eight fused operations and eight additions within 5.0, eight fused operations and eight shuffles
within 6.1. The dependent operations (chain) are counted in the source; the others (throughput) are counted in the
compiled loops.

| block | chain | throughput | what the rest is |
|---|---|---|---|
| limiter, fixed release | 9: subtraction, multiplication and addition for each released gain | 5: 36 conversions, 16 divisions and about 170 other vector operations per chunk of 16 samples; 60 for the chains themselves per group of 4 | about 15 are used: the vector work of the next chunk only partly fills the gaps in the chain, because waiting instructions occupy the registers |
| limiter, auto release | about 75: fourth power, reciprocal, exponential, release | as above | about 115 are used: for one sample in six the C library is called, and each time a branch is mispredicted |
| filter of order 32 | 4 fused, 10 plain: the operations that a stage's delay waits for | 18: 28 fused operations and multiplications, 10 additions, 8 shuffles and 2 conversions per sample of two channels | about 24 are used: 11 in the first eight stages, 9 in the others, 3 to convert and store, and the ends of a block, where lanes start and end one by one |
| filter of order 4 | 4 fused, 12 plain: the rounding of two products and the value against denormals, one after the other | 5 | about 7 fused, 12 plain: the chain itself, and the changes between vectors and samples |

)";
}

} // namespace KAV::Measure
