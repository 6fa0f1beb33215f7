// What a person does to momentary buttons, and how they look then.

#include "gui/button_mom.h"
#include "tests/gui/clicked_editor.h"

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

using ButtonMom = ClickedEditor;

} // namespace

TEST_F(ButtonMom, GoesThroughItsListInACircle) {
    CButtonMom button(root, Info(5, 0.0f, u"a||b||c"));
    Lines told;
    for (int n = 0; n < 3; ++n) {
        robot.Click(MidX, MidY);
        const auto lines = Told();
        told.insert(told.end(), lines.begin(), lines.end());
    }
    EXPECT_EQ(told, (Lines{"begin 5", "5 = 0.500", "end 5", "begin 5", "5 = 1.000", "end 5", "begin 5",
                        "5 = 0.000", "end 5"}));
    EXPECT_EQ(root.Records(), 3u);
    root.Undo();
    EXPECT_EQ(button.Item(), 2);
    EXPECT_EQ(root.Hint().nWaitMs, 500u);
}

TEST_F(ButtonMom, WithoutAListChangesNothing) {
    CButtonMom button(root, Info(5, 0.25f));
    robot.Click(MidX, MidY);
    EXPECT_EQ(Told(), (Lines{"begin 5", "end 5"}));
    EXPECT_EQ(button.Value(), 0.25f);
    robot.Wheel(1.0f);
    robot.Wheel(-1.0f);
    EXPECT_TRUE(Told().empty());
    EXPECT_EQ(button.GetText(false), u"Name");
    EXPECT_EQ(button.GetText(true), u"");
    CButtonMom unbound(root, At(200, -1));
    robot.Click(220, MidY);
    EXPECT_TRUE(Told().empty());
}

TEST_F(ButtonMom, ItsTextIsItsItem) {
    CButtonMom button(root, Info(5, 0.5f, u"a||b||c"));
    EXPECT_EQ(button.GetText(false), u"Name: b");
    EXPECT_EQ(button.GetText(true), u"b");
}

TEST_F(ButtonMom, LooksPressedWhileItIs) {
    CButtonMom button(root, Info(5));
    button.piOnClick = &clicks;
    button.sValue.nRiseMs = 100;
    button.sValue.nFallMs = 50;
    button.Tick(1);
    robot.Press(MidX, MidY);
    Redraw();
    EXPECT_EQ(button.GetDrawValue(), 0.0f);
    button.Tick(50);
    EXPECT_TRUE(IsRedrawDue());
    EXPECT_EQ(button.GetDrawValue(), 0.5f);
    button.Tick(50);
    EXPECT_EQ(button.GetDrawValue(), 1.0f);
    robot.Release(MidX, MidY);
    EXPECT_EQ(clicks.buttons.size(), 1u);
    button.Tick(25);
    EXPECT_EQ(button.GetDrawValue(), 0.5f);
}

TEST_F(ButtonMom, LosesItsPressedLookWithoutAClick) {
    CButtonMom button(root, Info(5));
    button.piOnClick = &clicks;
    robot.Press(MidX, MidY);
    EXPECT_EQ(button.sPress.fTarget, 1.0f);
    robot.Release(MidX, MidY, MouseRight);
    EXPECT_EQ(button.sPress.fTarget, 0.0f);
    robot.Press(MidX, MidY);
    robot.Press(500, 300);
    EXPECT_EQ(button.sPress.fTarget, 0.0f);
    robot.Release(500, 300);
    robot.Press(MidX, MidY);
    root.Show(false);
    EXPECT_EQ(button.sPress.fTarget, 0.0f);
    root.Show(true);
    robot.Release(MidX, MidY);
    robot.Press(MidX, MidY);
    window.client->OnCancel();
    EXPECT_EQ(button.sPress.fTarget, 0.0f);
    robot.Click(MidX, MidY, MouseRight);
    button.OnMouseDown(MidX, MidY, MouseLeft);
    button.OnCaptureLost();
    button.OnMouseUp(MidX, MidY, MouseLeft);
    EXPECT_TRUE(clicks.buttons.empty());
}
