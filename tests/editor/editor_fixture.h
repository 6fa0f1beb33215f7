#pragma once

#include "panel/layout.h"
#include "tests/editor/editor_host.h"
#include "tests/support/x_test_host.h"

#include <gtest/gtest.h>
#include <memory>
#include <string_view>
#include <vector>

namespace KAV::Tests {

/// The delivered library, a display, and a host with a window for an editor on it.
class CEditorFixture : public testing::Test {
protected:
    explicit CEditorFixture(const CXTestHost::SOptions& options = {.width = 800, .height = 600})
        : windows(options) {}

    struct SPoint {
        std::int32_t x = 0;
        std::int32_t y = 0;
    };

    /// The middle of a widget in the editor's window, whose width is `width`.
    static SPoint MiddleOf(std::string_view name, std::int32_t width = Panel::PanelWidth) {
        const auto& rect = Panel::RowOf(name).rect;
        const double scale = static_cast<double>(width) / Panel::PanelWidth;
        return {static_cast<std::int32_t>(rect.CentreX() * scale),
            static_cast<std::int32_t>(rect.CentreY() * scale)};
    }

    /// Waits until the editor's window shows a picture.
    bool ShowsAPicture(xcb_window_t editor) {
        return Until([&] { return Colours(editor) > 20; });
    }
    /// How many colours there are in the window's upper left part.
    std::size_t Colours(xcb_window_t editor) {
        auto pixels = windows.Pixels(editor, 0, 0, 300, 200);
        std::sort(pixels.begin(), pixels.end());
        return static_cast<std::size_t>(std::unique(pixels.begin(), pixels.end()) - pixels.begin());
    }
    /// The window of an editor that the host has opened; it shows a picture.
    xcb_window_t OpenEditor(CEditorHost& host) {
        EXPECT_TRUE(host.Open(windows.Parent()));
        const auto editor = windows.Editor();
        EXPECT_NE(editor, 0u);
        EXPECT_TRUE(ShowsAPicture(editor));
        return editor;
    }
    /// What the editor's window shows where a widget is.
    std::vector<std::uint32_t> PictureOf(xcb_window_t editor, std::string_view name) {
        const auto& rect = Panel::RowOf(name).rect;
        return windows.Pixels(editor, static_cast<std::int32_t>(rect.x), static_cast<std::int32_t>(rect.y),
            static_cast<std::int32_t>(rect.w), static_cast<std::int32_t>(rect.h));
    }
    void MoveTo(SPoint point) { windows.MoveTo(point.x, point.y); }
    /// Presses the left button at a point and drags it, step by step, to another one.
    void Drag(SPoint from, std::int32_t dx, std::int32_t dy) {
        MoveTo(from);
        windows.Press(1);
        constexpr std::int32_t steps = 8;
        for (std::int32_t step = 1; step <= steps; ++step)
            windows.MoveTo(from.x + dx * step / steps, from.y + dy * step / steps);
    }
    /// The numbers of the pop-up windows that are shown now.
    std::vector<xcb_window_t> PopUps() {
        std::vector<xcb_window_t> shown;
        for (const auto window : windows.Children(windows.Root())) {
            if (window != windows.Top() && windows.IsViewable(window)) shown.push_back(window);
        }
        return shown;
    }
    std::vector<xcb_window_t> AwaitPopUp() {
        EXPECT_TRUE(Until([&] { return !PopUps().empty(); }));
        return PopUps();
    }

    CXTestHost windows;
    CLoadedLibrary library;
};

} // namespace KAV::Tests
