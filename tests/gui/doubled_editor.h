#pragma once

#include "tests/gui/recording_root.h"
#include "tests/support/own_renderers.h"
#include "tests/support/recording_pictures.h"
#include "tests/support/recording_window.h"
#include "tests/support/toolkit_robot.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace KAV::Tests {

using Lines = std::vector<std::string>;

/// An open editor of 600 by 400 pixels whose window, renderer, pictures, clock and device are doubles, and a
/// person at it.
class DoubledEditor : public testing::Test {
protected:
    COwnRenderers renderers;
    CRecordingWindow window;
    CRecordingPictures pictures;
    CRecordingRoot root{{&window, &pictures}};
    CToolkitRobot robot{window};

    void SetUp() override {
        root.CreateGUIWindow();
        root.Resize(600, 400);
        ASSERT_TRUE(root.Screen().Create());
        root.Show(true);
        root.EnableHistory(true);
        ASSERT_NE(window.client, nullptr);
        root.told.clear();
        window.lines.clear();
    }

    /// A widget at 100, 50 of 40 by 20 pixels.
    static GUI::SWidgetInfo Info(std::int32_t id, float value = 0.0f, std::u16string_view list = {}) {
        auto info = WidgetInfo(id, value);
        info.sName = u"Name";
        info.fX = 100.0f;
        info.fY = 50.0f;
        info.fW = 40.0f;
        info.fH = 20.0f;
        info.sList = list;
        return info;
    }
    /// What a widget draws, without the making of textures.
    Lines Draws(GUI::CWidget& widget) {
        renderers.Calls().clear();
        widget.Draw(0);
        Lines draws;
        for (const auto& line : renderers.Calls()) {
            if (line.starts_with("Draw")) draws.push_back(line);
        }
        return draws;
    }
    /// What the device has heard since this was asked last.
    Lines Told() { return std::exchange(root.told, {}); }
    bool IsRedrawDue() { return root.Frame().IsRedrawDue(); }
    /// As if a frame had just been drawn.
    void Redraw() { root.Render(0); }
    std::size_t LiveTextures() { return renderers.Live().LiveTextures().size(); }
};

// The middle of the widget.
inline constexpr std::int32_t MidX = 120;
inline constexpr std::int32_t MidY = 60;

} // namespace KAV::Tests
