#include "tools/kavhost/play/read_ahead.h"

#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/play/block_queue.h"
#include "tools/kavhost/play/play_controls.h"

#include <chrono>
#include <exception>
#include <utility>

namespace KAV::Host {

namespace {

/// The audio's thread may not wake this one, so it looks by itself whether there is room again. The queue
/// holds a hundred times as much.
constexpr auto Pause = std::chrono::milliseconds(20);

} // namespace

CReadAhead::CReadAhead(CAudioReader& reader, CBlockQueue& queue, SPlayControls& controls)
    : _reader(reader), _queue(queue), _controls(controls), _request(controls.request),
      _thread([this] { Run(); }) {}

CReadAhead::~CReadAhead() {
    {
        const std::scoped_lock lock(_mutex);
        _ends = true;
    }
    _wakes.notify_all();
    _thread.join();
}

void CReadAhead::Wake() {
    {
        const std::scoped_lock lock(_mutex);
        _isWoken = true;
    }
    _wakes.notify_all();
}

std::string CReadAhead::Failure() const {
    const std::scoped_lock lock(_mutex);
    return _failure;
}

void CReadAhead::Run() {
    for (bool canRead = true;;) {
        SBlock* const block = canRead ? _queue.Back() : nullptr;
        if (block != nullptr) {
            canRead = Fill(*block);
            _queue.Push();
            const std::scoped_lock lock(_mutex);
            if (_ends) return;
            continue;
        }
        std::unique_lock lock(_mutex);
        _wakes.wait_for(lock, Pause, [this] { return _ends || _isWoken; });
        if (_ends) return;
        if (std::exchange(_isWoken, false)) canRead = true; // elsewhere the file may be readable
    }
}

bool CReadAhead::Fill(SBlock& block) {
    const auto request = _controls.request.load(std::memory_order_acquire);
    const bool isMoved = request != _request;
    _request = block.request = request;
    if (isMoved) _place = SPlayControls::PlaceOf(request);
    block.first = _place;
    block.frames = 0;
    block.endsFile = true;
    try {
        if (isMoved) _reader.Seek(_place);
        const auto capacity = _queue.BlockFrames();
        const auto channels = static_cast<std::size_t>(_reader.Format().channels);
        block.frames = _reader.Read({block.samples, capacity * channels});
        _place += block.frames;
        block.endsFile = block.frames < capacity;
        if (!block.endsFile) return true;
        _controls.length.store(_place, std::memory_order_relaxed);
        const bool isEmpty = _place == 0;
        _place = 0;
        _reader.Seek(0);
        return !isEmpty;
    } catch (const std::exception& error) {
        _controls.length.store(_place, std::memory_order_relaxed);
        const std::scoped_lock lock(_mutex);
        _failure = error.what();
        return false;
    }
}

} // namespace KAV::Host
