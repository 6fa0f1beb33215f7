#pragma once

#include "gui/window.h"
#include "platform/picture_target.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace KAV::Native {

/// Sizes of a menu's parts in pixels.
struct SMenuMetrics {
    std::int32_t frame = 0;   ///< the line around a window
    std::int32_t padding = 0; ///< above the first and below the last entry
    std::int32_t row = 0;     ///< height of an entry
    std::int32_t separator = 0;
    std::int32_t arrow = 0;   ///< height of a scroll arrow's row
    std::int32_t check = 0;   ///< width of the column of check marks, left of the texts
    std::int32_t sub = 0;     ///< width of the column of sub-menu arrows, right of the texts
    std::int32_t overlap = 0; ///< of a sub-menu's window and the one that it comes from
    std::int32_t slack = 0;   ///< so far a pointer may move in a click
    float text = 0.0f;        ///< size of the typeface
};

SMenuMetrics MenuMetrics(std::int32_t dotsPerInch) noexcept;

/// One window of an open menu. Positions in its content are counted from the first entry's top.
struct SMenuLevel {
    const GUI::Menu* items = nullptr;
    std::uint32_t id = 0; ///< no other window of this menu ever has it
    Platform::SArea place;
    std::vector<std::int32_t> tops; ///< of each entry in the content, and the content's end
    std::int32_t viewTop = 0;       ///< where the visible part of the content begins in the window
    std::int32_t viewHeight = 0;
    std::int32_t scroll = 0;    ///< where the visible part begins in the content
    std::int32_t hot = -1;      ///< the highlighted entry
    std::int32_t opener = -1;   ///< the entry of the window before that it belongs to
    bool isScrolled = false;    ///< longer than the monitor: a row with an arrow at each end
    bool isLeft = false;        ///< left of the window before
    std::uint32_t revision = 0; ///< changes when it has to be drawn anew
    std::int32_t LastScroll() const noexcept { return tops.back() - viewHeight; }
    /// The entries that are visible now, [first, last).
    std::size_t FirstVisible() const noexcept;
    std::size_t LastVisible() const noexcept;
};

enum class EMenuKey : std::uint8_t { Up, Down, Left, Right, Home, End, PageUp, PageDown, Enter, Escape };

/// What an open menu does: where its windows and entries are, what is highlighted, which sub-menus are open,
/// what is chosen. All positions are those of the root window's pixels, times are milliseconds modulo 2^32.
///
/// A sub-menu opens when the pointer has rested on its entry, at once on a press, Right or Enter. A press and
/// release on an entry chooses it; so does the release of the press that opened the menu if the pointer was
/// dragged in between. Keys pass over separators and disabled entries, and keep the highlighted one visible.
/// Threads: one.
class CMenuModel final {
public:
    /// The width in pixels of the window that shows these entries.
    using WidthOf = std::function<std::int32_t(const GUI::Menu&)>;

    /// `menu` lives as long as this. The windows stay on that monitor.
    CMenuModel(
        const GUI::Menu& menu, const SMenuMetrics& metrics, const Platform::SArea& monitor, WidthOf widthOf);

    /// Opens the first window at that place, above it if there is room only there. `held`: the button that
    /// opened it is down.
    void Open(std::int32_t x, std::int32_t y, bool held);
    /// Measures the windows again: texts have changed their widths.
    void Measure();

    void Move(std::int32_t x, std::int32_t y, std::uint32_t nowMs);
    void Press(std::int32_t x, std::int32_t y, std::uint32_t nowMs);
    void Release(std::int32_t x, std::int32_t y);
    /// Above 0: towards the first entry.
    void Wheel(std::int32_t x, std::int32_t y, std::int32_t notches, std::uint32_t nowMs);
    void Key(EMenuKey key);
    /// The next moment that it wants to be called at; false: none.
    bool NextTime(std::uint32_t& timeMs) const noexcept;
    void OnTime(std::uint32_t nowMs);

    bool IsOver() const noexcept { return _isOver; }            ///< something was chosen, or it was given up
    std::uint32_t Command() const noexcept { return _command; } ///< 0: nothing was chosen
    const std::vector<SMenuLevel>& Levels() const noexcept { return _levels; } ///< the deepest last
    const SMenuMetrics& Metrics() const noexcept { return _metrics; }

private:
    /// What lies at a place; level -1: no window.
    struct SHit {
        std::int32_t level = -1;
        std::int32_t item = -1;
        std::int32_t arrow = 0; // -1: up, 1: down

        bool operator==(const SHit&) const = default;
    };

    SHit At(std::int32_t x, std::int32_t y) const noexcept;
    const GUI::SMenuItem* ItemOf(const SHit& hit) const noexcept;
    SMenuLevel NewLevel(const GUI::Menu& items) const;
    void PlaceBeside(const SMenuLevel& from, SMenuLevel& sub) const noexcept;
    void OpenSub(std::size_t level, std::int32_t item);
    void CloseBelow(std::size_t level);
    void SetHot(std::size_t level, std::int32_t item) noexcept;
    void Hover(const SHit& hit, std::uint32_t nowMs);
    void Settle();
    bool Scroll(std::size_t level, std::int32_t by);
    void ShowItem(std::size_t level, std::int32_t item);
    void Highlight(std::int32_t item);
    void Step(std::int32_t from, std::int32_t by);
    void StepPage(std::int32_t by);
    void Enter();
    void End(std::uint32_t command) noexcept;

    const GUI::Menu& _menu;
    SMenuMetrics _metrics;
    Platform::SArea _monitor;
    WidthOf _widthOf;
    std::vector<SMenuLevel> _levels;
    std::size_t _focus = 0; // the level that keys go to
    std::uint32_t _nextId = 1;
    SHit _settling; // the pointer rests there; _settleMs is when that takes effect
    std::uint32_t _settleMs = 0;
    SHit _scrolling; // the pointer is on that arrow; _scrollMs is when it moves next
    std::uint32_t _scrollMs = 0;
    std::int32_t _openX = 0, _openY = 0;
    bool _isHeld = false;    // by the press that opened it
    bool _isPressed = false; // a release chooses
    bool _isOver = false;
    std::uint32_t _command = 0;
};

} // namespace KAV::Native
