#pragma once

#include "dsp/channel_buffers.h"
#include "dsp/gain_stage.h"
#include "dsp/lookahead_limiter.h"
#include "dsp/mid_side.h"
#include "dsp/peak_probe.h"
#include "dsp/smoother.h"
#include "utils/realtime.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace KAV::DSP {

/// The rate in Hz at which a group works.
double OversampledRate(std::int32_t factor, float rateHz) noexcept;

/// What one group is set to for one block; continuous values are positions 0..1.
struct SGroupSettings {
    float inputGain = 0.0f;
    float threshold = 0.0f;
    float ceiling = 0.0f;
    float release = 0.0f;
    bool autoRelease = false;
    bool limiter = false;
    bool bypass = false; ///< the host's bypass
    EMidSide midSide = EMidSide::Off;

    bool operator==(const SGroupSettings&) const noexcept = default;
};

/// One effect group: gain, limiter, probes, and the crossfade to and from bypass, on the channels that it is
/// given. All positions start at 0 and ramp up to their values, so a new instance fades in; they are never
/// reset.
///
/// Threads: ReserveRate() and SetSampleRate() while audio is stopped; the rest on the audio thread.
class FxGroup final {
public:
    static constexpr std::size_t MaxChannels = LookaheadLimiter::MaxChannels;

    FxGroup();

    /// Makes room in the limiter for the highest oversampling factor of the base rate `rateHz`.
    void ReserveRate(float rateHz);
    /// Base rate in Hz, not oversampled. A different rate restarts the limiter.
    void SetSampleRate(float rateHz);
    /// Sets the block length in oversampled samples. Prepare() changes it when a block has another length.
    KAV_REALTIME void SetBlock(std::size_t length) noexcept;

    /// Takes the settings for a block of `length` oversampled samples at `factor` times the base rate, and
    /// moves all smoothed values one step. Must be called for every block, even if the group has no channels.
    KAV_REALTIME void Prepare(const SGroupSettings& settings, std::uint64_t features, std::size_t length,
        std::int32_t factor) noexcept {
        _features = features;
        if (!_settled || length != _block || factor != _factor || settings != _settings) {
            Move(settings, length, factor);
        }
    }

    /// Runs the group on up to 16 channels in place. The list is empty for a group without channels. In
    /// mid/side mode the first two channels are left and right, and the others are left unchanged; a single
    /// channel is processed normally. `dry` has room for the block and holds the inputs while crossfading;
    /// its content isn't needed afterwards.
    KAV_REALTIME void Process(std::span<float* const> channels, const CChannelBuffers& dry) noexcept;

    /// Highest sample at list place `place` since it was last taken, before and after the limiter.
    std::array<PeakProbe, MaxChannels> inputProbes;
    std::array<PeakProbe, MaxChannels> outputProbes;

    LookaheadLimiter& Limiter() noexcept { return _limiter; }
    const LookaheadLimiter& Limiter() const noexcept { return _limiter; }

private:
    void Move(const SGroupSettings& settings, std::size_t length, std::int32_t factor) noexcept;
    bool Move(float& position, float target) noexcept;
    void Limit(std::span<float* const> channels) noexcept;
    void LimitMidSide(std::span<float* const> channels) noexcept;
    void AmplifyAndProbe(std::span<float* const> channels) noexcept;
    void ReadOutputs(std::span<float* const> channels) noexcept;
    void KeepDry(std::span<float* const> channels, const CChannelBuffers& dry) const noexcept;
    void MixDry(std::span<float* const> channels, const CChannelBuffers& dry) const noexcept;

    bool _firstBlock = true;     // all derived values are computed again
    std::uint64_t _features = 0; // processor features that the block may use
    float _rateHz = 44100.0f;    // base rate
    std::size_t _block = 0;      // oversampled samples per block
    SGroupSettings _settings;    // as last taken
    bool _settled =
        false; // all positions have arrived, so another block with the same settings changes nothing
    Smoother _mixSmoother;       // steps once per block
    float _mixPosition = 0.0f;   // 0 processed .. 1 bypassed
    Smoother _parameterSmoother; // steps once per block
    GainStage _gain;
    float _inputGain = 0.0f; // smoothed positions
    float _threshold = 0.0f;
    float _ceiling = 0.0f;
    float _release = 0.0f;
    std::int32_t _factor = 1; // oversampling factor last seen
    LookaheadLimiter _limiter;
};

} // namespace KAV::DSP
