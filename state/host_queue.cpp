#include "state/host_queue.h"

#include <iterator>

namespace KAV {

void CHostQueue::PushBegin(std::int32_t index) {
    PushEdit({.kind = EKind::Begin, .first = index});
}

void CHostQueue::PushValue(std::int32_t index, float normal) {
    PushEdit({.kind = EKind::Value, .first = index, .normal = normal});
}

void CHostQueue::PushEnd(std::int32_t index) {
    PushEdit({.kind = EKind::End, .first = index});
}

void CHostQueue::PushLatency(std::int32_t samples) {
    Push({.kind = EKind::Latency, .first = samples});
}

void CHostQueue::PushSize(std::int32_t width, std::int32_t height) {
    Push({.kind = EKind::Size, .first = width, .second = height});
}

void CHostQueue::PushEdit(const SEntry& entry) {
    if (entry.first >= 0 && static_cast<std::size_t>(entry.first) < HostParameters) Push(entry);
}

void CHostQueue::Push(SEntry entry) {
    const std::lock_guard lock(_mutex);
    const std::uint64_t previous = _pushed;
    entry.number = ++_pushed;
    // The one before may have gone already, and then the last that is left isn't the one before.
    if (!_entries.empty() && _entries.back().number == previous && IsReplaced(_entries.back(), entry)) {
        _entries.back() = entry;
    } else {
        if (_unused.empty()) _unused.emplace_back();
        _unused.front() = entry;
        _entries.splice(_entries.end(), _unused, _unused.begin());
    }
}

bool CHostQueue::IsReplaced(const SEntry& entry, const SEntry& next) noexcept {
    if (entry.kind != next.kind) return false;
    return entry.kind == EKind::Size || (entry.kind == EKind::Value && entry.first == next.first);
}

void CHostQueue::SetWindow(IHostWindow* window) {
    const std::lock_guard lock(_mutex);
    _window = window;
}

void CHostQueue::End() {
    const std::lock_guard lock(_mutex);
    _isOver = true;
    _window = nullptr;
}

void CHostQueue::Empty(IHostRoad& road, EOccasion occasion) {
    std::unique_lock lock(_mutex);
    if (occasion == EOccasion::Idle) _hasIdled = true;
    if (_isOver || (occasion == EOccasion::Direct && _hasIdled)) return;
    if (occasion == EOccasion::Close)
        _isClosing = true; // of an emptying at work, too: no call may follow this one
    if (_isEmptying && !(_isDirect && _isClosing)) return;
    _isEmptying = true;
    _isDirect = occasion == EOccasion::Direct;
    const std::uint64_t emptying = ++_emptyings;
    // One pass over the list: what has to wait now waits until the end of this emptying.
    Parameters waiting;         // whose end isn't due
    auto kept = _entries.end(); // the last that was passed over; end(): none so far
    std::uint64_t last = _pushed + MostAdded;
    bool closes = false;
    for (;;) {
        if (_isClosing && !closes) {
            closes = true;
            occasion = EOccasion::Close;
            DropSizes();
            waiting.reset();
            kept = _entries.end();
            last = _pushed + MostAdded;
        }
        const auto next = kept == _entries.end() ? _entries.begin() : std::next(kept);
        if (next == _entries.end() || next->number > last) break;
        if (!MayGo(*next, occasion, road.NowMs(), waiting)) {
            kept = next;
            continue;
        }
        const SEntry entry = *next;
        Remove(next);
        if (!PassOne(lock, road, entry, emptying)) return;
        if (occasion == EOccasion::Direct && _hasIdled) break;
    }
    _isEmptying = false;
    _isClosing = false;
}

bool CHostQueue::PassOne(
    std::unique_lock<std::mutex>& lock, IHostRoad& road, const SEntry& entry, std::uint64_t emptying) {
    lock.unlock();
    const bool accepted = Pass(road, entry);
    lock.lock();
    if (_isOver || emptying != _emptyings) return false; // the road may be gone
    if (entry.kind == EKind::Value)                      // the host may have taken its time
        _values[static_cast<std::size_t>(entry.first)] = {_emptyings, road.NowMs()};
    // Under the lock, so that the window doesn't go meanwhile.
    if (!accepted && _window != nullptr) _window->ResizeParent(entry.first, entry.second);
    return true;
}

bool CHostQueue::MayGo(
    const SEntry& entry, EOccasion occasion, std::uint32_t nowMs, Parameters& waiting) const noexcept {
    if (entry.kind == EKind::Size) return occasion == EOccasion::Idle;
    if (entry.kind == EKind::Latency) return occasion == EOccasion::Idle || occasion == EOccasion::Close;
    const auto index = static_cast<std::size_t>(entry.first);
    if (entry.kind == EKind::End && occasion != EOccasion::Close && !IsEndDue(entry.first, nowMs))
        waiting.set(index);
    return !waiting[index];
}

void CHostQueue::Remove(std::list<SEntry>::iterator entry) noexcept {
    _unused.splice(_unused.begin(), _entries, entry);
}

void CHostQueue::DropSizes() noexcept {
    for (auto next = _entries.begin(); next != _entries.end();) {
        const auto entry = next++;
        if (entry->kind == EKind::Size) Remove(entry);
    }
}

bool CHostQueue::IsEndDue(std::int32_t index, std::uint32_t nowMs) const noexcept {
    const SPassed& value = _values[static_cast<std::size_t>(index)];
    if (value.emptying == 0) return true;
    return value.emptying != _emptyings && nowMs - value.ms >= EndDelayMs;
}

bool CHostQueue::Pass(IHostRoad& road, const SEntry& entry) noexcept {
    switch (entry.kind) {
    case EKind::Begin:
        road.BeginEdit(entry.first);
        break;
    case EKind::Value:
        road.Value(entry.first, entry.normal);
        break;
    case EKind::End:
        road.EndEdit(entry.first);
        break;
    case EKind::Latency:
        road.Latency(entry.first);
        break;
    case EKind::Size:
        return road.Size(entry.first, entry.second);
    }
    return true;
}

} // namespace KAV
