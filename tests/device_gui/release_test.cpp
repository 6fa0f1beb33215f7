// The release time: its exponential law, and how Auto Release locks it.

#include "device_gui/release.h"

#include "device/parameter_table.h"
#include "tests/device_gui/open_panel.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class Release : public OpenPanel {
protected:
    const std::int32_t release = HostIndexOf(36);
    const std::int32_t automatic = HostIndexOf(35);

    CRelease& Fader() { return Widget<CRelease>(); }
    CAutoRelease& Auto() { return Widget<CAutoRelease>(); }
    float Value() { return effect->Get(release); }
    void OpenBox() { Click(Fader(), GUI::MouseRight); }
    std::u16string BoxText() { return window.textBox ? window.textBox->text : u"no box"; }
    /// The colours by which the fader is drawn, whether it reacts to the pointer or not.
    void ExpectAlpha(std::uint32_t alpha) {
        const std::uint32_t colour = alpha << 24 | 0xFFFFFFu;
        EXPECT_EQ(Fader().nColor, colour);
        EXPECT_EQ(Fader().nColorHover, colour);
        EXPECT_EQ(Fader().nColorInactive, colour);
        EXPECT_EQ(Fader().nTextColor, colour);
    }
    /// Everything that a hand can do to the fader.
    void Handle() {
        const auto [x, y] = MiddleOf(Fader());
        robot.Drag({x, y}, {x, y - 40});
        Click(Fader(), GUI::MouseLeft | GUI::MouseControl);
        Click(Fader(), GUI::MouseLeft | GUI::MouseShift);
        Click(Fader(), GUI::MouseLeft | GUI::MouseDouble);
        Click(Fader(), GUI::MouseRight);
        Wheel(Fader(), 1.0f);
        Wheel(Fader(), -1.0f, GUI::MouseShift);
    }
};

} // namespace

TEST_F(Release, SaysItsTimeWithTwoDecimals) {
    struct SCase {
        float value;
        std::u16string text;
    };
    for (const auto& [value, text] : {SCase{0.4f, u"1.00"}, SCase{1.0f, u"1000.00"}, SCase{0.0f, u"0.01"},
             SCase{0.6f, u"10.00"}, SCase{0.9f, u"316.23"}}) {
        effect->Set(release, value);
        robot.Tick();
        EXPECT_EQ(Fader().GetText(true), text);
        EXPECT_EQ(Fader().GetText(false), u"Release: " + text + u" ms");
    }
    window.shift = true; // which gives other faders one more
    effect->Set(release, 0.4f);
    robot.Tick();
    EXPECT_EQ(Fader().GetText(true), u"1.00");
}

TEST_F(Release, SaysItsFirstTimeBeforeAnyChange) {
    EXPECT_EQ(Fader().GetText(false), u"Release: 1.00 ms");
}

TEST_F(Release, TakesATypedTimeByTheSameLaw) {
    struct SCase {
        std::u16string_view typed;
        double value;
    };
    for (const auto& [typed, value] :
        {SCase{u"10", 0.6}, SCase{u"0.01", 0.0}, SCase{u"1000", 1.0}, SCase{u"0.001", 0.0},
            SCase{u"5000", 1.0}, SCase{u"0", 0.0}, SCase{u"-5", 0.0}, SCase{u"--", 0.0},
            SCase{u"2.5", 1 + std::log10(0.0025) / 5}, SCase{u"99999999999999999999999999999999999", 1.0}}) {
        effect->Set(release, 0.5f);
        robot.Tick();
        OpenBox();
        ASSERT_TRUE(window.textBox);
        TypeOver(typed);
        EXPECT_NEAR(Value(), value, 1e-6) << Utils::ToUtf8(typed);
    }
}

TEST_F(Release, AnUnchangedTextLeavesTheTime) {
    for (const float value : {0.4f, 0.0f, 0.2f, 0.6f, 1.0f}) {
        effect->Set(release, value);
        robot.Tick();
        OpenBox();
        robot.Enter();
        EXPECT_NEAR(Value(), value, 1e-6);
    }
}

