#include "tests/studio/studio_audio.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <ctime>
#include <gtest/gtest.h>
#include <iterator>
#include <utility>

namespace KAV::Tests {

namespace {

constexpr std::size_t MusicLength = 1 << 16;
constexpr std::size_t MostWaiting = 32; // rounds: they hold chunks

/// Noise whose level rises and falls, so that limiters work and release.
const std::vector<float>& Music() {
    static const auto music = [] {
        std::vector<float> samples(MusicLength);
        std::uint32_t noise = 1;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            noise = noise * 1664525u + 1013904223u;
            const float swell = 0.1f + static_cast<float>(i % 12000) / 12000.0f;
            samples[i] = swell * (static_cast<float>(noise >> 8) / 8388608.0f - 1.0f);
        }
        return samples;
    }();
    return music;
}

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace

// One thread

CStudioPlayer::CStudioPlayer() {
    constexpr std::size_t longest = 8192;
    for (std::size_t channel = 0; channel < _sound.size(); ++channel) {
        _sound[channel].resize(longest);
        _channels[channel] = _sound[channel].data();
    }
}

SStudioSound CStudioPlayer::Play(CHostedEffect& effect, const SStudioTake& take) {
    SStudioSound sound;
    const double length = static_cast<double>(take.frames) / static_cast<double>(take.rateHz);
    for (std::size_t block = 0; block < take.blocks; ++block) {
        Fill(take, block);
        const double before = ThreadSeconds();
        effect.Record().processReplacing(
            &effect.Record(), _channels.data(), _channels.data(), static_cast<std::int32_t>(take.frames));
        const double seconds = ThreadSeconds() - before;
        sound.cpuSeconds += seconds;
        if (seconds > length) sound.missed.push_back(block);
        Listen(take, sound);
    }
    return sound;
}

void CStudioPlayer::Fill(const SStudioTake& take, std::size_t block) {
    const auto& music = Music();
    for (std::size_t channel = 0; channel < take.channels; ++channel) {
        constexpr std::size_t apart = 4099; // each channel has music of its own
        const std::size_t first = take.start + block * take.frames + channel * apart;
        for (std::size_t i = 0; i < take.frames; ++i)
            _sound[channel][i] = take.level * music[(first + i) % MusicLength];
    }
}

void CStudioPlayer::Listen(const SStudioTake& take, SStudioSound& sound) const {
    constexpr std::uint64_t prime = 0x100000001B3;
    for (std::size_t channel = 0; channel < take.channels; ++channel) {
        for (std::size_t i = 0; i < take.frames; ++i) {
            const float x = _sound[channel][i];
            sound.hash = (sound.hash ^ std::bit_cast<std::uint32_t>(x)) * prime + 1;
            sound.isFinite = sound.isFinite && std::isfinite(x);
        }
    }
}

// The host's threads

CStudioAudio::CStudioAudio(std::function<CHostedEffect&(std::size_t)> effect) : _effect(std::move(effect)) {
    for (std::size_t thread = 0; thread < StudioThreads; ++thread)
        _threads.emplace_back([this, thread] { Run(thread); });
}

CStudioAudio::~CStudioAudio() {
    {
        const std::scoped_lock lock(_mutex);
        _ends = true;
    }
    _changed.notify_all();
    for (auto& thread : _threads) thread.join();
}

void CStudioAudio::Begin(SStudioRound& round) {
    const std::scoped_lock lock(_mutex);
    _round = &round;
    ++_begun;
    _playing = StudioThreads;
    _changed.notify_all();
}

void CStudioAudio::AwaitEnd() {
    std::unique_lock lock(_mutex);
    _changed.wait(lock, [this] { return _playing == 0; });
}

void CStudioAudio::Run(std::size_t thread) {
    CStudioPlayer player;
    for (std::size_t next = 1;; ++next) {
        SStudioRound* round = nullptr;
        {
            std::unique_lock lock(_mutex);
            _changed.wait(lock, [&] { return _ends || _begun == next; });
            if (_ends) return;
            round = _round;
        }
        for (std::size_t instance = thread; instance < StudioInstances; instance += StudioThreads)
            round->sounds[instance] = player.Play(_effect(instance), round->takes[instance]);
        const std::scoped_lock lock(_mutex);
        --_playing;
        _changed.notify_all();
    }
}

// The replay

CStudioReplay::CStudioReplay(std::function<std::unique_ptr<CHostedEffect>()> make) : _make(std::move(make)) {
    for (std::size_t number = 0; number < _parts.size(); ++number)
        _threads.emplace_back([this, number] { Run(_parts[number], number); });
}

void CStudioReplay::Add(std::shared_ptr<const SStudioRound> round) {
    std::unique_lock lock(_mutex);
    _changed.wait(lock, [this] {
        return std::all_of(
            _parts.begin(), _parts.end(), [](const auto& part) { return part.waiting.size() < MostWaiting; });
    });
    for (auto& part : _parts) part.waiting.push_back(round);
    _changed.notify_all();
}

void CStudioReplay::Catch() {
    std::unique_lock lock(_mutex);
    _changed.wait(lock, [this] {
        return std::all_of(
            _parts.begin(), _parts.end(), [](const auto& part) { return part.waiting.empty(); });
    });
}

void CStudioReplay::Finish() {
    {
        const std::scoped_lock lock(_mutex);
        _ends = true;
    }
    _changed.notify_all();
    for (auto& thread : _threads) thread.join();
    _threads.clear();
}

bool CStudioReplay::HasFailed() {
    const std::scoped_lock lock(_mutex);
    return !differences.empty();
}

void CStudioReplay::Run(SPart& part, std::size_t number) {
    for (;;) {
        std::shared_ptr<const SStudioRound> round;
        {
            std::unique_lock lock(_mutex);
            _changed.wait(lock, [&] { return _ends || !part.waiting.empty(); });
            if (part.waiting.empty()) return;
            round = part.waiting.front();
        }
        Replay(part, number, *round);
        const std::scoped_lock lock(_mutex);
        part.waiting.pop_front();
        _changed.notify_all();
    }
}

void CStudioReplay::Replay(SPart& part, std::size_t number, const SStudioRound& round) {
    const auto isOurs = [number](std::size_t instance) { return instance % StudioThreads == number; };
    for (const auto& call : round.calls) {
        if (!isOurs(call.instance)) continue;
        auto& effect = part.effects[call.instance];
        if (call.kind == SStudioCall::EKind::New) {
            effect = _make();
        } else {
            Make(call, *effect);
        }
        constexpr std::size_t enough = 60;
        part.latest.push_back(call);
        if (part.latest.size() > enough) part.latest.pop_front();
    }
    for (const auto& [instance, state] : round.states) {
        if (!isOurs(instance)) continue;
        const auto ours = SoundingStateOf(part.effects[instance]->Device());
        if (ours != state) Differs(part, round, instance, "its state: " + Difference(ours, state));
    }
    for (std::size_t instance = number; instance < StudioInstances; instance += StudioThreads) {
        const auto& before = round.sounds[instance];
        const auto now = part.player.Play(*part.effects[instance], round.takes[instance]);
        if (now.hash != before.hash) Differs(part, round, instance, "its sound");
        Count(before, now);
    }
}

void CStudioReplay::Differs(
    const SPart& part, const SStudioRound& round, std::size_t instance, const std::string& how) {
    constexpr std::size_t enough = 5;
    const auto& take = round.takes[instance];
    std::string text = "round " + std::to_string(round.number) + ", instance " + std::to_string(instance) +
                       ", " + std::to_string(take.channels) + " channels, " + std::to_string(take.frames) +
                       " frames, " + std::to_string(take.rateHz) + " Hz: " + how + "\nthe last calls:\n";
    for (const auto& call : part.latest) {
        if (call.instance == instance) text += Described(call) + "\n";
    }
    const std::scoped_lock lock(_mutex);
    if (differences.size() < enough) differences.push_back(std::move(text));
}

void CStudioReplay::Count(const SStudioSound& before, const SStudioSound& now) {
    const auto countOfOneAlone = [](const auto& one, const auto& other) {
        std::vector<std::size_t> alone;
        std::set_difference(one.begin(), one.end(), other.begin(), other.end(), std::back_inserter(alone));
        return alone.size();
    };
    const std::scoped_lock lock(_mutex);
    missed += now.missed.size();
    missedByEditorsAlone += countOfOneAlone(before.missed, now.missed);
    missedByReplayAlone += countOfOneAlone(now.missed, before.missed);
    cpuSeconds += now.cpuSeconds;
}

} // namespace KAV::Tests
