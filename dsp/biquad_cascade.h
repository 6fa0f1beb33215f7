#pragma once

#include "dsp/cascade_run.h"
#include "dsp/processor_path.h"
#include "utils/channels.h"
#include "utils/realtime.h"

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <span>

namespace KAV::DSP {

/// A Butterworth low-pass of even order as a cascade of biquads in direct form II, for up to 16 channels. A
/// single channel is filtered in plain arithmetic. Several at once use fused multiply-add if the processor
/// has it, which differs in the last bits.
/// Threads: one at a time; Design() and Process() allocate nothing.
class BiquadCascade final {
public:
    static constexpr std::size_t MaxChannels = Utils::MostChannels;
    static constexpr std::size_t MaxStages = SCascadeCoefficients::MaxStages;

    /// `order`: even, 2..32.
    explicit BiquadCascade(std::size_t order) noexcept;

    /// Places the -3 dB corner at `cutoff`, a fraction of the sample rate (0..0.5), with unity gain at 0 Hz,
    /// and empties the delays.
    KAV_REALTIME void Design(double cutoff) noexcept;

    /// How many channels one pass takes with these processor features (Utils::CpuFeature): 1, 2 or 4.
    static std::size_t PassWidth(std::uint64_t features) noexcept;

    /// Filters channels of `length` samples in place, PassWidth() channels per pass and the remaining ones in
    /// a last pass. Delays belong to a channel's place in the list. A place that contains not-a-number or
    /// infinity is emptied at the end; otherwise it would never produce sound again.
    KAV_REALTIME void Process(
        std::span<float* const> channels, std::size_t length, std::uint64_t features = 0) noexcept;
    /// The same on a given path; all paths produce the same bits.
    KAV_REALTIME void Process(std::span<float* const> channels, std::size_t length, std::uint64_t features,
        EProcessorPath path) noexcept;

private:
    void Run(const SCascadeRun& run, bool fused, EProcessorPath path) const noexcept;
    void RunPlain(const SCascadeRun& run, std::size_t c) const noexcept;
    void RunPlainFused(const SCascadeRun& run, std::size_t c) const noexcept;
    void Recover(SCascadeDelays& delays) const noexcept;

    std::size_t _count; // stages: half the order
    std::array<std::complex<double>, MaxStages>
        _prototype;                     // analogue poles of the upper half plane, unit radius
    SCascadeCoefficients _coefficients; // the first _count
    std::array<SCascadeDelays, MaxChannels> _delays{};
    double _antiDenormal = 1e-8; // flips its sign with each sample, so that it leaves no offset
};

} // namespace KAV::DSP
