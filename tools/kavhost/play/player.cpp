#include "tools/kavhost/play/player.h"

#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/effect/effect.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace KAV::Host {

namespace {

constexpr double AheadSeconds = 2;
constexpr std::size_t BlockFrames = 4096;

std::size_t BlocksAt(double rateHz) {
    return 2 + static_cast<std::size_t>(AheadSeconds * rateHz / BlockFrames);
}

} // namespace

CPlayer::CPlayer(CAudioReader& reader, CEffect& effect)
    : _effect(effect), _rateHz(effect.Stream().rateHz),
      _channels(static_cast<std::size_t>(reader.Format().channels)), _controls(reader.Frames()),
      _queue(BlocksAt(_rateHz), BlockFrames, _channels), _feed(_queue, _controls, _channels),
      _in(_channels, static_cast<std::size_t>(effect.Stream().blockSize)), _out(_channels, _in.Frames()),
      _ahead(reader, _queue, _controls) {
    TakeDelay();
}

void CPlayer::TakeDelay() noexcept {
    _delay = static_cast<std::uint64_t>(std::max(_effect.ReportedDelay(), 0));
}

void CPlayer::Process(std::span<float> interleaved) noexcept {
    // Either this sees that it is held, or Pausing() sees that it is inside.
    _isInside = true;
    if (_isHeld) {
        std::ranges::fill(interleaved, 0.0f);
    } else {
        while (!interleaved.empty()) {
            const auto block = interleaved.first(std::min(interleaved.size(), _in.Frames() * _channels));
            ProcessBlock(block);
            interleaved = interleaved.subspan(block.size());
        }
    }
    _isInside = false;
}

void CPlayer::ProcessBlock(std::span<float> interleaved) noexcept {
    _feed.Fill(interleaved);
    _in.TakeInterleaved(interleaved);
    _effect.Process(
        _in.Pointers(), _out.Pointers(), static_cast<std::int32_t>(interleaved.size() / _channels));
    _out.GiveInterleaved(interleaved);
    _heard = SPlayControls::Joined(_feed.Request(), _feed.Heard(_delay));
}

void CPlayer::Pausing(const std::function<void()>& work) {
    _isHeld = true;
    while (_isInside) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    work();
    TakeDelay();
    _isHeld = false;
}

void CPlayer::Seek(double seconds) {
    const auto length = _controls.length.load();
    const auto frame = std::llround(std::max(seconds, 0.0) * _rateHz);
    _controls.Seek(std::min(static_cast<std::uint64_t>(frame), length));
    _ahead.Wake();
}

double CPlayer::Seconds() const noexcept {
    const auto request = _controls.request.load();
    const auto heard = _heard.load();
    const bool isThere = SPlayControls::NumberOf(heard) == SPlayControls::NumberOf(request);
    return static_cast<double>(SPlayControls::PlaceOf(isThere ? heard : request)) / _rateHz;
}

double CPlayer::Length() const noexcept {
    return static_cast<double>(_controls.length.load()) / _rateHz;
}

} // namespace KAV::Host
