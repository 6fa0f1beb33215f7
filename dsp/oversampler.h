#pragma once

#include "dsp/biquad_cascade.h"
#include "dsp/channel_buffers.h"
#include "utils/realtime.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace KAV::DSP {

/// Raises channels to 1, 2, 4 or 8 times their rate by zero-stuffing and a low-pass, and lowers them again by
/// a low-pass and dropping samples. At factor 1 the channels pass unchanged.
///
/// Threads: SetSampleRate() and Reserve() while audio is stopped; the rest on the audio thread, allocates
/// nothing.
class Oversampler final {
public:
    static constexpr std::size_t MaxChannels = BiquadCascade::MaxChannels;
    static constexpr std::int32_t MaxFactor = 8;

    Oversampler() noexcept;

    /// Base rate in Hz; a different rate designs the filters again.
    void SetSampleRate(float rateHz) noexcept;
    /// Makes room for `frames` samples at the base rate; the room never shrinks.
    void Reserve(std::size_t frames);

    /// `factor`: 1, 2, 4 or 8. A different factor designs the filters again and empties them, with no ramp.
    KAV_REALTIME void SetFactor(std::int32_t factor) noexcept;
    /// Selects the pair of filters. The selected pair continues from its own delays.
    KAV_REALTIME void SetHighQuality(bool highQuality) noexcept { _highQuality = highQuality; }
    /// Processor features that the filters may use from now on; initially 0.
    KAV_REALTIME void SetFeatures(std::uint64_t features) noexcept { _features = features; }

    /// Takes up to 16 channels of `frames` samples (within the reserve), null for one that is left out, and
    /// replaces them by the raised channels of frames x factor samples.
    KAV_REALTIME void Up(std::span<float*> channels, std::size_t frames) noexcept;
    /// The reverse for the same list: puts the channels that Up() took back into their places, with the
    /// result in them.
    KAV_REALTIME void Down(std::span<float*> channels) noexcept;

    std::int32_t Factor() const noexcept { return _factor; }

private:
    void Design() noexcept;
    void Filter(BiquadCascade& cascade, std::size_t length) noexcept;

    float _rateHz = 44100.0f;
    std::int32_t _factor = 1;
    bool _highQuality = false;
    std::uint64_t _features = 0;
    std::size_t _frames = 0;                  // of the block between Up() and Down()
    std::array<float*, MaxChannels> _in{};    // the channels of that block, null for one that is left out
    CChannelBuffers _raised;                  // MaxFactor x the reserved frames
    BiquadCascade _standardUp, _standardDown; // order 4, corner at 0.9 of the base Nyquist frequency
    BiquadCascade _qualityUp, _qualityDown;   // order 32, corner at 0.99
};

} // namespace KAV::DSP
