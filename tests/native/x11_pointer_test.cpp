#include "tests/native/x11_editor.h"

#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

using Lines = std::vector<std::string>;

TEST(X11Pointer, ReportsPressesMovesAndReleasesByTheWindowsPixels) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(10, 20);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.lastMove == "10,20 flags 0"; }));
    host.Press(1);
    host.MoveTo(30, 40);
    host.Release(1);
    EXPECT_EQ(editor.Lines(), (Lines{"press 10,20 flags 1", "release 30,40 flags 1"}));
    EXPECT_EQ(editor.heard.lastMove, "30,40 flags 1");
    host.Click(3);
    EXPECT_EQ(editor.Lines(), (Lines{"press 30,40 flags 2", "release 30,40 flags 2"}));
}

TEST(X11Pointer, ReportsBothButtonsOfAPressAndOneOfARelease) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(5, 6);
    host.Press(1);
    host.Press(3);
    host.Release(1);
    host.Release(3);
    EXPECT_EQ(editor.Lines(),
        (Lines{"press 5,6 flags 1", "press 5,6 flags 3", "release 5,6 flags 1", "release 5,6 flags 2"}));
}

TEST(X11Pointer, ReportsShiftAndControl) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(5, 6);
    EXPECT_FALSE(editor.window->IsShiftDown());
    host.Key(XKB_KEY_Shift_L, true);
    host.Click(1);
    EXPECT_EQ(editor.Lines(), (Lines{"press 5,6 flags 5", "release 5,6 flags 5"}));
    EXPECT_TRUE(editor.window->IsShiftDown());
    host.Key(XKB_KEY_Shift_L, false);
    host.Key(XKB_KEY_Control_R, true);
    host.Click(1);
    host.MoveTo(7, 8);
    EXPECT_EQ(editor.Lines(), (Lines{"press 5,6 flags 9", "release 5,6 flags 9"}));
    EXPECT_EQ(editor.heard.lastMove, "7,8 flags 8");
    EXPECT_FALSE(editor.window->IsShiftDown());
    EXPECT_FALSE(editor.window->IsLeftControlDown());
    host.Key(XKB_KEY_Control_R, false);
}

TEST(X11Pointer, ReportsTheLeftControlKeyThatWentDownElsewhere) {
    CXTestHost host;
    CX11Editor editor(host); // the pointer and the focus are the host's
    host.Focus(host.Top());
    host.Key(XKB_KEY_Control_L, true);
    host.MoveTo(5, 6);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.lastMove == "5,6 flags 8"; }));
    EXPECT_TRUE(editor.window->IsLeftControlDown());
    host.MoveTo(300, 250);
    host.Key(XKB_KEY_Control_L, false);
    host.MoveTo(7, 8);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.lastMove == "7,8 flags 0"; }));
    EXPECT_FALSE(editor.window->IsLeftControlDown());
}

TEST(X11Pointer, ReportsTheDisplaysTimeOfAPress) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(300, 250);
    host.Click(1); // the host's own window gets these
    host.MoveTo(5, 6);
    host.Click(1);
    host.MoveTo(300, 250);
    host.Click(1);
    editor.Lines();
    const auto buttons = host.Buttons();
    ASSERT_EQ(buttons.size(), 4u);
    EXPECT_GE(editor.heard.pressMs, buttons[1].time);
    EXPECT_LE(editor.heard.pressMs, buttons[2].time);
}

TEST(X11Pointer, TurnsTheWheelByNotchesAndIgnoresWhatTurnsSideways) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(5, 6);
    host.Click(4);
    host.Click(5);
    host.Click(6);
    host.Click(7);
    host.Click(2);
    host.Click(8);
    EXPECT_EQ(editor.Lines(), (Lines{"wheel 1 flags 0", "wheel -1 flags 0"}));
    host.Key(XKB_KEY_Shift_L, true);
    host.Press(1);
    host.Click(4);
    host.Release(1);
    host.Key(XKB_KEY_Shift_L, false);
    EXPECT_EQ(editor.Lines(), (Lines{"press 5,6 flags 5", "wheel 1 flags 5", "release 5,6 flags 5"}));
}

TEST(X11Pointer, FollowsADragOutOfTheWindow) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(10, 10);
    host.Press(1);
    host.MoveTo(260, -20);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.lastMove == "260,-20 flags 1"; }));
    host.Release(1);
    EXPECT_EQ(editor.Lines(), (Lines{"press 10,10 flags 1", "release 260,-20 flags 1"}));
    EXPECT_TRUE(host.Buttons().empty());
}

TEST(X11Pointer, TellsOnceThatItHasLeftIfThatIsAskedFor) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(10, 10);
    host.MoveTo(300, 250);
    EXPECT_EQ(editor.Lines(), Lines{}); // nobody has asked
    host.MoveTo(10, 10);
    editor.Lines();
    editor.window->TrackLeave();
    EXPECT_EQ(editor.Lines(), Lines{});
    host.MoveTo(300, 250);
    EXPECT_EQ(editor.Lines(), Lines{"leave"});
    host.MoveTo(10, 10);
    host.MoveTo(300, 250);
    EXPECT_EQ(editor.Lines(), Lines{});
}

TEST(X11Pointer, TellsThatItHasLeftWhenTheDragIsOver) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(10, 10);
    editor.Lines();
    editor.window->TrackLeave();
    host.Press(1);
    host.MoveTo(300, 250);
    EXPECT_EQ(editor.Lines(), Lines{"press 10,10 flags 1"});
    host.Release(1);
    EXPECT_EQ(editor.Lines(), (Lines{"release 300,250 flags 1", "leave"}));
}

