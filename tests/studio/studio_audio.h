#pragma once

#include "tests/studio/studio_call.h"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace KAV::Tests {

inline constexpr std::size_t StudioInstances = 16;

/// What an instance plays in one round: that many blocks of music, of which every sample follows from these.
struct SStudioTake {
    std::size_t channels = 2;
    std::size_t frames = 512; ///< of a block
    std::size_t blocks = 1;
    std::size_t start = 0; ///< in the music
    float level = 1.0f;
    float rateHz = 44100.0f;

    double Seconds() const noexcept {
        return static_cast<double>(frames * blocks) / static_cast<double>(rateHz);
    }
};

/// What came out.
struct SStudioSound {
    std::uint64_t hash = 0; ///< of the bits of every sample
    bool isFinite = true;
    double cpuSeconds = 0.0;
    std::vector<std::size_t> missed; ///< the blocks that took their thread longer than they last
};

/// The calls between two stretches of sound, and those stretches.
struct SStudioRound {
    template<typename T>
    using PerInstance = std::array<T, StudioInstances>;

    std::size_t number = 0;
    std::vector<SStudioCall> calls;
    std::map<std::size_t, SSoundingState> states; ///< after the calls, of the instances that they concern
    PerInstance<SStudioTake> takes;
    PerInstance<SStudioSound> sounds;
};

/// Plays one take after the other. Threads: one.
class CStudioPlayer final {
public:
    CStudioPlayer();
    SStudioSound Play(CHostedEffect& effect, const SStudioTake& take);

private:
    void Fill(const SStudioTake& take, std::size_t block);
    void Listen(const SStudioTake& take, SStudioSound& sound) const;

    std::array<std::vector<float>, DeviceChannels> _sound;
    std::array<float*, DeviceChannels> _channels{};
};

inline constexpr std::size_t StudioThreads = 2;

/// The host's audio threads, which share the instances. Between two rounds they stand still.
class CStudioAudio final {
public:
    /// `effect` returns an instance; it is called while a round is played.
    explicit CStudioAudio(std::function<CHostedEffect&(std::size_t)> effect);
    ~CStudioAudio();
    CStudioAudio(const CStudioAudio&) = delete;
    CStudioAudio& operator=(const CStudioAudio&) = delete;

    /// Begins to play the takes of a round, which gets its sounds.
    void Begin(SStudioRound& round);
    void AwaitEnd();

private:
    void Run(std::size_t thread);

    std::function<CHostedEffect&(std::size_t)> _effect;
    std::mutex _mutex;
    std::condition_variable _changed;
    SStudioRound* _round = nullptr; // under the lock, as the next three
    std::size_t _begun = 0;         // rounds
    std::size_t _playing = 0;       // threads
    bool _ends = false;
    std::vector<std::thread> _threads; // last
};

/// Makes the calls of each round again, on instances without an editor, and compares state and sound. It
/// works on threads of its own while the next rounds are being played, so both meet the same load of the
/// machine.
class CStudioReplay final {
public:
    explicit CStudioReplay(std::function<std::unique_ptr<CHostedEffect>()> make);
    ~CStudioReplay() { Finish(); }
    CStudioReplay(const CStudioReplay&) = delete;
    CStudioReplay& operator=(const CStudioReplay&) = delete;

    /// Waits while many rounds are still to be replayed.
    void Add(std::shared_ptr<const SStudioRound> round);
    /// Waits until there are none.
    void Catch();
    void Finish();
    /// Whether a difference has been found so far.
    bool HasFailed();

    // When it has caught up
    std::vector<std::string> differences; ///< the first ones
    std::size_t missed = 0;               ///< by the replay
    std::size_t missedByEditorsAlone = 0; ///< blocks that only the instances with editors have missed
    std::size_t missedByReplayAlone = 0;
    double cpuSeconds = 0.0;

private:
    struct SPart {
        std::deque<std::shared_ptr<const SStudioRound>>
            waiting; // under the lock; the first is being replayed
        std::map<std::size_t, std::unique_ptr<CHostedEffect>> effects;
        std::deque<SStudioCall> latest; // calls, for a difference
        CStudioPlayer player;
    };

    void Run(SPart& part, std::size_t number);
    void Replay(SPart& part, std::size_t number, const SStudioRound& round);
    void Differs(const SPart& part, const SStudioRound& round, std::size_t instance, const std::string& how);
    void Count(const SStudioSound& before, const SStudioSound& now);

    std::function<std::unique_ptr<CHostedEffect>()> _make;
    std::mutex _mutex;
    std::condition_variable _changed;
    bool _ends = false; // under the lock
    std::array<SPart, StudioThreads> _parts;
    std::vector<std::thread> _threads; // last
};

} // namespace KAV::Tests
