#include "tools/kavhost/play/wasapi_stream.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

namespace KAV::Host {

namespace {

constexpr REFERENCE_TIME BufferLength = 400'000; ///< 40 ms, in units of 100 ns
constexpr std::size_t Portion = 256;             ///< frames that are mixed and converted at a time
/// A device that works asks for audio every 10 ms. One that doesn't may have been taken away unnoticed.
constexpr DWORD LongestSilenceMs = 2000;

constexpr HRESULT NotFound = static_cast<HRESULT>(0x80070490); ///< the system's ERROR_NOT_FOUND
constexpr HRESULT UnknownForm = AUDCLNT_E_UNSUPPORTED_FORMAT;

/// The kinds of samples, as the first number of their identifiers; the rest is common to all.
constexpr std::uint32_t WholeNumbers = 1;
constexpr std::uint32_t FloatingPoint = 3;

std::optional<EDeviceSamples> SamplesOf(const WAVEFORMATEX& format) noexcept {
    std::uint32_t kind = format.wFormatTag;
    if (format.wFormatTag == WAVE_FORMAT_EXTENSIBLE &&
        format.cbSize >= sizeof(WAVEFORMATEXTENSIBLE) - sizeof(WAVEFORMATEX))
        kind = reinterpret_cast<const WAVEFORMATEXTENSIBLE&>(format).SubFormat.Data1;
    if (kind == FloatingPoint && format.wBitsPerSample == 32) return EDeviceSamples::Float32;
    if (kind != WholeNumbers) return std::nullopt;
    switch (format.wBitsPerSample) {
    case 16:
        return EDeviceSamples::Int16;
    case 24:
        return EDeviceSamples::Int24;
    case 32: // 24 bits in 32 are the upper ones
        return EDeviceSamples::Int32;
    default:
        return std::nullopt;
    }
}

std::string ReasonOf(HRESULT result) {
    switch (result) {
    case NotFound:
        return "there is no audio device";
    case AUDCLNT_E_DEVICE_INVALIDATED:
        return "the audio device was removed";
    case AUDCLNT_E_DEVICE_IN_USE:
    case AUDCLNT_E_EXCLUSIVE_MODE_NOT_ALLOWED:
        return "another program uses the audio device exclusively";
    case AUDCLNT_E_SERVICE_NOT_RUNNING:
        return "the system's audio service is not running";
    case UnknownForm:
        return "the audio device accepts no sample format that kavhost can provide";
    default:
        std::array<char, 16> number{};
        std::snprintf(number.data(), number.size(), "0x%08X", static_cast<unsigned>(result));
        return std::string("the audio device cannot be opened: error ") + number.data();
    }
}

/// Takes over what a call has stored in a pointer.
template<typename OBJECT>
class CReceiver final {
public:
    explicit CReceiver(ComPointer<OBJECT>& to) noexcept : _to(to) {}
    ~CReceiver() { _to.reset(_object); }
    CReceiver(const CReceiver&) = delete;
    CReceiver& operator=(const CReceiver&) = delete;