TEST(X11Pointer, TellsAtOnceThatItHasLeftIfItHasAlready) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(10, 10);
    host.MoveTo(300, 250);
    editor.Lines();
    editor.window->TrackLeave();
    EXPECT_EQ(editor.Lines(), Lines{"leave"});
}

TEST(X11Pointer, IsGrabbedWithoutAButtonAsWell) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(10, 10);
    editor.Lines();
    editor.window->Capture(true);
    editor.Lines();
    host.MoveTo(300, 250);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.lastMove == "300,250 flags 0"; }));
    editor.window->Capture(false);
    editor.Lines();
    editor.heard.lastMove.clear();
    host.MoveTo(310, 260);
    editor.Lines();
    EXPECT_EQ(editor.heard.lastMove, "");
}

TEST(X11Pointer, IsNotNeededToBeGrabbed) {
    CXTestHost host;
    CX11Editor editor(host);
    xcb_grab_pointer(host.Connection(), 0, host.Top(), 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, 0, 0,
        XCB_CURRENT_TIME);
    host.Sync();
    editor.window->Capture(true);
    editor.Run();
    editor.window->Capture(false);
    xcb_ungrab_pointer(host.Connection(), XCB_CURRENT_TIME);
    host.Sync();
    host.MoveTo(10, 10);
    host.Click(1);
    EXPECT_EQ(editor.Lines(), (Lines{"press 10,10 flags 1", "release 10,10 flags 1"}));
}

TEST(X11Pointer, EndsADragWhenTheHostHidesItsWindow) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(10, 10);
    host.Press(1);
    editor.Lines();
    host.Show(host.Top(), false);
    EXPECT_EQ(editor.Lines(), Lines{"cancel"});
    host.Show(host.Top(), true);
    host.Release(1);
    EXPECT_EQ(editor.Lines(), Lines{}); // the drag was over
    host.Show(host.Top(), false);
    EXPECT_EQ(editor.Lines(), Lines{});
}

TEST(X11Pointer, EndsADragWhenAWindowIsHiddenThatTheParentWasPutInLater) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto top = host.MakeWindow(host.Root(), 500, 100, 500, 400);
    const auto socket = host.MakeWindow(top, 10, 10, 450, 350);
    host.Show(socket, true);
    host.Show(top, true);
    host.Reparent(host.Parent(), socket, 5, 5);
    host.Show(host.Parent(), true);
    ASSERT_TRUE(editor.Until([&] { return editor.loop.HostWindow() == top; }));
    for (const auto hidden : {socket, top}) {
        host.MoveTo(10, 10);
        host.Press(1);
        EXPECT_EQ(editor.Lines(), Lines{"press 10,10 flags 1"});
        host.Show(hidden, false);
        EXPECT_EQ(editor.Lines(), Lines{"cancel"});
        host.Release(1);
        host.Show(hidden, true);
        editor.Lines();
    }
    // What it is no longer in doesn't matter.
    host.MoveTo(10, 10);
    host.Press(1);
    host.Show(host.Top(), false);
    host.Release(1);
    EXPECT_EQ(editor.Lines(), (Lines{"press 10,10 flags 1", "release 10,10 flags 1"}));
}

TEST(X11Pointer, TakesNothingWhileAQuestionIsUp) {
    CXTestHost host;
    CX11Editor editor(host);
    CQuestion question;
    editor.loop.SetModal(&question);
    host.Focus(host.Top());
    host.MoveTo(10, 10);
    host.Click(1);
    host.Click(3);
    EXPECT_EQ(editor.Lines(), Lines{});
    EXPECT_EQ(question.raised, 2);
    host.Click(4);
    host.Click(5);
    EXPECT_EQ(editor.Lines(), Lines{});
    EXPECT_EQ(question.raised, 2);
    EXPECT_EQ(host.Focused(), host.Top());
    editor.loop.SetModal(nullptr);
    host.Click(1);
    EXPECT_EQ(editor.Lines(), (Lines{"press 10,10 flags 1", "release 10,10 flags 1"}));
}

TEST(X11Pointer, EndsADragWhenAQuestionComesUp) {
    CXTestHost host;
    CX11Editor editor(host);
    CQuestion question;
    host.MoveTo(10, 10);
    host.Press(1);
    editor.Lines();
    editor.loop.SetModal(&question);
    EXPECT_EQ(editor.Lines(), Lines{"cancel"});
    host.Release(1);
    EXPECT_EQ(editor.Lines(), Lines{});
    EXPECT_EQ(question.raised, 0);
    editor.loop.SetModal(nullptr);
}

TEST(X11Cursors, AreAnArrowADoubleArrowAndADiagonal) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(10, 10);
    const auto look = [&](GUI::ECursor cursor) {
        editor.window->SetCursor(cursor);
        editor.Lines();
        return host.PointerLook();
    };
    const auto outside = host.PointerLook();
    const auto arrow = look(GUI::ECursor::Arrow);
    const auto width = look(GUI::ECursor::SizeWidth);
    const auto both = look(GUI::ECursor::SizeBoth);
    EXPECT_GT(arrow.height, arrow.width);
    EXPECT_GT(4 * width.width, 5 * width.height); // flat
    EXPECT_LT(4 * both.width, 5 * both.height);   // about square
    EXPECT_LT(4 * both.height, 5 * both.width);
    EXPECT_NE(arrow, outside);
    EXPECT_NE(arrow, both);
    EXPECT_EQ(look(GUI::ECursor::Arrow), arrow);
    EXPECT_EQ(look(GUI::ECursor::SizeWidth), width);
}

} // namespace KAV::Tests
