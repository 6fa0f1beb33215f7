#pragma once

#include "native/linux/x11_clipboard.h"
#include "native/linux/x11_display.h"
#include "platform/x11/xcb_library.h"
#include "tests/support/x_test_host.h"
#include "utils/clock.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <poll.h>
#include <vector>

namespace KAV::Tests {

/// An editor's window in a host's, with the loop that brings its events to what lies over it.
class COverlayFixture : public testing::Test {
protected:
    explicit COverlayFixture(const CXTestHost::SOptions& options = {}) : _host(options) {}
    ~COverlayFixture() override { EXPECT_FALSE(_display == nullptr || _display->IsLost()); }

    void SetUp() override { Connect(); }
    /// Anew: nothing lies over the editor.
    void Connect() {
        std::u16string reason;
        _display = Native::CX11Display::Connect(_host.Display(), _host.Parent(), reason);
        ASSERT_NE(_display, nullptr);
        constexpr std::uint32_t events = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                                         XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                         XCB_EVENT_MASK_POINTER_MOTION;
        _editor = _display->MakeWindow(_host.Parent(), {0, 0, 400, 300}, events, false);
        Platform::Xcb()->map_window(_display->Connection(), _editor);
        _host.Show(_host.Parent(), true);
        _host.Show(_host.Top(), true);
        _before = _host.Children(_host.Root());
        Pump();
        _host.Focus(_editor);
    }
    /// What lies over the editor; null: nothing.
    virtual Native::IX11Overlay* Overlay() = 0;

    /// Handles what has come up to now, and what is due.
    void Pump() {
        _host.Sync();
        Sync(); // all that the display has sent before is here now
        while (const std::unique_ptr<xcb_generic_event_t, Platform::SFree> event{
            Platform::Xcb()->poll_for_event(_display->Connection())}) {
            _display->OnEvent(*event);
            if (Overlay() == nullptr || !Overlay()->OnEvent(*event))
                _passed.push_back(static_cast<std::uint8_t>(event->response_type & 0x7Fu));
        }
        std::uint32_t due = 0;
        if (Overlay() != nullptr && Overlay()->NextTime(due)) {
            const auto now = Utils::TickMs();
            if (static_cast<std::int32_t>(now - due) >= 0) Overlay()->OnTime(now);
        }
        Sync();
    }
    /// The display has done what we have asked for.
    void Sync() {
        std::int32_t x = 0;
        std::int32_t y = 0;
        EXPECT_TRUE(_display->Pointer(x, y));
    }
    /// Handles events until it is so. The limit is only for a test that fails.
    bool Until(const std::function<bool()>& isSo) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!isSo()) {
            if (std::chrono::steady_clock::now() > limit) return false;
            pollfd wait{_display->Descriptor(), POLLIN, 0};
            poll(&wait, 1, 2);
            Pump();
        }
        return true;
    }
    /// How many events of that kind the editor has got.
    std::ptrdiff_t Passed(std::uint8_t type) const {
        return std::count(_passed.begin(), _passed.end(), type);
    }
    /// Windows that have been added to the screen, the oldest first.
    std::vector<xcb_window_t> Popups() {
        auto windows = _host.Children(_host.Root());
        std::erase_if(windows, [this](xcb_window_t window) {
            return std::find(_before.begin(), _before.end(), window) != _before.end() ||
                   !_host.IsViewable(window);
        });
        return windows;
    }
    /// The pointer goes to that point of the screen.
    void MoveOnScreen(std::int32_t x, std::int32_t y) {
        const auto top = _host.Place(_host.Top());
        const auto parent = _host.Place(_host.Parent());
        _host.MoveTo(x - top.x - parent.x, y - top.y - parent.y);
        Pump();
    }
    void Type(std::uint32_t symbol) {
        _host.Type(symbol);
        Pump();
    }
    /// With a key held.
    void Type(std::uint32_t modifier, std::uint32_t symbol) {
        _host.Key(modifier, true);
        _host.Type(symbol);
        _host.Key(modifier, false);
        Pump();
    }
    void Click(int button = 1) {
        _host.Click(button);
        Pump();
    }

    CXTestHost _host;
    std::unique_ptr<Native::CX11Display> _display;
    xcb_window_t _editor = 0;
    std::vector<std::uint8_t> _passed; // types of events that nothing has taken

private:
    std::vector<xcb_window_t> _before;
};

} // namespace KAV::Tests
