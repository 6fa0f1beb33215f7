// Sound on Windows, on a device of the test's own: the objects that the system would make.

#include "tools/kavhost/play/com_library.h"
#include "tools/kavhost/play/wasapi_stream.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace KAV::Host;

namespace {

constexpr UINT32 Room = 1920;  ///< frames in the device's buffer
constexpr UINT32 Period = 480; ///< frames that it plays before it asks for more
constexpr auto NoDevice = static_cast<HRESULT>(0x80070490);

/// The steps of an opening at which the system may refuse.
enum class EStep { None, Make, Endpoint, Activate, MixFormat, Initialize, Event, BufferSize, Service, Start };

/// The one device there is, and what has become of it.
struct SDevice {
    std::mutex mutex;
    // under the mutex
    WAVEFORMATEXTENSIBLE format{};
    EStep refused = EStep::None;
    HRESULT refusal = E_FAIL;
    std::string played; ///< all bytes that it got
    int openings = 0;

    std::atomic<bool> isThere{true}; ///< false: each call to what is open fails
    std::atomic<bool> asks{true};    ///< false: its event is no longer set
    std::atomic<int> objects{0};     ///< alive
    std::atomic<int> memories{0};    ///< handed out and not freed
    std::atomic<int> uses{0};        ///< of COM
    std::atomic<bool> isOverrun{false};
    std::atomic<bool> isMisused{false}; ///< calls that the system's documentation forbids

    HRESULT Answer(EStep step) {
        const std::scoped_lock lock(mutex);
        return step == refused ? refusal : S_OK;
    }
    void Refuse(EStep step, HRESULT result) {
        const std::scoped_lock lock(mutex);
        refused = step;
        refusal = result;
    }
    std::string Played() {
        const std::scoped_lock lock(mutex);
        return played;
    }
    int Openings() {
        const std::scoped_lock lock(mutex);
        return openings;
    }
    void SetFormat(int channels, int rateHz, int bits, bool isFloat) {
        const std::scoped_lock lock(mutex);
        format = {};
        auto& base = format.Format;
        base.wFormatTag = WAVE_FORMAT_EXTENSIBLE;
        base.nChannels = static_cast<WORD>(channels);
        base.nSamplesPerSec = static_cast<DWORD>(rateHz);
        base.wBitsPerSample = static_cast<WORD>(bits);
        base.nBlockAlign = static_cast<WORD>(channels * bits / 8);
        base.nAvgBytesPerSec = base.nSamplesPerSec * base.nBlockAlign;
        base.cbSize = sizeof(WAVEFORMATEXTENSIBLE) - sizeof(WAVEFORMATEX);
        format.SubFormat = {isFloat ? 3UL : 1UL, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}};
    }
};

SDevice* device = nullptr; ///< of the test that runs

// These interfaces have no virtual destructor: objects end themselves.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// What all objects of COM share.
template<typename INTERFACE>
class CObject : public INTERFACE {
public:
    CObject() { ++device->objects; }
    virtual ~CObject() { --device->objects; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const auto left = --_references;
        if (left == 0) delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }

private:
    std::atomic<ULONG> _references{1};
};

