#include "tools/kavhost/play/block_queue.h"

namespace KAV::Host {

CBlockQueue::CBlockQueue(std::size_t blocks, std::size_t blockFrames, std::size_t channels)
    : _blockFrames(blockFrames), _samples(blocks * blockFrames * channels), _blocks(blocks) {
    for (std::size_t i = 0; i < blocks; ++i)
        _blocks[i].samples = _samples.data() + i * blockFrames * channels;
}

SBlock* CBlockQueue::Back() noexcept {
    const auto pushed = _pushed.load(std::memory_order_relaxed);
    if (pushed - _popped.load(std::memory_order_acquire) == _blocks.size()) return nullptr;
    return &_blocks[pushed % _blocks.size()];
}

void CBlockQueue::Push() noexcept {
    _pushed.store(_pushed.load(std::memory_order_relaxed) + 1, std::memory_order_release);
}

const SBlock* CBlockQueue::Front() const noexcept {
    const auto popped = _popped.load(std::memory_order_relaxed);
    if (_pushed.load(std::memory_order_acquire) == popped) return nullptr;
    return &_blocks[popped % _blocks.size()];
}

void CBlockQueue::Pop() noexcept {
    _popped.store(_popped.load(std::memory_order_relaxed) + 1, std::memory_order_release);
}

} // namespace KAV::Host
