#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>

namespace KAV::Host {

/// Calls for audio until it ends, on a thread of its own.
class IAudioOutput {
public:
    virtual ~IAudioOutput() = default;
};

/// Fills whole frames of interleaved audio; neither throws nor waits.
using AudioSource = std::function<void(std::span<float>)>;

/// The desktop's audio device at any rate and with any number of channels, by SDL: PipeWire, JACK, PulseAudio
/// or ALSA, whichever there is. Null if there is none; `reason` then says why. The calls are for `source`,
/// which outlives it.
std::unique_ptr<IAudioOutput> OpenAudioDevice(
    int rateHz, int channels, const AudioSource& source, std::string& reason);

/// A clock that calls for audio in real time, and drops it.
std::unique_ptr<IAudioOutput> OpenSilentClock(int rateHz, int channels, const AudioSource& source);

/// Mixes frames of any number of channels to two: the odd ones, counted from 1, left, the even ones right,
/// each at an equal part of full scale.
void MixToStereo(std::span<const float> interleaved, int channels, std::span<float> stereo) noexcept;

} // namespace KAV::Host
