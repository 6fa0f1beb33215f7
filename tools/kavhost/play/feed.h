#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace KAV::Host {

class CBlockQueue;
struct SBlock;
struct SPlayControls;

/// What an effect gets to hear: a file's frames as the user wants them, and silence otherwise. Where it
/// stops, goes on or jumps it fades for a few milliseconds, so that nothing clicks. Queue and controls
/// outlive it. Threads: the one of the audio; allocates, locks and waits for nothing.
class CFeed final {
public:
    CFeed(CBlockQueue& queue, SPlayControls& controls, std::size_t channels) noexcept;

    /// Fills whole frames of `interleaved`.
    void Fill(std::span<float> interleaved) noexcept;

    std::uint64_t Request() const noexcept { return _request; } ///< the one that is followed now
    /// The place in the file that leaves an effect now that delays what it gets by `delay` frames.
    std::uint64_t Heard(std::uint64_t delay) const noexcept;

private:
    void Jump(std::uint64_t request) noexcept;
    void FillSilence(std::span<float> rest) noexcept;
    const SBlock* FindBlock() noexcept;
    std::size_t Copy(const SBlock& block, std::span<float> rest, bool fadesOut) noexcept;
    void FinishBlock(const SBlock& block) noexcept;

    CBlockQueue& _queue;
    SPlayControls& _controls;
    std::size_t _channels;
    std::uint64_t _request;
    std::size_t _offset = 0;   ///< frames of the front block that have been taken
    std::uint64_t _next = 0;   ///< the place after the last frame taken
    std::uint64_t _begin = 0;  ///< where this stretch without a gap began
    bool _wraps = false;       ///< it has passed the end of the file
    std::uint64_t _silent = 0; ///< frames of silence since it ended; 0: it goes on
    float _gain = 0;
};

} // namespace KAV::Host
