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

    /// Why there is no sound any more; empty while there is some, or if there never was. Any thread.
    virtual std::string Failure() const { return {}; }
};

/// Fills whole frames of interleaved audio; neither throws nor waits.
using AudioSource = std::function<void(std::span<float>)>;

/// The desktop's audio device at any rate and with any number of channels. Linux: PipeWire, JACK, PulseAudio
/// or ALSA, whichever there is, by SDL. Windows: the default device, shared with other programs, by WASAPI.
/// Null if there is none; `reason` then says why. The calls are for `source`, which outlives it.
std::unique_ptr<IAudioOutput> OpenAudioDevice(
    int rateHz, int channels, const AudioSource& source, std::string& reason);

/// A clock that calls for audio in real time, and drops it.
std::unique_ptr<IAudioOutput> OpenSilentClock(int rateHz, int channels, const AudioSource& source);

} // namespace KAV::Host
