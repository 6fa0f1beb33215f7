#pragma once

#include "native/linux/x11_window.h"
#include "tests/support/x_test_host.h"
#include "utils/text.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/eventfd.h>
#include <unistd.h>
#include <vector>

namespace KAV::Tests {

/// What the editor's window reports, one line each: "press 10,20 flags 1", "wheel 1 flags 0", "key 90 down".
/// As the toolkit does, it takes the focus when it is pressed.
class CHeard final : public GUI::IWindowClient {
public:
    std::vector<std::string> lines; ///< without ticks, moves and paints
    std::string lastMove;
    std::vector<std::uint32_t> ticks;
    std::uint32_t pressMs = 0;
    int paints = 0;
    std::function<void()> onPress;
    std::function<void()> onRelease;
    std::function<void()> onTyped;
    Native::CX11Window* window = nullptr;

    int Count(std::string_view begin) const {
        return static_cast<int>(std::count_if(lines.begin(), lines.end(),
            [begin](const std::string& line) { return line.starts_with(begin); }));
    }

    void OnTick(std::uint32_t a_nTimeMs) override { ticks.push_back(a_nTimeMs); }
    void OnPress(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags, std::uint32_t a_nTimeMs) override {
        pressMs = a_nTimeMs;
        lines.push_back("press " + Place(x, y, a_nFlags));
        window->Focus();
        if (onPress) onPress();
    }
    void OnRelease(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override {
        lines.push_back("release " + Place(x, y, a_nFlags));
        if (onRelease) onRelease();
    }
    void OnMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override {
        lastMove = Place(x, y, a_nFlags);
    }
    void OnLeave() override { lines.emplace_back("leave"); }
    void OnWheel(float a_fNotches, std::uint32_t a_nFlags) override {
        lines.push_back(
            "wheel " + std::to_string(static_cast<int>(a_fNotches)) + " flags " + std::to_string(a_nFlags));
    }
    void OnKey(std::uint32_t a_nKey, bool a_bDown) override {
        lines.push_back("key " + std::to_string(a_nKey) + (a_bDown ? " down" : " up"));
    }
    void OnPaint() override { ++paints; }
    void OnCancel() override { lines.emplace_back("cancel"); }
    void OnCommand(std::uint32_t a_nCommand) override {
        lines.push_back("command " + std::to_string(a_nCommand));
    }
    void OnTyped() override {
        lines.push_back("typed " + Utils::ToUtf8(window->BoxText()));
        if (onTyped) onTyped();
    }
    void OnGone() override { lines.emplace_back("gone"); }

private:
    static std::string Place(std::int32_t x, std::int32_t y, std::uint32_t flags) {
        return std::to_string(x) + "," + std::to_string(y) + " flags " + std::to_string(flags);
    }
};

/// A question that is up until it is answered.
class CQuestion final : public Platform::IModal {
public:
    int raised = 0;
    void Raise() noexcept override { ++raised; }
    void Cancel() noexcept override {}
};

/// An editor's window of 200 by 150 in a host's, shown, and its loop on this thread.
class CX11Editor final {
public:
    explicit CX11Editor(CXTestHost& host, std::uint32_t framesPerSecond = 60)
        : heard(), loop([this] { eventfd_write(wake, 1); }), _host(host) {
        std::u16string reason;
        window = Native::CX11Window::Create(host.Display(), host.Parent(), 200, 150, reason);
        EXPECT_NE(window, nullptr) << Utils::ToUtf8(reason);
        heard.window = window.get();
        window->Begin(heard, loop, framesPerSecond);
        window->Show(true);
        EXPECT_TRUE(Until([&] { return _host.Editor() != 0; }));
        id = _host.Editor();
        Run(2);                 // it knows that it is shown, if the host lets it
        _host.MoveTo(300, 250); // in the parent, outside of the editor
    }
    ~CX11Editor() {
        window.reset();
        close(wake);
    }
    CX11Editor(const CX11Editor&) = delete;
    CX11Editor& operator=(const CX11Editor&) = delete;

    /// Runs the loop until that is so; false if it isn't within a generous time.
    bool Until(const std::function<bool()>& isSo) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!isSo()) {
            if (std::chrono::steady_clock::now() > end) return false;
            if (!window->Round(wake)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
    /// Runs the loop for so many ticks: for what is not to happen.
    void Run(std::size_t ticks = 6) {
        const auto before = heard.ticks.size();
        EXPECT_TRUE(Until([&] { return heard.ticks.size() >= before + ticks; }));
    }
    /// What was heard since the last call, once the window has handled all that the display has sent.
    std::vector<std::string> Lines() {
        _host.Sync();
        Run(3);
        return std::exchange(heard.lines, {});
    }
    /// Gives areas of the picture one colour, and puts them.
    bool Fill(std::uint32_t colour, const std::vector<Platform::SArea>& areas = {{0, 0, 200, 150}}) {
        for (const auto& area : areas) {
            for (std::int32_t y = std::max(area.top, 0); y < std::min(area.top + area.height, 150); ++y) {
                for (std::int32_t x = std::max(area.left, 0); x < std::min(area.left + area.width, 200); ++x)
                    _pixels[static_cast<std::size_t>(y * 200 + x)] = colour;
            }
        }
        return window->Put(_pixels.data(), 200 * 4, 200, 150, areas);
    }
    /// The display shows that colour at a place of the window.
    bool Shows(std::int32_t x, std::int32_t y, std::uint32_t colour) {
        return Until([&] { return (_host.Pixel(id, x, y) & 0xFFFFFF) == (colour & 0xFFFFFF); });
    }

    CHeard heard;
    int wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    Platform::CWindowLoop loop;
    std::unique_ptr<Native::CX11Window> window;
    xcb_window_t id = 0;

private:
    CXTestHost& _host;
    std::vector<std::uint32_t> _pixels = std::vector<std::uint32_t>(200 * 150, 0xFF000000);
};

} // namespace KAV::Tests