TEST_F(Release, ItsPlainValueIsTheTime) {
    effect->Set(release, 0.8f);
    robot.Tick();
    EXPECT_NEAR(Fader().GetPlain(), 100.0f, 1e-3f);
    EXPECT_NEAR(Fader().ToNormal(100.0f), 0.8f, 1e-6f);
    EXPECT_EQ(Fader().ToNormal(std::numeric_limits<float>::quiet_NaN()), 0.0f);
    EXPECT_EQ(Fader().ToNormal(std::numeric_limits<float>::infinity()), 1.0f);
    EXPECT_EQ(Fader().ToNormal(-std::numeric_limits<float>::infinity()), 0.0f);
}

TEST_F(Release, IsDraggedWheeledAndResetAsAnEditEach) {
    const auto [x, y] = MiddleOf(Fader());
    const auto edit = [this] {
        const auto index = std::to_string(release);
        return Lines{"begin " + index, index + " = " + std::to_string(Value()), "end " + index};
    };
    robot.Drag({x, y}, {x, y - 50}, 1);
    EXPECT_NEAR(Value(), 0.5, 1e-6);
    EXPECT_EQ(Told(), edit());
    Wheel(Fader(), 1.0f);
    EXPECT_NEAR(Value(), 0.52, 1e-6);
    EXPECT_EQ(Told(), edit());
    Click(Fader(), GUI::MouseLeft | GUI::MouseControl);
    EXPECT_EQ(Value(), 0.4f);
    EXPECT_EQ(Told(), edit());
}

TEST_F(Release, TypedAndDraggedTimesAreUndone) {
    OpenBox();
    TypeOver(u"10");
    const auto [x, y] = MiddleOf(Fader());
    robot.Drag({x, y}, {x, y - 50}, 5);
    EXPECT_NEAR(Value(), 0.7, 1e-6);
    Gui().Undo();
    EXPECT_NEAR(Value(), 0.6, 1e-6);
    Gui().Undo();
    EXPECT_EQ(Value(), 0.4f);
    Gui().Redo();
    EXPECT_NEAR(Value(), 0.6, 1e-6);
    robot.Tick();
    EXPECT_EQ(Fader().GetText(true), u"10.00");
}

TEST_F(Release, FadesToHalfWhileAutoReleaseIsOn) {
    EXPECT_TRUE(Fader().bInteractive);
    ExpectAlpha(255);
    Click(Auto());
    EXPECT_FALSE(Fader().bInteractive);
    bool half = false;
    std::uint32_t last = 255;
    for (int n = 0; n < 20; ++n) {
        robot.Tick();
        const std::uint32_t alpha = Fader().nColor >> 24;
        EXPECT_LE(alpha, last);
        half = half || (alpha > 127 + 30 && alpha < 255 - 30);
        last = alpha;
    }
    EXPECT_TRUE(half) << "on its way";
    ExpectAlpha(127);
    const auto picture = Picture();
    EXPECT_GT(std::count_if(picture.begin(), picture.end(),
                  [](const std::string& line) { return line.find("colour 7FFFFFFF") != std::string::npos; }),
        0);
    Click(Auto());
    EXPECT_TRUE(Fader().bInteractive);
    robot.Advance(300);
    ExpectAlpha(255);
}

TEST_F(Release, TakesAQuarterOfASecondToFade) {
    Click(Auto());
    Fader().Tick(125);
    ExpectAlpha(static_cast<std::uint32_t>((0.5 + 1) * 0.5 * 255));
    Fader().Tick(124);
    EXPECT_GT(Fader().nColor >> 24, 127u);
    Fader().Tick(1);
    ExpectAlpha(127);
}

TEST_F(Release, FollowsAnAutomatedAutoRelease) {
    effect->Set(automatic, 1.0f);
    robot.Advance(300);
    EXPECT_FALSE(Fader().bInteractive);
    ExpectAlpha(127);
    effect->Set(automatic, 0.0f);
    robot.Advance(300);
    EXPECT_TRUE(Fader().bInteractive);
    ExpectAlpha(255);
}

