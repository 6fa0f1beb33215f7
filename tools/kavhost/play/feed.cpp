#include "tools/kavhost/play/feed.h"

#include "tools/kavhost/play/block_queue.h"
#include "tools/kavhost/play/play_controls.h"

#include <algorithm>

namespace KAV::Host {

namespace {

constexpr float FadeStep = 1.0f / 256; ///< of the gain from one frame to the next

}

CFeed::CFeed(CBlockQueue& queue, SPlayControls& controls, std::size_t channels) noexcept
    : _queue(queue), _controls(controls), _channels(channels), _request(controls.request) {}

void CFeed::Fill(std::span<float> interleaved) noexcept {
    while (!interleaved.empty()) {
        const auto request = _controls.request.load(std::memory_order_acquire);
        const bool jumps = request != _request;
        const bool fadesOut = jumps || !_controls.plays.load(std::memory_order_relaxed);
        if (!fadesOut || _gain > 0) {
            if (const auto* const block = FindBlock()) {
                interleaved = interleaved.subspan(Copy(*block, interleaved, fadesOut) * _channels);
                continue;
            }
            _gain = 0; // the file can't be read fast enough: once it can, it fades in
        }
        if (!jumps) return FillSilence(interleaved);
        Jump(request);
        if (FindBlock() == nullptr) return FillSilence(interleaved);
    }
}

/// Forgets what was read for the place before.
void CFeed::Jump(std::uint64_t request) noexcept {
    _request = request;
    _next = _begin = SPlayControls::PlaceOf(request);
    _wraps = false;
    _silent = 0;
    _offset = 0;
}

void CFeed::FillSilence(std::span<float> rest) noexcept {
    std::ranges::fill(rest, 0.0f);
    _silent += rest.size() / _channels;
}

/// The block that has the next frame; null if it hasn't been read yet.
const SBlock* CFeed::FindBlock() noexcept {
    for (;;) {
        const auto* const block = _queue.Front();
        if (block == nullptr || block->request == _request) return block;
        // Blocks that were read for a later request mustn't be lost while the sound fades out.
        if (SPlayControls::IsLater(block->request, _request)) return nullptr;
        _queue.Pop();
    }
}

/// Takes frames of the block as long as the sound goes on or fades out; returns how many.
std::size_t CFeed::Copy(const SBlock& block, std::span<float> rest, bool fadesOut) noexcept {
    if (_silent > 0) { // the effect's delay is full of silence
        _silent = 0;
        _wraps = false;
        _begin = block.first + _offset;
    }
    if (_gain <= 0 && block.first + _offset == 0) _gain = 1; // the beginning is as the file has it
    const auto frames = std::min(rest.size() / _channels, block.frames - _offset);
    const float* from = block.samples + _offset * _channels;
    float* to = rest.data();
    std::size_t taken = 0;
    for (; taken < frames && !(fadesOut && _gain <= 0); ++taken) {
        for (std::size_t c = 0; c < _channels; ++c) *to++ = *from++ * _gain;
        _gain = std::clamp(_gain + (fadesOut ? -FadeStep : FadeStep), 0.0f, 1.0f);
    }
    _offset += taken;
    _next = block.first + _offset;
    if (_offset == block.frames) FinishBlock(block);
    return taken;
}

void CFeed::FinishBlock(const SBlock& block) noexcept {
    _offset = 0;
    if (block.endsFile) {
        _wraps = true;
        if (!_controls.loops.load(std::memory_order_relaxed)) {
            _controls.plays.store(false, std::memory_order_relaxed);
            _gain = 0;
        }
    }
    _queue.Pop();
}

std::uint64_t CFeed::Heard(std::uint64_t delay) const noexcept {
    const auto late = delay - std::min(delay, _silent);
    const auto since = _next - std::min(_next, _wraps ? 0 : _begin);
    if (late <= since) return _next - late;
    if (!_wraps) return _begin;
    const auto length = _controls.length.load(std::memory_order_relaxed);
    return length - std::min(length, late - since);
}

} // namespace KAV::Host
