#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace KAV::Host {

/// A piece of a file, read ahead.
struct SBlock {
    std::uint64_t request = 0; ///< what it was read for: SPlayControls::request
    std::uint64_t first = 0;   ///< its first frame's place in the file
    std::size_t frames = 0;
    bool endsFile = false;    ///< the next block is the file's first one
    float* samples = nullptr; ///< interleaved, with room for a whole block
};

/// Blocks on their way from one thread to another one, in order. Neither of them waits or locks.
/// Threads: Back() and Push() on the one that fills; Front() and Pop() on the one that empties.
class CBlockQueue final {
public:
    CBlockQueue(std::size_t blocks, std::size_t blockFrames, std::size_t channels);

    SBlock* Back() noexcept;              ///< the one to fill next; null while the queue is full
    void Push() noexcept;                 ///< it is filled
    const SBlock* Front() const noexcept; ///< the oldest that is filled; null if there is none
    void Pop() noexcept;                  ///< it may be filled again

    std::size_t BlockFrames() const noexcept { return _blockFrames; }

private:
    std::size_t _blockFrames;
    std::vector<float> _samples;
    std::vector<SBlock> _blocks;
    std::atomic<std::size_t> _pushed{0}; ///< all of them since the beginning
    std::atomic<std::size_t> _popped{0}; ///< at most as many
};

} // namespace KAV::Host
