#pragma once

#include "tests/support/hand_clock.h"
#include "tests/support/recording_window.h"
#include "utils/clock.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace KAV::Tests {

/// A pixel of the window.
struct SPixel {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

/// A person at an editor whose window is a CRecordingWindow: the hands, and the time that passes meanwhile.
/// What there is no window for doesn't happen.
class CToolkitRobot final {
public:
    explicit CToolkitRobot(CRecordingWindow& window) : _window(window) {}

    // The mouse. `flags` are a button, the left one unless it says otherwise, and modifier keys.
    void Move(std::int32_t x, std::int32_t y, std::uint32_t flags = 0) {
        if (auto* const client = _window.client) client->OnMove(x, y, flags | _held);
    }
    void Press(std::int32_t x, std::int32_t y, std::uint32_t flags = GUI::MouseLeft) {
        _held |= flags & Buttons;
        if (auto* const client = _window.client) client->OnPress(x, y, flags, Utils::TickMs());
    }
    void Release(std::int32_t x, std::int32_t y, std::uint32_t flags = GUI::MouseLeft) {
        _held &= ~(flags & Buttons);
        if (auto* const client = _window.client) client->OnRelease(x, y, flags);
    }
    void Click(std::int32_t x, std::int32_t y, std::uint32_t flags = GUI::MouseLeft) {
        Press(x, y, flags);
        Release(x, y, flags);
    }
    /// Press, move in equal steps, release.
    void Drag(SPixel from, SPixel to, std::int32_t steps = 10, std::uint32_t flags = GUI::MouseLeft) {
        Press(from.x, from.y, flags);
        for (std::int32_t step = 1; step <= steps; ++step) {
            Move(from.x + (to.x - from.x) * step / steps, from.y + (to.y - from.y) * step / steps,
                flags & ~Buttons);
        }
        Release(to.x, to.y, flags);
    }
    void Wheel(float notches, std::uint32_t flags = 0) {
        if (auto* const client = _window.client) client->OnWheel(notches, flags);
    }
    void LeaveWindow() {
        if (auto* const client = _window.client) client->OnLeave();
    }

    // The keyboard
    void Key(std::uint32_t key) {
        if (auto* const client = _window.client) client->OnKey(key, true);
        if (auto* const client = _window.client) client->OnKey(key, false);
    }
    /// Into the open text box, as far as it lets the characters through.
    void Type(std::u16string_view characters) {
        for (const char16_t character : characters) {
            if (!_window.textBox) return;
            auto& box = *_window.textBox;
            if (box.numbersOnly && !GUI::CEdit::IsTypable(character)) continue;
            if (std::exchange(box.selected, false)) box.text.clear();
            constexpr char16_t Backspace = 8;
            if (character != Backspace) {
                box.text += character;
            } else if (!box.text.empty()) {
                box.text.pop_back();
            }
        }
    }
    void Enter() {
        if (_window.textBox && _window.client != nullptr) _window.client->OnTyped();
    }

    /// Chooses from the open menu: the item of this text, wherever it lies. False if it can't be chosen.
    bool Choose(std::u16string_view text) {
        if (!_window.menuOpen || _window.client == nullptr) return false;
        const auto* const item = FindItem(_window.menus.back(), text);
        if (item == nullptr || !item->bEnabled) return false;
        _window.menuOpen = false;
        _window.client->OnCommand(item->nCommand);
        return true;
    }

    /// Time passes, and the window ticks at its rate.
    void Advance(std::uint32_t ms) {
        for (; ms > 0; --ms) {
            _clock.Advance(1);
            if (_window.client == nullptr || ++_sinceTickMs < 1000 / _window.rate) continue;
            _sinceTickMs = 0;
            _window.client->OnTick(Utils::TickMs());
        }
    }
    void Tick() {
        if (_window.client != nullptr) Advance(1000 / _window.rate - _sinceTickMs);
    }

private:
    static constexpr std::uint32_t Buttons = GUI::MouseLeft | GUI::MouseRight;

    static const GUI::SMenuItem* FindItem(const GUI::Menu& menu, std::u16string_view text) {
        for (const auto& item : menu) {
            if (const auto* const found = FindItem(item.vsSub, text)) return found;
            if (item.vsSub.empty() && !item.bSeparator && item.sText == text) return &item;
        }
        return nullptr;
    }

    CRecordingWindow& _window;
    CHandClock _clock;
    std::uint32_t _sinceTickMs = 0;
    std::uint32_t _held = 0;
};

} // namespace KAV::Tests
