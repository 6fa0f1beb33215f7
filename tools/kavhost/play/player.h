#pragma once

#include "tools/kavhost/audio/planar_buffer.h"
#include "tools/kavhost/play/block_queue.h"
#include "tools/kavhost/play/feed.h"
#include "tools/kavhost/play/play_controls.h"
#include "tools/kavhost/play/read_ahead.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace KAV::Host {

class CAudioReader;
class CEffect;

/// A file that plays through a started effect. While it stands, the effect hears silence, so that its meters
/// fall. Reader and effect outlive it.
/// Threads: Process() on the one of the audio; the others on that of the user.
class CPlayer final {
public:
    CPlayer(CAudioReader& reader, CEffect& effect);

    /// Fills whole frames of `interleaved`, which has the file's channels. Allocates, locks and waits for
    /// nothing, as far as the effect doesn't.
    void Process(std::span<float> interleaved) noexcept;

    void Play(bool plays) noexcept { _controls.plays = plays; }
    bool IsPlaying() const noexcept { return _controls.plays; }
    void Loop(bool loops) noexcept { _controls.loops = loops; }
    bool IsLooping() const noexcept { return _controls.loops; }
    void Seek(double seconds);       ///< a time outside the file is its nearer end
    double Seconds() const noexcept; ///< of what is heard now, the effect's delay taken off
    double Length() const noexcept;  ///< in seconds

    /// Runs `work` while no audio runs through the effect, which may delay it by another time afterwards.
    void Pausing(const std::function<void()>& work);

    std::string Failure() const { return _ahead.Failure(); } ///< why the file can't be read; empty if it can

private:
    void ProcessBlock(std::span<float> interleaved) noexcept;
    void TakeDelay() noexcept;

    CEffect& _effect;
    double _rateHz;
    std::size_t _channels;
    SPlayControls _controls;
    CBlockQueue _queue;
    CFeed _feed;
    CPlanarBuffer _in;
    CPlanarBuffer _out;
    std::atomic<std::uint64_t> _delay{0}; ///< frames, as the effect reports it
    std::atomic<std::uint64_t> _heard{0}; ///< the place in the file, of the request with this number
    std::atomic<bool> _isHeld{false};     ///< the audio mustn't enter the effect
    std::atomic<bool> _isInside{false};   ///< it is in there
    CReadAhead _ahead;                    ///< ends first
};

} // namespace KAV::Host
