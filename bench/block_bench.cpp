// Single building blocks of the engine, compared with the speed reference in the same run. Stereo, 48 kHz,
// blocks of 512, 12 dB of limiting, 10 ms of release and the processor's best path, unless a case says
// otherwise: one thing varies per case.

#include "bench/against_reference.h"
#include "bench/material.h"
#include "bench/speed_reference.h"
#include "dsp/biquad_cascade.h"
#include "dsp/lookahead_limiter.h"
#include "utils/cpu_features.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

using namespace KAV;

namespace {

struct SLimiterCase {
    std::string name;
    std::size_t channels = 2;
    std::size_t block = 512;
    double rateHz = 48000.0;
    double driveDb = 12.0;
    double releaseSeconds = 0.01;
    bool autoRelease = false;
    std::uint64_t features = Utils::DetectFeatures();
    bool plain = false;
};

/// Repeats the material's first second in blocks; each channel is a little later than the previous one.
class CBlocks final {
public:
    CBlocks(double rateHz, std::size_t channels, std::size_t block)
        : _material(Bench::Material(rateHz)), _block(block), _work(channels, std::vector<float>(block)) {
        for (auto& channel : _work) pointers.push_back(channel.data());
    }
    template<typename TProcess>
    void Run(const TProcess& process) {
        for (std::size_t at = 0; at + _block <= Frames; at += _block) {
            for (std::size_t c = 0; c < _work.size(); ++c) {
                std::copy_n(
                    _material.begin() + static_cast<std::ptrdiff_t>(at + 37 * c), _block, _work[c].begin());
            }
            process(pointers.data());
            benchmark::ClobberMemory();
        }
    }

    static constexpr std::size_t Frames = 16384;
    std::vector<float*> pointers;

private:
    std::vector<float> _material;
    std::size_t _block;
    std::vector<std::vector<float>> _work;
};

void Limiter(benchmark::State& state, const SLimiterCase& subject) {
    CBlocks blocks(subject.rateHz, subject.channels, subject.block);
    CBlocks referenceBlocks(subject.rateHz, subject.channels, subject.block);
    DSP::LookaheadLimiter limiter;
    limiter.SetRate(subject.rateHz);
    const auto thresholdPos = static_cast<float>(1.0 - subject.driveDb / 30.0);
    const auto releasePos = static_cast<float>(1.0 + std::log10(subject.releaseSeconds) / 5.0);
    limiter.SetParams(thresholdPos, 1.0f, releasePos, subject.autoRelease);
    Bench::CReferenceLimiter reference(subject.rateHz, thresholdPos, releasePos, subject.autoRelease);
    const auto path = subject.plain ? DSP::EProcessorPath::Plain : DSP::PathFor(subject.features);
    Bench::Against(
        state, CBlocks::Frames,
        [&] {
            blocks.Run([&](float* const* channels) {
                limiter.Process(std::span(channels, subject.channels), subject.block, path);
            });
        },
        [&] {
            referenceBlocks.Run([&](float* const* channels) {
                reference.Process(std::span(channels, subject.channels), subject.block);
            });
        });
}

struct SCascadeCase {
    std::string name;
    std::size_t order = 32;
    std::size_t channels = 2;
    std::size_t block = 4096;
    std::uint64_t features = Utils::DetectFeatures();
    bool plain = false;
};

/// At eight times the rate, in one direction.
void Cascade(benchmark::State& state, const SCascadeCase& subject) {
    CBlocks blocks(48000.0, subject.channels, subject.block);
    CBlocks referenceBlocks(48000.0, subject.channels, subject.block);
    const double cutoff = (subject.order == 32 ? 0.99 : 0.9) * 0.5 / 8.0;
    DSP::BiquadCascade cascade(subject.order);
    cascade.Design(cutoff);
    Bench::CReferenceCascade reference(subject.order, cutoff);
    const auto path = subject.plain ? DSP::EProcessorPath::Plain : DSP::PathFor(subject.features);
    Bench::Against(
        state, CBlocks::Frames,
        [&] {
            blocks.Run([&](float* const* channels) {
                cascade.Process(std::span(channels, subject.channels), subject.block, subject.features, path);
            });
        },
        [&] {
            referenceBlocks.Run([&](float* const* channels) {
                reference.Process(std::span(channels, subject.channels), subject.block);
            });
        });
}

[[maybe_unused]] const bool CascadesRegistered = [] {
    for (const SCascadeCase& subject : {
             SCascadeCase{.name = "order 32"},
             SCascadeCase{.name = "order 32, narrow path", .features = 0},
             SCascadeCase{.name = "order 32, plain path", .features = 0, .plain = true},
             SCascadeCase{.name = "order 32, mono", .channels = 1},
             SCascadeCase{.name = "order 32, 16 channels", .channels = 16},
             SCascadeCase{.name = "order 32, block of 256", .block = 256},
             SCascadeCase{.name = "order 4", .order = 4},
             SCascadeCase{.name = "order 4, narrow path", .order = 4, .features = 0},
             SCascadeCase{.name = "order 4, 16 channels", .order = 4, .channels = 16},
             SCascadeCase{.name = "order 4, block of 256", .order = 4, .block = 256},
         }) {
        benchmark::RegisterBenchmark(("Cascade/" + subject.name).c_str(),
            [subject](benchmark::State& state) { Cascade(state, subject); })
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
    return true;
}();

[[maybe_unused]] const bool LimitersRegistered = [] {
    for (const SLimiterCase& subject : {
             SLimiterCase{.name = "stereo"},
             SLimiterCase{.name = "narrow path", .features = 0},
             SLimiterCase{.name = "plain path", .plain = true},
             SLimiterCase{.name = "mono", .channels = 1},
             SLimiterCase{.name = "16 channels", .channels = 16},
             SLimiterCase{.name = "nothing to limit", .driveDb = -1.0},
             SLimiterCase{.name = "auto release", .autoRelease = true},
             SLimiterCase{.name = "auto release, 3 dB", .driveDb = 3.0, .autoRelease = true},
             SLimiterCase{.name = "auto release, nothing to limit", .driveDb = -1.0, .autoRelease = true},
             SLimiterCase{.name = "384 kHz", .rateHz = 384000.0},
             SLimiterCase{.name = "block of 32", .block = 32},
             SLimiterCase{.name = "block of 64", .block = 64},
             SLimiterCase{.name = "block of 441", .block = 441},
         }) {
        benchmark::RegisterBenchmark(("Limiter/" + subject.name).c_str(),
            [subject](benchmark::State& state) { Limiter(state, subject); })
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
    return true;
}();

} // namespace