    operator OBJECT**() noexcept { return &_object; }
    operator void**() noexcept { return reinterpret_cast<void**>(&_object); }

private:
    ComPointer<OBJECT>& _to;
    OBJECT* _object = nullptr;
};

} // namespace

CWasapiStream::CWasapiStream(int rateHz, int channels, const AudioSource& source)
    : _rateHz(rateHz), _channels(channels), _source(source),
      _wakes(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      _file(Portion * static_cast<std::size_t>(channels)) {}

CWasapiStream::~CWasapiStream() {
    if (_client) _client->Stop();
    _renderer.reset();
    _client.reset();
    CloseHandle(_wakes);
}

std::unique_ptr<CWasapiStream> CWasapiStream::Open(
    const SCom& com, int rateHz, int channels, const AudioSource& source, std::string& reason) {
    std::unique_ptr<CWasapiStream> stream(new CWasapiStream(rateHz, channels, source));
    const auto result = stream->Connect(com);
    if (SUCCEEDED(result)) return stream;
    reason = ReasonOf(result);
    return nullptr;
}

HRESULT CWasapiStream::Connect(const SCom& com) {
    ComPointer<IMMDeviceEnumerator> devices;
    auto result = com.createInstance(
        __uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, __uuidof(IMMDeviceEnumerator), CReceiver(devices));
    if (FAILED(result)) return result;
    ComPointer<IMMDevice> device;
    result = devices->GetDefaultAudioEndpoint(eRender, eConsole, CReceiver(device));
    if (FAILED(result)) return result;
    result = device->Activate(__uuidof(IAudioClient), CLSCTX_ALL, nullptr, CReceiver(_client));
    if (FAILED(result)) return result;
    WAVEFORMATEX* format = nullptr;
    result = _client->GetMixFormat(&format);
    if (FAILED(result)) return result;
    result = Configure(*format);
    com.free(format);
    if (FAILED(result)) return result;
    result = Fill(_room); // so that the first period isn't silent
    return FAILED(result) ? result : _client->Start();
}

HRESULT CWasapiStream::Configure(const WAVEFORMATEX& format) {
    const auto samples = SamplesOf(format);
    if (!samples || format.nChannels == 0 || format.nSamplesPerSec == 0 ||
        format.nBlockAlign != format.nChannels * BytesOf(*samples))
        return UnknownForm;
    _samples = *samples;
    _deviceChannels = format.nChannels;
    auto result = _client->Initialize(
        AUDCLNT_SHAREMODE_SHARED, AUDCLNT_STREAMFLAGS_EVENTCALLBACK, BufferLength, 0, &format, nullptr);
    if (FAILED(result)) return result;
    result = _client->SetEventHandle(_wakes);
    if (FAILED(result)) return result;
    result = _client->GetBufferSize(&_room);
    if (FAILED(result)) return result;
    result = _client->GetService(__uuidof(IAudioRenderClient), CReceiver(_renderer));
    if (FAILED(result)) return result;
    _mix = std::make_unique<CChannelMix>(_channels, static_cast<int>(_deviceChannels));
    _converter =
        std::make_unique<CRateConverter>(_rateHz, static_cast<int>(format.nSamplesPerSec), _deviceChannels);
    _device.resize(Portion * _deviceChannels);
    _mixed = [this](std::span<float> frames) { ReadDevice(frames); };
    return S_OK;
}

void CWasapiStream::ReadDevice(std::span<float> frames) noexcept {
    const auto channels = static_cast<std::size_t>(_channels);
    while (!frames.empty()) {
        const auto count = std::min(frames.size() / _deviceChannels, Portion);
        const auto file = std::span(_file).first(count * channels);
        _source(file);
        _mix->Mix(file, frames.first(count * _deviceChannels));
        frames = frames.subspan(count * _deviceChannels);
    }
}

HRESULT CWasapiStream::Fill(std::uint32_t frames) noexcept {
    if (frames == 0) return S_OK;
    BYTE* bytes = nullptr;
    const auto result = _renderer->GetBuffer(frames, &bytes);
    if (FAILED(result)) return result;
    for (std::size_t left = frames; left > 0;) {
        const auto count = std::min(left, Portion);
        const auto portion = std::span(_device).first(count * _deviceChannels);
        _converter->Fill(portion, _mixed);
        StoreSamples(portion, _samples, bytes);
        bytes += portion.size() * BytesOf(_samples);
        left -= count;
    }
    return _renderer->ReleaseBuffer(frames, 0);
}

void CWasapiStream::Play(HANDLE ends) noexcept {
    const std::array<HANDLE, 2> events{ends, _wakes};
    for (;;) {
        const auto which =
            WaitForMultipleObjects(static_cast<DWORD>(events.size()), events.data(), FALSE, LongestSilenceMs);
        if (which == WAIT_OBJECT_0) return;
        UINT32 waiting = 0;
        if (which != WAIT_OBJECT_0 + 1 || FAILED(_client->GetCurrentPadding(&waiting)) ||
            FAILED(Fill(_room - std::min(waiting, _room))))
            return;
    }
}

} // namespace KAV::Host
