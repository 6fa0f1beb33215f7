#include "tools/kavhost/play/audio_output.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace KAV::Host {

namespace {

constexpr int PeriodsPerSecond = 100;

class CSilentClock final : public IAudioOutput {
public:
    CSilentClock(int rateHz, int channels, const AudioSource& source)
        : _source(source), _rateHz(rateHz), _channels(static_cast<std::size_t>(channels)),
          _samples(static_cast<std::size_t>(rateHz / PeriodsPerSecond + 1) * _channels),
          _thread([this] { Run(); }) {}

    ~CSilentClock() override {
        {
            const std::scoped_lock lock(_mutex);
            _ends = true;
        }
        _wakes.notify_all();
        _thread.join();
    }

private:
    void Run() {
        using namespace std::chrono;
        auto next = steady_clock::now();
        for (std::int64_t period = 0;; ++period) {
            const auto frames =
                (period + 1) * _rateHz / PeriodsPerSecond - period * _rateHz / PeriodsPerSecond;
            _source(std::span(_samples).first(static_cast<std::size_t>(frames) * _channels));
            // After the computer has slept, the time that has passed isn't made up for.
            next =
                std::max(next + microseconds(1'000'000 / PeriodsPerSecond), steady_clock::now() - seconds(1));
            std::unique_lock lock(_mutex);
            if (_wakes.wait_until(lock, next, [this] { return _ends; })) return;
        }
    }

    const AudioSource& _source;
    std::int64_t _rateHz;
    std::size_t _channels;
    std::vector<float> _samples;
    std::mutex _mutex;
    std::condition_variable _wakes;
    bool _ends = false; // under the lock
    std::thread _thread;
};

} // namespace

std::unique_ptr<IAudioOutput> OpenSilentClock(int rateHz, int channels, const AudioSource& source) {
    return std::make_unique<CSilentClock>(rateHz, channels, source);
}

} // namespace KAV::Host
