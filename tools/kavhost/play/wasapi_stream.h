#pragma once

#include "tools/kavhost/play/audio_output.h"
#include "tools/kavhost/play/channel_mix.h"
#include "tools/kavhost/play/com_library.h"
#include "tools/kavhost/play/device_samples.h"
#include "tools/kavhost/play/rate_converter.h"

#include <audioclient.h>
#include <mmdeviceapi.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace KAV::Host {

struct SRelease {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};
template<typename OBJECT>
using ComPointer = std::unique_ptr<OBJECT, SRelease>;

/// One connection to the default device, shared with other programs, in the form that the device's mixer
/// works in. Threads: one, on which COM is in use.
class CWasapiStream final {
public:
    /// `source` provides audio at this rate, with these channels. Null if there is no device, or it can't be
    /// used; `reason` then says why.
    static std::unique_ptr<CWasapiStream> Open(
        const SCom& com, int rateHz, int channels, const AudioSource& source, std::string& reason);
    ~CWasapiStream();
    CWasapiStream(const CWasapiStream&) = delete;
    CWasapiStream& operator=(const CWasapiStream&) = delete;

    /// Plays until the event `ends` is set. Otherwise the device has failed, as a rule because it was
    /// unplugged.
    void Play(HANDLE ends) noexcept;

private:
    CWasapiStream(int rateHz, int channels, const AudioSource& source);
    HRESULT Connect(const SCom& com);
    HRESULT Configure(const WAVEFORMATEX& format);
    HRESULT Fill(std::uint32_t frames) noexcept;
    void ReadDevice(std::span<float> frames) noexcept;

    int _rateHz;
    int _channels;
    const AudioSource& _source;

    ComPointer<IAudioClient> _client;
    ComPointer<IAudioRenderClient> _renderer;
    HANDLE _wakes;           ///< the device has room again
    std::uint32_t _room = 0; ///< frames that the device's buffer holds
    EDeviceSamples _samples = EDeviceSamples::Float32;
    std::size_t _deviceChannels = 0;
    std::unique_ptr<CChannelMix> _mix;
    std::unique_ptr<CRateConverter> _converter;
    AudioSource _mixed;         ///< at the file's rate, with the device's channels
    std::vector<float> _file;   ///< frames before the mix
    std::vector<float> _device; ///< frames after the converter
};

} // namespace KAV::Host
