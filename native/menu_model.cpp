#include "native/menu_model.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace KAV::Native {

namespace {

constexpr std::uint32_t RestMs = 200;        // so long on an entry before its sub-menu opens
constexpr std::uint32_t FirstScrollMs = 200; // so long on an arrow before it scrolls
constexpr std::uint32_t NextScrollMs = 40;
constexpr std::int32_t WheelRows = 3;

bool IsDue(std::uint32_t timeMs, std::uint32_t nowMs) noexcept {
    return static_cast<std::int32_t>(nowMs - timeMs) >= 0;
}

bool IsSelectable(const GUI::SMenuItem& item) noexcept {
    return !item.bSeparator && item.bEnabled;
}

std::int32_t SizeOf(const GUI::Menu& items) noexcept {
    return static_cast<std::int32_t>(items.size());
}

/// The first selectable entry from `from` on in steps of `by`; -1: there is none before the end.
std::int32_t FindSelectable(const GUI::Menu& items, std::int32_t from, std::int32_t by) noexcept {
    for (std::int32_t item = from; item >= 0 && item < SizeOf(items); item += by)
        if (IsSelectable(items[static_cast<std::size_t>(item)])) return item;
    return -1;
}

bool Contains(const Platform::SArea& area, std::int32_t x, std::int32_t y) noexcept {
    return x >= area.left && x < area.left + area.width && y >= area.top && y < area.top + area.height;
}

/// Where something of that size lies in [begin, begin + room) nearest to `wanted`.
std::int32_t Kept(std::int32_t wanted, std::int32_t size, std::int32_t begin, std::int32_t room) noexcept {
    return std::max(std::min(wanted, begin + room - size), begin);
}

} // namespace

SMenuMetrics MenuMetrics(std::int32_t dotsPerInch) noexcept {
    constexpr double plain = 96.0;
    const double scale = std::max(dotsPerInch, 1) / plain;
    const auto scaled = [scale](double pixels) {
        return std::max(1, static_cast<std::int32_t>(std::lround(pixels * scale)));
    };
    SMenuMetrics metrics;
    metrics.frame = scaled(1);
    metrics.padding = scaled(4);
    metrics.row = scaled(22);
    metrics.separator = scaled(9);
    metrics.arrow = scaled(16);
    metrics.check = scaled(26);
    metrics.sub = scaled(26);
    metrics.overlap = scaled(3);
    metrics.slack = scaled(4);
    metrics.text = static_cast<float>(scaled(12));
    return metrics;
}

std::size_t SMenuLevel::FirstVisible() const noexcept {
    const auto after = std::upper_bound(tops.begin(), tops.end(), scroll);
    return after == tops.begin() ? 0 : static_cast<std::size_t>(after - tops.begin()) - 1;
}

std::size_t SMenuLevel::LastVisible() const noexcept {
    const auto end = std::lower_bound(tops.begin(), tops.end(), scroll + viewHeight);
    return std::min(static_cast<std::size_t>(end - tops.begin()), items->size());
}

CMenuModel::CMenuModel(
    const GUI::Menu& menu, const SMenuMetrics& metrics, const Platform::SArea& monitor, WidthOf widthOf)
    : _menu(menu), _metrics(metrics), _monitor(monitor), _widthOf(std::move(widthOf)) {}

SMenuLevel CMenuModel::NewLevel(const GUI::Menu& items) const {
    SMenuLevel level;
    level.items = &items;
    level.tops.reserve(items.size() + 1);
    std::int32_t top = 0;
    for (const auto& item : items) {
        level.tops.push_back(top);
        top += item.bSeparator ? _metrics.separator : _metrics.row;
    }
    level.tops.push_back(top);
    level.viewTop = _metrics.frame + _metrics.padding;
    level.place.height = top + 2 * level.viewTop;
    if (level.place.height > _monitor.height) {
        level.isScrolled = true;
        level.place.height = _monitor.height;
        level.viewTop = _metrics.frame + _metrics.arrow;
    }
    level.viewHeight = std::max(level.place.height - 2 * level.viewTop, 0);
    level.place.width = std::min(_widthOf(items), _monitor.width);
    return level;
}

