#pragma once

#include "dsp/channel_buffers.h"
#include "dsp/k_weighting.h"
#include "dsp/rms_window.h"
#include "dsp/smoother.h"
#include "utils/channels.h"
#include "utils/realtime.h"
#include "utils/shared.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace KAV::DSP {

/// Settings of the automatic gain stage. Threads: written by the user's side, read by the audio thread.
struct AutoGainSettings {
    Utils::CShared<std::uint8_t> filter{1};     ///< 0 flat, 1 K-weighted
    Utils::CShared<double> suspendLevel{-60.0}; ///< dB; exactly 0 never suspends
    Utils::CShared<double> rmsTime{2000.0};     ///< ms
    Utils::CShared<double> tolerance{1.0};      ///< dB
    Utils::CShared<double> maximumGain{10.0};   ///< dB
    Utils::CShared<double> maximumCut{20.0};    ///< dB, positive
};

/// Compares the loudness before and after the groups and moves the main output gain until they match. It
/// works at the base rate, in double precision.
///
/// Threads: SetRate() and Reserve() while audio is stopped; the rest on the audio thread, allocates nothing.
class AutoGain final {
public:
    static constexpr std::size_t MaxChannels = Utils::MostChannels;
    static_assert(MaxChannels == CChannelBuffers::Count);

    AutoGain() = default;

    /// Base rate in Hz. A different rate empties the windows. Throws std::bad_alloc, and then nothing has
    /// changed.
    void SetRate(float rateHz);
    /// Makes room for blocks of `frames` samples. Throws std::bad_alloc, and then nothing has changed.
    void Reserve(std::size_t frames);

    /// Once per block, before the groups: keeps their input. `channels`: up to 16 of `frames` samples; null
    /// for a channel that is left out.
    KAV_REALTIME void Prepare(const AutoGainSettings& settings, bool disabled, bool autoOn,
        std::span<float* const> channels, std::size_t frames) noexcept;

    /// Once per block, after the groups, unless disabled. Measures the channels that some group used, and
    /// applies to all of them the output gain of `position` (0..1 for -24..+24 dB). In auto mode it moves
    /// that position; returns true when it has moved.
    KAV_REALTIME bool Run(const AutoGainSettings& settings, std::span<float* const> channels,
        std::span<const bool> used, std::size_t frames, float& position) noexcept;

    KAV_REALTIME bool IsDisabled() const noexcept { return _disabled; }
    KAV_REALTIME bool IsAdjusting() const noexcept { return !_disabled && _autoOn && _adjusting; }
    /// Whether the frame has to compute its output gain again. Reading it resets it.
    KAV_REALTIME bool TakeRefresh() noexcept { return std::exchange(_refresh, false); }
    double Ratio() const noexcept { return _ratio; }                   ///< input to output before the gain
    double CorrectedRatio() const noexcept { return _correctedRatio; } ///< input to output after the gain
    double Gain() const noexcept { return _gain; }                     ///< linear, not clamped to the limits

private:
    struct SLimits;
    using CBank = std::array<CKWeightingState, MaxChannels>;

    void Adjust(const SLimits& limits, double& current, float& position) noexcept;
    void Measure(CBank& bank, bool filter, std::span<const std::size_t> used,
        std::span<const float* const> channels, std::size_t i) noexcept;
    bool IsQuiet(std::span<const std::size_t> used, std::size_t i, double level) const noexcept;
    void Recover() noexcept;

    float _rateHz = 0.0f;
    SKWeighting _weighting{44100.0};
    RmsWindow _inputWindow;
    RmsWindow _outputWindow;    // before the gain
    RmsWindow _correctedWindow; // after the gain
    bool _disabled = true;
    bool _refresh = false;
    double _ratio = 1.0;
    double _correctedRatio = 1.0;
    double _gain = 1.0;
    bool _autoOn = false;
    bool _adjusting = false;
    Smoother _ballistics{0.0f, 0.0f, 44100.0f}; // steps once per sample
    CChannelBuffers _copies;                    // of the input
    CBank _inputFilters;
    CBank _outputFilters;
    std::array<double, MaxChannels> _values{}; // of the used channels, for one sample
};

} // namespace KAV::DSP
