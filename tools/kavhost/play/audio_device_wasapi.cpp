#include "tools/kavhost/play/audio_output.h"
#include "tools/kavhost/play/wasapi_stream.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <mutex>
#include <thread>

namespace KAV::Host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto BetweenAttempts = std::chrono::seconds(1); ///< to open another device when one has gone
constexpr DWORD SilentPeriodMs = 10;

/// COM, on one thread.
class CComUse final {
public:
    explicit CComUse(const SCom& com) noexcept
        : _com(com), _works(SUCCEEDED(com.initialize(nullptr, COINIT_MULTITHREADED))) {}
    ~CComUse() {
        if (_works) _com.uninitialize();
    }
    CComUse(const CComUse&) = delete;
    CComUse& operator=(const CComUse&) = delete;

    bool Works() const noexcept { return _works; }

private:
    const SCom& _com;
    bool _works;
};

/// The default device, whichever it is: when one is taken away the file goes on with the next, and silently
/// as long as there is none.
class CWasapiDevice final : public IAudioOutput {
public:
    CWasapiDevice(const SCom& com, int rateHz, int channels, const AudioSource& source)
        : _com(com), _rateHz(rateHz), _channels(channels), _source(source),
          _ends(CreateEventW(nullptr, TRUE, FALSE, nullptr)), _thread([this] { Run(); }) {}

    ~CWasapiDevice() override {
        SetEvent(_ends);
        _thread.join();
        CloseHandle(_ends);
    }

    /// Waits until the device is open: empty. Otherwise why it isn't.
    std::string AwaitOpening() { return _opening.get_future().get(); }

    std::string Failure() const override {
        const std::scoped_lock lock(_mutex);
        return _failure;
    }

private:
    void Run() {
        SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
        const CComUse use(_com);
        std::string reason = "COM does not start";
        auto stream = use.Works() ? Open(reason) : nullptr;
        _opening.set_value(stream ? std::string() : reason);
        while (stream) {
            stream->Play(_ends);
            stream.reset();
            while (!HasEnded() && !stream) {
                stream = Open(reason);
                SetFailure(stream ? std::string() : reason);
                if (!stream) PassTime();
            }
        }
    }

    std::unique_ptr<CWasapiStream> Open(std::string& reason) {
        return CWasapiStream::Open(_com, _rateHz, _channels, _source, reason);
    }

    /// As long as there is no device, the file moves on nevertheless.
    void PassTime() {
        const auto channels = static_cast<std::size_t>(_channels);
        std::vector<float> samples(static_cast<std::size_t>(_rateHz / 10 + 1) * channels);
        const auto begin = Clock::now();
        std::size_t done = 0;
        for (auto passed = Clock::duration::zero(); passed < BetweenAttempts;) {
            if (WaitForSingleObject(_ends, SilentPeriodMs) == WAIT_OBJECT_0) return;
            passed = Clock::now() - begin;
            const auto due =
                static_cast<std::size_t>(std::chrono::duration<double>(passed).count() * _rateHz);
            const auto count = std::min((due - done) * channels, samples.size());
            _source(std::span(samples).first(count));
            done = due; // what a sleep of the computer has cost isn't made up for
        }
    }

    bool HasEnded() const noexcept { return WaitForSingleObject(_ends, 0) == WAIT_OBJECT_0; }

    void SetFailure(const std::string& failure) {
        const std::scoped_lock lock(_mutex);
        _failure = failure;
    }

    const SCom& _com;
    int _rateHz;
    int _channels;
    const AudioSource& _source;
    HANDLE _ends;
    std::promise<std::string> _opening;
    mutable std::mutex _mutex;
    std::string _failure; // under the lock
    std::thread _thread;
};

} // namespace

std::unique_ptr<IAudioOutput> OpenAudioDevice(
    int rateHz, int channels, const AudioSource& source, std::string& reason) {
    const auto* const com = Com();
    if (com == nullptr) {
        reason = "ole32.dll is missing";
        return nullptr;
    }
    auto device = std::make_unique<CWasapiDevice>(*com, rateHz, channels, source);
    reason = device->AwaitOpening();
    if (!reason.empty()) return nullptr;
    return device;
}

} // namespace KAV::Host