void CMenuModel::Open(std::int32_t x, std::int32_t y, bool held) {
    auto level = NewLevel(_menu);
    level.id = _nextId++;
    const bool fitsBelow = y + level.place.height <= _monitor.top + _monitor.height;
    if (!fitsBelow && y - level.place.height >= _monitor.top) y -= level.place.height;
    level.place.left = Kept(x, level.place.width, _monitor.left, _monitor.width);
    level.place.top = Kept(y, level.place.height, _monitor.top, _monitor.height);
    _levels.clear();
    _levels.push_back(std::move(level));
    _openX = x;
    _openY = y;
    _isHeld = held;
}

void CMenuModel::Measure() {
    for (std::size_t n = 0; n < _levels.size(); ++n) {
        auto& level = _levels[n];
        level.place.width = std::min(_widthOf(*level.items), _monitor.width);
        if (n == 0)
            level.place.left = Kept(level.place.left, level.place.width, _monitor.left, _monitor.width);
        if (n > 0) PlaceBeside(_levels[n - 1], level);
        ++level.revision;
    }
}

/// Beside its entry, on the side of the window before, or on the other one if there is room only there.
void CMenuModel::PlaceBeside(const SMenuLevel& from, SMenuLevel& sub) const noexcept {
    const std::int32_t right = from.place.left + from.place.width - _metrics.overlap;
    const std::int32_t left = from.place.left + _metrics.overlap - sub.place.width;
    const bool fitsRight = right + sub.place.width <= _monitor.left + _monitor.width;
    const bool fitsLeft = left >= _monitor.left;
    sub.isLeft = fitsLeft && (from.isLeft || !fitsRight);
    sub.place.left = Kept(sub.isLeft ? left : right, sub.place.width, _monitor.left, _monitor.width);
    const std::int32_t entry =
        from.place.top + from.viewTop + from.tops[static_cast<std::size_t>(sub.opener)] - from.scroll;
    sub.place.top = Kept(entry - sub.viewTop, sub.place.height, _monitor.top, _monitor.height);
}

CMenuModel::SHit CMenuModel::At(std::int32_t x, std::int32_t y) const noexcept {
    for (auto n = static_cast<std::int32_t>(_levels.size()) - 1; n >= 0; --n) {
        const auto& level = _levels[static_cast<std::size_t>(n)];
        if (!Contains(level.place, x, y)) continue;
        const std::int32_t inView = y - level.place.top - level.viewTop;
        if (inView < 0 || inView >= level.viewHeight) {
            if (!level.isScrolled) return {n, -1, 0};
            return {n, -1, inView < 0 ? -1 : 1};
        }
        const auto after = std::upper_bound(level.tops.begin(), level.tops.end(), inView + level.scroll);
        const auto item = static_cast<std::int32_t>(after - level.tops.begin()) - 1;
        return {n, item < SizeOf(*level.items) ? item : -1, 0};
    }
    return {};
}

const GUI::SMenuItem* CMenuModel::ItemOf(const SHit& hit) const noexcept {
    if (hit.level < 0 || hit.item < 0) return nullptr;
    const auto& item =
        (*_levels[static_cast<std::size_t>(hit.level)].items)[static_cast<std::size_t>(hit.item)];
    return IsSelectable(item) ? &item : nullptr;
}

void CMenuModel::SetHot(std::size_t level, std::int32_t item) noexcept {
    if (std::exchange(_levels[level].hot, item) != item) ++_levels[level].revision;
}

void CMenuModel::CloseBelow(std::size_t level) {
    if (_levels.size() > level + 1)
        _levels.erase(_levels.begin() + static_cast<std::ptrdiff_t>(level) + 1, _levels.end());
    _focus = std::min(_focus, level);
}

void CMenuModel::OpenSub(std::size_t level, std::int32_t item) {
    if (_levels.size() > level + 1 && _levels[level + 1].opener == item) return;
    CloseBelow(level);
    SetHot(level, item);
    const auto& from = _levels[level];
    auto sub = NewLevel((*from.items)[static_cast<std::size_t>(item)].vsSub);
    sub.id = _nextId++;
    sub.opener = item;
    PlaceBeside(from, sub);
    _levels.push_back(std::move(sub));
}

