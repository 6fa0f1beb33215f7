#include "tools/kavhost/play/audio_output.h"
#include "tools/kavhost/play/channel_mix.h"
#include "tools/kavhost/play/sdl_library.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace KAV::Host {

namespace {

/// Frames per call: about 20 ms, at a power of two, as devices like it.
std::uint16_t PeriodAt(int rateHz) noexcept {
    return static_cast<std::uint16_t>(
        std::bit_ceil(static_cast<unsigned>(std::clamp(rateHz, 1000, 768'000)) / 64));
}

class CSdlDevice final : public IAudioOutput {
public:
    CSdlDevice(const SSdl& sdl, int channels, const AudioSource& source, std::size_t period)
        : _sdl(sdl), _channels(channels), _source(source),
          _wide(IsUsualLayout(channels) ? 0 : period * static_cast<std::size_t>(channels)) {}

    ~CSdlDevice() override {
        if (_device != 0) _sdl.closeAudioDevice(_device);
        _sdl.quitSubSystem(SdlAudio);
    }

    bool Open(const SDL_AudioSpec& wanted) {
        SDL_AudioSpec spec = wanted;
        spec.userdata = this;
        spec.callback = [](void* self, Uint8* bytes, int count) {
            static_cast<CSdlDevice*>(self)->Fill(
                {reinterpret_cast<float*>(bytes), static_cast<std::size_t>(count) / sizeof(float)});
        };
        SDL_AudioSpec obtained{};
        _device = _sdl.openAudioDevice(nullptr, 0, &spec, &obtained, 0); // converts whatever differs
        if (_device == 0) return false;
        _sdl.pauseAudioDevice(_device, 0);
        return true;
    }

private:
    void Fill(std::span<float> samples) noexcept {
        if (_wide.empty()) return _source(samples);
        const auto channels = static_cast<std::size_t>(_channels);
        while (!samples.empty()) {
            const auto frames = std::min(samples.size() / 2, _wide.size() / channels);
            const auto wide = std::span(_wide).first(frames * channels);
            _source(wide);
            MixToStereo(wide, _channels, samples.first(frames * 2));
            samples = samples.subspan(frames * 2);
        }
    }

    const SSdl& _sdl;
    int _channels;
    const AudioSource& _source;
    std::vector<float> _wide; ///< frames of more channels than the library takes
    SDL_AudioDeviceID _device = 0;
};

} // namespace

std::unique_ptr<IAudioOutput> OpenAudioDevice(
    int rateHz, int channels, const AudioSource& source, std::string& reason) {
    const auto* const sdl = Sdl();
    if (sdl == nullptr) {
        reason = "the library libSDL2-2.0.so.0 is not installed";
        return nullptr;
    }
    sdl->setHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1"); // Ctrl-C is kavhost's
    sdl->setHint("SDL_APP_NAME", "kavhost");
    if (sdl->initSubSystem(SdlAudio) != 0) {
        reason = sdl->getError();
        return nullptr;
    }
    SDL_AudioSpec wanted{};
    wanted.freq = rateHz;
    wanted.format = AUDIO_F32SYS;
    wanted.channels = static_cast<Uint8>(IsUsualLayout(channels) ? channels : 2);
    wanted.samples = PeriodAt(rateHz);
    auto device = std::make_unique<CSdlDevice>(*sdl, channels, source, wanted.samples);
    if (device->Open(wanted)) return device;
    reason = sdl->getError();
    return nullptr;
}

} // namespace KAV::Host