class CRenderer final : public CObject<IAudioRenderClient> {
public:
    explicit CRenderer(std::function<UINT32()> waiting, std::function<void(UINT32)> take)
        : _waiting(std::move(waiting)), _take(std::move(take)) {}
    HRESULT STDMETHODCALLTYPE GetBuffer(UINT32 frames, BYTE** data) override {
        if (!device->isThere) return AUDCLNT_E_DEVICE_INVALIDATED;
        if (_waiting() + frames > Room) {
            device->isOverrun = true;
            return AUDCLNT_E_BUFFER_TOO_LARGE;
        }
        _bytes.resize(std::size_t{frames} * device->format.Format.nBlockAlign);
        *data = _bytes.data();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ReleaseBuffer(UINT32 frames, DWORD) override {
        const std::scoped_lock lock(device->mutex);
        device->played.append(reinterpret_cast<const char*>(_bytes.data()),
            std::size_t{frames} * device->format.Format.nBlockAlign);
        _take(frames);
        return S_OK;
    }

private:
    std::function<UINT32()> _waiting;
    std::function<void(UINT32)> _take;
    std::vector<BYTE> _bytes;
};

/// Plays what it gets, a period each millisecond, and asks for more.
class CClient final : public CObject<IAudioClient> {
public:
    ~CClient() override {
        _ends = true;
        if (_clock.joinable()) _clock.join();
    }
    HRESULT STDMETHODCALLTYPE Initialize(AUDCLNT_SHAREMODE mode, DWORD flags, REFERENCE_TIME,
        REFERENCE_TIME period, const WAVEFORMATEX*, LPCGUID) override {
        if (mode != AUDCLNT_SHAREMODE_SHARED || flags != AUDCLNT_STREAMFLAGS_EVENTCALLBACK || period != 0)
            device->isMisused = true;
        return device->Answer(EStep::Initialize);
    }
    HRESULT STDMETHODCALLTYPE GetBufferSize(UINT32* frames) override {
        *frames = Room;
        return device->Answer(EStep::BufferSize);
    }
    HRESULT STDMETHODCALLTYPE GetStreamLatency(REFERENCE_TIME*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCurrentPadding(UINT32* frames) override {
        if (!device->isThere) return AUDCLNT_E_DEVICE_INVALIDATED;
        *frames = _waiting;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE IsFormatSupported(
        AUDCLNT_SHAREMODE, const WAVEFORMATEX*, WAVEFORMATEX**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetMixFormat(WAVEFORMATEX** format) override {
        const auto answer = device->Answer(EStep::MixFormat);
        if (FAILED(answer)) return answer;
        auto* const copy = new WAVEFORMATEXTENSIBLE(device->format);
        ++device->memories;
        *format = &copy->Format;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetDevicePeriod(REFERENCE_TIME*, REFERENCE_TIME*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Start() override {
        const auto answer = device->Answer(EStep::Start);
        if (FAILED(answer)) return answer;
        if (_event == nullptr) device->isMisused = true;
        {
            const std::scoped_lock lock(device->mutex);
            ++device->openings;
        }
        _clock = std::thread([this] {
            while (!_ends) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                _waiting -= std::min(_waiting.load(), Period);
                if (device->asks) SetEvent(_event);
            }
        });
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Stop() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Reset() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetEventHandle(HANDLE event) override {
        _event = event;
        return device->Answer(EStep::Event);
    }
    HRESULT STDMETHODCALLTYPE GetService(REFIID id, void** service) override {
        const auto answer = device->Answer(EStep::Service);
        if (FAILED(answer)) return answer;
        if (id != __uuidof(IAudioRenderClient)) return E_NOINTERFACE;
        *service =
            new CRenderer([this] { return _waiting.load(); }, [this](UINT32 frames) { _waiting += frames; });
        return S_OK;
    }

private:
    HANDLE _event = nullptr;
    std::atomic<UINT32> _waiting{0}; ///< frames that it has and hasn't played
    std::atomic<bool> _ends{false};
    std::thread _clock;
};

class CEndpoint final : public CObject<IMMDevice> {
public:
    HRESULT STDMETHODCALLTYPE Activate(REFIID id, DWORD, PROPVARIANT*, void** client) override {
        const auto answer = device->Answer(EStep::Activate);
        if (FAILED(answer)) return answer;
        if (id != __uuidof(IAudioClient)) return E_NOINTERFACE;
        *client = new CClient;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD, IPropertyStore**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetId(LPWSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetState(DWORD*) override { return E_NOTIMPL; }
};

class CDevices final : public CObject<IMMDeviceEnumerator> {
public:
    HRESULT STDMETHODCALLTYPE EnumAudioEndpoints(EDataFlow, DWORD, IMMDeviceCollection**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetDefaultAudioEndpoint(EDataFlow flow, ERole, IMMDevice** endpoint) override {
        const auto answer = device->Answer(EStep::Endpoint);
        if (FAILED(answer)) return answer;
        if (flow != eRender) device->isMisused = true;
        *endpoint = new CEndpoint;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetDevice(LPCWSTR, IMMDevice**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RegisterEndpointNotificationCallback(IMMNotificationClient*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE UnregisterEndpointNotificationCallback(IMMNotificationClient*) override {
        return E_NOTIMPL;
    }
};

HRESULT WINAPI Initialize(LPVOID, DWORD) {
    ++device->uses;
    return S_OK;
}

void WINAPI Uninitialize() {
    --device->uses;
}

HRESULT WINAPI CreateInstance(REFCLSID kind, LPUNKNOWN, DWORD, REFIID id, LPVOID* object) {
    const auto answer = device->Answer(EStep::Make);
    if (FAILED(answer)) return answer;
    if (kind != __uuidof(MMDeviceEnumerator) || id != __uuidof(IMMDeviceEnumerator)) return E_NOINTERFACE;
    *object = new CDevices;
    return S_OK;
}

void WINAPI Free(LPVOID memory) {
    --device->memories;
    delete static_cast<WAVEFORMATEXTENSIBLE*>(memory);
}

constexpr SCom Doubles{Initialize, Uninitialize, CreateInstance, Free};

template<typename FACT>
bool Await(FACT fact) {
    const auto guard = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!fact()) {
        if (std::chrono::steady_clock::now() > guard) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

template<typename SAMPLE>
std::vector<SAMPLE> SamplesIn(const std::string& bytes) {
    std::vector<SAMPLE> samples(bytes.size() / sizeof(SAMPLE));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(SAMPLE));
    return samples;
}

class WasapiDevice : public testing::Test {
protected:
    WasapiDevice() {
        device = &sound;
        sound.SetFormat(2, 48000, 32, true);
        UseCom(&Doubles);
    }
    ~WasapiDevice() override {
        output.reset();
        UseCom(nullptr);
        EXPECT_EQ(sound.objects, 0);
        EXPECT_EQ(sound.memories, 0);
        EXPECT_EQ(sound.uses, 0);
        EXPECT_FALSE(sound.isOverrun);
        EXPECT_FALSE(sound.isMisused);
    }
    bool Open(int rateHz = 48000, int channels = 2) {
        output = OpenAudioDevice(rateHz, channels, source, reason);
        return output != nullptr;
    }
    bool AwaitFrames(std::size_t frames) {
        return Await([&] { return sound.Played().size() >= frames * sound.format.Format.nBlockAlign; });
    }

    SDevice sound;
    std::string reason;
    std::atomic<std::size_t> asked{0}; ///< samples of the source
    AudioSource source = [this](std::span<float> samples) {
        for (float& sample : samples) sample = static_cast<float>(++asked % 10'000) / 1e4f;
    };
    std::unique_ptr<IAudioOutput> output;
};

} // namespace

TEST_F(WasapiDevice, GetsWhatTheSourceFills) {
    ASSERT_TRUE(Open()) << reason;
    EXPECT_TRUE(AwaitFrames(20'000));
    const auto samples = SamplesIn<float>(sound.Played());
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_FLOAT_EQ(samples[i], static_cast<float>((i + 1) % 10'000) / 1e4f) << i;
    EXPECT_EQ(output->Failure(), "");
}

TEST_F(WasapiDevice, IsFullBeforeItStarts) {
    sound.asks = false;
    ASSERT_TRUE(Open());
    EXPECT_EQ(sound.Played().size(), std::size_t{Room} * 8);
}

TEST_F(WasapiDevice, IsAskedNoMoreOnceItHasEnded) {
    ASSERT_TRUE(Open());
    ASSERT_TRUE(AwaitFrames(5000));
    output.reset();
    const auto ended = asked.load();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(asked, ended);
}

TEST_F(WasapiDevice, GetsMonoOfAnotherRateFromTwoOfItsSixSpeakersIn16Bits) {
    sound.SetFormat(6, 48000, 16, false);
    source = [this](std::span<float> samples) {
        asked += samples.size();
        std::ranges::fill(samples, 0.25f);
    };
    ASSERT_TRUE(Open(24000, 1)) << reason;
    ASSERT_TRUE(AwaitFrames(30'000));
    output.reset();
    const auto samples = SamplesIn<std::int16_t>(sound.Played());
    for (std::size_t i = 6 * 1000; i + 5 < samples.size(); i += 6) {
        ASSERT_NEAR(samples[i], 8192, 1) << i;
        ASSERT_EQ(samples[i + 1], samples[i]) << i;
        for (std::size_t c = 2; c < 6; ++c) ASSERT_EQ(samples[i + c], 0) << i;
    }
    const auto frames = static_cast<double>(samples.size()) / 6;
    EXPECT_NEAR(static_cast<double>(asked), frames / 2, 400); // half the rate
}

TEST_F(WasapiDevice, GetsSurroundFoldedIntoTwo) {
    source = [](std::span<float> samples) {
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = i % 6 == 3 ? 1.0f : i % 6 == 0 ? 0.5f : 0.0f;
    };
    ASSERT_TRUE(Open(48000, 6)) << reason;
    ASSERT_TRUE(AwaitFrames(3000));
    output.reset();
    const auto samples = SamplesIn<float>(sound.Played());
    for (std::size_t i = 0; i + 1 < samples.size(); i += 2) {
        ASSERT_GT(samples[i], 0.2f); // left alone: LFE is in neither
        ASSERT_LT(samples[i], 0.5f);
        ASSERT_EQ(samples[i + 1], 0.0f);
    }
}

TEST_F(WasapiDevice, GetsTheFormThatItsMixerHas) {
    const auto first = [&](int bits) {
        sound.SetFormat(2, 48000, bits, false);
        sound.played.clear();
        asked = 4999; // the next sample is a half
        EXPECT_TRUE(Open()) << reason;
        EXPECT_TRUE(AwaitFrames(1000));
        output.reset();
        return sound.Played().substr(0, static_cast<std::size_t>(bits) / 8);
    };
    EXPECT_EQ(first(16), (std::string{"\0\x40", 2}));
    EXPECT_EQ(first(24), (std::string{"\0\0\x40", 3}));
    EXPECT_EQ(first(32), (std::string{"\0\0\0\x40", 4}));
}

TEST_F(WasapiDevice, IsNoneWithAReasonWhereverTheSystemRefuses) {
    for (const auto step : {EStep::Make, EStep::Endpoint, EStep::Activate, EStep::MixFormat,
             EStep::Initialize, EStep::Event, EStep::BufferSize, EStep::Service, EStep::Start}) {
        sound.Refuse(step, E_OUTOFMEMORY);
        EXPECT_FALSE(Open());
        EXPECT_EQ(reason, "the audio device cannot be opened: error 0x8007000E") << static_cast<int>(step);
        EXPECT_EQ(sound.objects, 0) << static_cast<int>(step);
    }
}

TEST_F(WasapiDevice, SaysInWordsWhatIsUsual) {
    const auto reasonOf = [&](EStep step, HRESULT result) {
        sound.Refuse(step, result);
        EXPECT_FALSE(Open());
        return reason;
    };
    EXPECT_EQ(reasonOf(EStep::Endpoint, NoDevice), "there is no audio device");
    EXPECT_EQ(reasonOf(EStep::Initialize, AUDCLNT_E_DEVICE_IN_USE),
        "another program uses the audio device exclusively");
    EXPECT_EQ(reasonOf(EStep::Activate, AUDCLNT_E_SERVICE_NOT_RUNNING),
        "the system's audio service is not running");
    EXPECT_EQ(reasonOf(EStep::Start, AUDCLNT_E_DEVICE_INVALIDATED), "the audio device was removed");
}

TEST_F(WasapiDevice, IsNoneWhereItsSamplesAreUnknown) {
    for (const auto& [bits, isFloat] : {std::pair{8, false}, {64, true}, {16, true}}) {
        sound.SetFormat(2, 48000, bits, isFloat);
        EXPECT_FALSE(Open());
        EXPECT_EQ(reason, "the audio device accepts no sample format that kavhost can provide") << bits;
    }
}

TEST_F(WasapiDevice, GoesOnWithTheNextOneWhenItIsTakenAway) {
    ASSERT_TRUE(Open());
    ASSERT_TRUE(AwaitFrames(5000));
    const auto before = asked.load();
    sound.isThere = false;
    ASSERT_TRUE(Await([&] { return sound.objects == 0 || sound.Openings() > 1; }));
    sound.isThere = true;
    EXPECT_TRUE(Await([&] { return sound.Openings() > 1 && asked > before + 20'000; }));
    EXPECT_TRUE(Await([&] { return output->Failure().empty(); }));
}

TEST_F(WasapiDevice, OpensTheNextOneInItsOwnForm) {
    source = [](std::span<float> samples) { std::ranges::fill(samples, 0.5f); };
    ASSERT_TRUE(Open());
    ASSERT_TRUE(AwaitFrames(3000));
    sound.Refuse(EStep::Endpoint, NoDevice);
    sound.isThere = false;
    ASSERT_TRUE(Await([&] { return !output->Failure().empty(); }));
    sound.SetFormat(1, 48000, 16, false);
    {
        const std::scoped_lock lock(sound.mutex);
        sound.played.clear();
    }
    sound.isThere = true;
    sound.Refuse(EStep::None, S_OK);
    ASSERT_TRUE(AwaitFrames(3000));
    output.reset();
    for (const auto sample : SamplesIn<std::int16_t>(sound.Played())) ASSERT_EQ(sample, 16384);
}

TEST_F(WasapiDevice, MovesOnSilentlyWhileThereIsNone) {
    ASSERT_TRUE(Open());
    ASSERT_TRUE(AwaitFrames(3000));
    sound.Refuse(EStep::Endpoint, NoDevice);
    sound.isThere = false;
    ASSERT_TRUE(Await([&] { return output->Failure() == "there is no audio device"; }));
    const auto before = asked.load();
    EXPECT_TRUE(Await([&] { return asked > before + 9600; })); // a tenth of a second
    sound.isThere = true;
    sound.Refuse(EStep::None, S_OK);
    EXPECT_TRUE(Await([&] { return output->Failure().empty() && sound.Openings() == 2; }));
}

TEST_F(WasapiDevice, EndsWhileThereIsNone) {
    ASSERT_TRUE(Open());
    sound.Refuse(EStep::Endpoint, NoDevice);
    sound.isThere = false;
    ASSERT_TRUE(Await([&] { return !output->Failure().empty(); }));
    output.reset();
    EXPECT_EQ(sound.uses, 0);
}

TEST_F(WasapiDevice, IsOpenedAnewWhenItNoLongerAsks) {
    ASSERT_TRUE(Open());
    ASSERT_TRUE(AwaitFrames(3000));
    sound.asks = false;
    ASSERT_TRUE(Await([&] { return sound.Openings() == 2; }));
    sound.asks = true;
    const auto before = asked.load();
    EXPECT_TRUE(Await([&] { return asked > before + 9600; }));
}