/// The pointer is there now. What is open below the window changes only after a while, so that a pointer on
/// its way to the sub-menu may cross other entries.
void CMenuModel::Hover(const SHit& hit, std::uint32_t nowMs) {
    const auto level = static_cast<std::size_t>(std::max(hit.level, 0));
    const auto* const item = ItemOf(hit);
    for (std::size_t n = 0; n < _levels.size(); ++n) {
        const bool isHere = hit.level >= 0 && n == level;
        const std::int32_t opener = n + 1 < _levels.size() ? _levels[n + 1].opener : -1;
        SetHot(n, !isHere ? opener : item != nullptr ? hit.item : -1);
    }
    if (hit.level < 0) {
        _settling = {};
        return;
    }
    _focus = level;
    const bool isOpen = _levels.size() > level + 1;
    const bool changes =
        isOpen ? hit.item != _levels[level + 1].opener : item != nullptr && !item->vsSub.empty();
    if (!changes) {
        _settling = {};
    } else if (_settling != hit) {
        _settling = hit;
        _settleMs = nowMs + RestMs;
    }
}

void CMenuModel::Settle() {
    const auto hit = std::exchange(_settling, {});
    if (hit.level < 0) return;
    const auto* const item = ItemOf(hit);
    const auto level = static_cast<std::size_t>(hit.level);
    if (item != nullptr && !item->vsSub.empty()) {
        OpenSub(level, hit.item);
    } else {
        CloseBelow(level);
    }
}

void CMenuModel::Move(std::int32_t x, std::int32_t y, std::uint32_t nowMs) {
    if (_isHeld && (std::abs(x - _openX) > _metrics.slack || std::abs(y - _openY) > _metrics.slack)) {
        _isHeld = false;
        _isPressed = true;
    }
    const auto hit = At(x, y);
    Hover(hit, nowMs);
    if (hit.arrow == 0) {
        _scrolling = {};
    } else if (_scrolling != hit) {
        _scrolling = hit;
        _scrollMs = nowMs + FirstScrollMs;
    }
}

void CMenuModel::Press(std::int32_t x, std::int32_t y, std::uint32_t nowMs) {
    const auto hit = At(x, y);
    if (hit.level < 0) {
        End(0);
        return;
    }
    Move(x, y, nowMs);
    _isHeld = false;
    _isPressed = true;
    const auto level = static_cast<std::size_t>(hit.level);
    if (hit.arrow != 0) {
        Scroll(level, hit.arrow * std::max(_levels[level].viewHeight - _metrics.row, _metrics.row));
        return;
    }
    if (const auto* const item = ItemOf(hit); item != nullptr && !item->vsSub.empty()) {
        _settling = hit;
        Settle();
    }
}

void CMenuModel::Release(std::int32_t x, std::int32_t y) {
    _isHeld = false;
    if (!std::exchange(_isPressed, false)) return;
    if (const auto* const item = ItemOf(At(x, y)); item != nullptr && item->vsSub.empty())
        End(item->nCommand);
}

void CMenuModel::Wheel(std::int32_t x, std::int32_t y, std::int32_t notches, std::uint32_t nowMs) {
    const auto hit = At(x, y);
    if (hit.level < 0) return;
    const auto level = static_cast<std::size_t>(hit.level);
    if (!Scroll(level, -notches * WheelRows * _metrics.row)) return;
    CloseBelow(level); // it would no longer stand beside its entry
    Move(x, y, nowMs);
}

bool CMenuModel::Scroll(std::size_t level, std::int32_t by) {
    auto& scrolled = _levels[level];
    if (!scrolled.isScrolled) return false;
    const std::int32_t to = std::clamp(scrolled.scroll + by, 0, scrolled.LastScroll());
    if (to == scrolled.scroll) return false;
    scrolled.scroll = to;
    ++scrolled.revision;
    return true;
}