TEST_F(Release, FollowsAutoReleaseThroughUndoAndRedo) {
    effect->Set(automatic, 1.0f);
    robot.Tick();
    Auto().SetValue(0.0f, true);
    EXPECT_TRUE(Fader().bInteractive);
    Gui().Undo();
    EXPECT_FALSE(Fader().bInteractive);
    Gui().Redo();
    EXPECT_TRUE(Fader().bInteractive);
}

TEST_F(Release, FollowsAPatchThatIsLoadedWhileTheEditorIsClosed) {
    effect->Set(automatic, 1.0f);
    auto chunk = Chunk(false);
    effect->Set(automatic, 0.0f);
    Close();
    ASSERT_TRUE(SetChunk(chunk, false));
    Open();
    robot.Advance(500);
    EXPECT_FALSE(Fader().bInteractive);
    ExpectAlpha(127);
}

TEST_F(Release, FollowsTheGroupThatIsShown) {
    effect->Set(HostIndexOf(135), 1.0f);
    robot.Tick();
    EXPECT_TRUE(Fader().bInteractive);
    Device().SetCurrentGroup(1);
    robot.Tick();
    EXPECT_FALSE(Fader().bInteractive);
}

TEST_F(Release, CannotBeMovedByHandWhileAutoReleaseIsOn) {
    effect->Set(automatic, 1.0f);
    robot.Advance(300);
    Told();
    Handle();
    EXPECT_EQ(Told(), Lines{});
    EXPECT_FALSE(window.textBox);
    EXPECT_EQ(Value(), 0.4f);
    effect->Set(release, 0.7f);
    robot.Tick();
    EXPECT_EQ(Fader().Value(), 0.7f) << "the host can";
    effect->Set(automatic, 0.0f);
    robot.Tick();
    Told();
    Wheel(Fader(), -1.0f);
    EXPECT_NEAR(Value(), 0.68, 1e-6);
}

TEST_F(Release, AWheelUnderAPointerThatRestsDoesNothingEither) {
    Point(Fader());
    effect->Set(automatic, 1.0f);
    robot.Tick();
    Told();
    robot.Wheel(1.0f);
    EXPECT_EQ(Told(), Lines{});
    EXPECT_EQ(Value(), 0.4f);
}

TEST_F(Release, AutomationOfAutoReleaseEndsADrag) {
    const auto [x, y] = MiddleOf(Fader());
    robot.Press(x, y);
    robot.Move(x, y - 50);
    effect->Set(automatic, 1.0f);
    robot.Tick();
    robot.Move(x, y - 200);
    EXPECT_NEAR(Value(), 0.5, 1e-6) << "the hand has lost it";
    robot.Release(x, y - 200);
    EXPECT_NEAR(Value(), 0.5, 1e-6);
    const auto told = Told();
    const auto index = std::to_string(release);
    EXPECT_EQ(std::count(told.begin(), told.end(), "begin " + index), 1);
    EXPECT_EQ(std::count(told.begin(), told.end(), "end " + index), 1);
    effect->Set(release, 0.25f);
    robot.Tick();
    EXPECT_EQ(Fader().Value(), 0.25f) << "it listens to the host again";
}

TEST_F(Release, AutomationOfAutoReleaseClosesItsTextBox) {
    OpenBox();
    robot.Type(u"500");
    effect->Set(automatic, 1.0f);
    robot.Tick();
    EXPECT_FALSE(window.textBox);
    EXPECT_EQ(Value(), 0.4f);
}

TEST_F(Release, AutomationOfAutoReleaseLeavesOtherTextBoxesOpen) {
    Click(Named(u"Threshold"), GUI::MouseRight);
    ASSERT_TRUE(window.textBox);
    effect->Set(automatic, 1.0f);
    robot.Tick();
    EXPECT_TRUE(window.textBox);
}
