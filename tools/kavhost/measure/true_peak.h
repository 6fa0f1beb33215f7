#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace KAV::Host {

/// The highest peak between the samples of a file, by the oversampling of ITU-R BS.1770: a sinc of 49 taps
/// under a raised cosine, at four times the rate below 96 kHz and twice the rate below 192 kHz. From there on
/// it is the highest sample. The result is bit for bit that of libebur128, which needs several times as long.
class CTruePeak final {
public:
    CTruePeak(int channels, int rateHz);

    /// Whole frames of finite samples.
    void Add(std::span<const float> interleaved);

    /// Linear, over all channels: of the samples, and of what lies between them as well.
    double SamplePeak() const noexcept { return _samplePeak; }
    double Peak() const noexcept { return _peak; }

private:
    static constexpr std::size_t Taps = 49;
    static constexpr std::size_t MostFactor = 4;
    static constexpr std::size_t MostPhaseTaps = (Taps - 1) / 2; ///< of a phase at factor 2, the longest
    static constexpr std::size_t Group = 32;                     ///< frames that are judged at a time

    /// The taps that lie on the samples of one phase, latest sample first. Phase 0 is the samples themselves.
    struct SPhase {
        std::size_t taps = 0;
        std::array<double, MostPhaseTaps> coefficients{};
        std::array<float, MostPhaseTaps> rounded{};
        std::array<std::size_t, MostPhaseTaps> delays{}; ///< in samples
    };

    /// A channel's past samples, then those of the next group.
    using Window = std::array<float, MostPhaseTaps + Group>;

    void AddGroup(const Window& window, std::size_t frames);
    double HighestBetween(const Window& window) const noexcept;
    void TakeExactly(const Window& window, std::size_t frames);

    std::array<SPhase, MostFactor> _phases;
    std::size_t _factor;
    double _mostGain = 1; ///< by which a phase can exceed its highest sample
    std::vector<Window> _windows;
    double _samplePeak = 0;
    double _peak = 0; ///< at least the other
};

} // namespace KAV::Host