void CMenuModel::ShowItem(std::size_t level, std::int32_t item) {
    const auto& shown = _levels[level];
    const std::int32_t top = shown.tops[static_cast<std::size_t>(item)];
    const std::int32_t end = shown.tops[static_cast<std::size_t>(item) + 1];
    if (top < shown.scroll) Scroll(level, top - shown.scroll);
    if (end > shown.scroll + shown.viewHeight) Scroll(level, end - shown.scroll - shown.viewHeight);
}

void CMenuModel::Highlight(std::int32_t item) {
    if (item < 0) return;
    CloseBelow(_focus);
    SetHot(_focus, item);
    ShowItem(_focus, item);
}

/// To the next entry from `from` on, around the end.
void CMenuModel::Step(std::int32_t from, std::int32_t by) {
    const auto& items = *_levels[_focus].items;
    const auto item = FindSelectable(items, from, by);
    Highlight(item >= 0 ? item : FindSelectable(items, by > 0 ? 0 : SizeOf(items) - 1, by));
}

/// A page on, at most to the end.
void CMenuModel::StepPage(std::int32_t by) {
    const auto& level = _levels[_focus];
    const std::int32_t last = SizeOf(*level.items) - 1;
    const std::int32_t rows = std::max(level.viewHeight / _metrics.row - 1, 1);
    const std::int32_t from = level.hot >= 0 ? level.hot : by > 0 ? 0 : last;
    const std::int32_t to = std::clamp(from + by * rows, 0, last);
    const auto item = FindSelectable(*level.items, to, by);
    Highlight(item >= 0 ? item : FindSelectable(*level.items, to, -by));
}

void CMenuModel::Enter() {
    const auto hot = _levels[_focus].hot;
    const auto* const item = ItemOf({static_cast<std::int32_t>(_focus), hot, 0});
    if (item == nullptr || item->vsSub.empty()) return;
    OpenSub(_focus, hot);
    ++_focus;
    Step(0, 1);
}

void CMenuModel::Key(EMenuKey key) {
    if (_levels.empty() || _isOver) return;
    _settling = {};
    const auto& level = _levels[_focus];
    const std::int32_t last = SizeOf(*level.items) - 1;
    switch (key) {
    case EMenuKey::Up:
        return Step(level.hot < 0 ? last : level.hot - 1, -1);
    case EMenuKey::Down:
        return Step(level.hot + 1, 1);
    case EMenuKey::Home:
        return Step(0, 1);
    case EMenuKey::End:
        return Step(last, -1);
    case EMenuKey::PageUp:
        return StepPage(-1);
    case EMenuKey::PageDown:
        return StepPage(1);
    case EMenuKey::Right:
        return Enter();
    case EMenuKey::Left:
        if (_focus > 0) CloseBelow(_focus - 1);
        return;
    case EMenuKey::Enter: {
        const auto* const item = ItemOf({static_cast<std::int32_t>(_focus), level.hot, 0});
        if (item != nullptr && item->vsSub.empty()) return End(item->nCommand);
        return Enter();
    }
    case EMenuKey::Escape:
        return End(0);
    }
}

void CMenuModel::End(std::uint32_t command) noexcept {
    _isOver = true;
    _command = command;
    _settling = {};
    _scrolling = {};
}

bool CMenuModel::NextTime(std::uint32_t& timeMs) const noexcept {
    const bool settles = _settling.level >= 0;
    const bool scrolls = _scrolling.level >= 0;
    if (!settles && !scrolls) return false;
    timeMs = settles && (!scrolls || IsDue(_settleMs, _scrollMs)) ? _settleMs : _scrollMs;
    return true;
}

void CMenuModel::OnTime(std::uint32_t nowMs) {
    if (_settling.level >= 0 && IsDue(_settleMs, nowMs)) Settle();
    if (_scrolling.level < 0 || !IsDue(_scrollMs, nowMs)) return;
    const auto level = static_cast<std::size_t>(_scrolling.level);
    if (level < _levels.size() && Scroll(level, _scrolling.arrow * _metrics.row)) {
        CloseBelow(level);
        _scrollMs = nowMs + NextScrollMs;
    } else {
        _scrolling = {};
    }
}

} // namespace KAV::Native
