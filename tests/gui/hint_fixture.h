#pragma once

#include "gui/hint.h"
#include "tests/gui/recording_root.h"
#include "tests/support/recording_pictures.h"
#include "tests/support/recording_window.h"
#include "tests/support/toolkit_robot.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace KAV::Tests {

/// An editor with two widgets under a robot's pointer, and its hint.
class CHintTest : public testing::Test {
protected:
    static constexpr std::int32_t Width = 754;
    static constexpr std::int32_t Height = 553;

    CHintTest() { root.CreateGUIWindow(); }

    static GUI::SWidgetInfo Info(const char16_t* name, float x, float y, float w = 60, float h = 40) {
        GUI::SWidgetInfo info;
        info.sName = name;
        info.fX = x;
        info.fY = y;
        info.fW = w;
        info.fH = h;
        info.bInteractive = true;
        return info;
    }
    static GUI::SWidgetInfo HintInfo() {
        GUI::SWidgetInfo info;
        info.fW = 74;
        info.fH = 42;
        return info;
    }
    static GUI::SWidgetInfo SlowInfo() {
        auto info = HintInfo();
        info.nVisibleRiseMs = 200;
        info.nVisibleFallMs = 100;
        return info;
    }
    /// The pointer stays on the widget until the hint is there, and a picture of it is made.
    void Show(const GUI::CWidget& on) {
        const auto rect = on.PixelRect();
        robot.Move(rect.nL + 1, rect.nT + 1);
        hint.Advance(GUI::CHint::DelayMs);
        hint.PrepareDraw();
    }
    static constexpr float Character = CRecordingPictures::CharacterWidth;
    static constexpr float Line = CRecordingPictures::CharacterHeight;

    CRecordingWindow window;
    CRecordingPictures pictures;
    CRecordingRoot root{{&window, &pictures}, HintInfo()};
    GUI::CHint& hint = root.Hint();
    GUI::CWidget widget{root, Info(u"Widget", 100, 100)};
    GUI::CWidget other{root, Info(u"Another one", 300, 200)};
    CToolkitRobot robot{window};
};

} // namespace KAV::Tests
