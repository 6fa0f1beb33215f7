#include "tests/native/x11_editor.h"

#include <cstring>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

namespace {

constexpr std::size_t LongAfterTheCheck = 15; // ticks, 0.25 s at least

void Press(CXTestHost& host, CX11Editor& editor) {
    host.MoveTo(10, 10);
    host.Click(1);
    ASSERT_TRUE(editor.Until([&] { return editor.heard.Count("release") == 1; }));
    editor.heard.lines.clear();
}

void OpenBox(CX11Editor& editor) {
    ASSERT_TRUE(editor.window->OpenTextBox({20, 20, 60, 18}, u"1.5", false));
    editor.Run(LongAfterTheCheck);
}

void SendFocusOut(CXTestHost& host, xcb_window_t window, std::uint8_t detail, std::uint8_t mode) {
    std::array<char, 32> message{};
    xcb_focus_out_event_t event{};
    event.response_type = XCB_FOCUS_OUT;
    event.detail = detail;
    event.event = window;
    event.mode = mode;
    std::memcpy(message.data(), &event, sizeof(event));
    xcb_send_event(host.Connection(), 0, window, 0, message.data());
    host.Sync();
}

} // namespace

TEST(X11Focus, IsTakenByAPressAndWouldGoToThePointer) {
    CXTestHost host;
    CX11Editor editor(host);
    host.Focus(host.Top());
    Press(host, editor);
    EXPECT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
    EXPECT_EQ(host.FocusReverts(), XCB_INPUT_FOCUS_POINTER_ROOT);
}

TEST(X11Focus, IsTakenWithTheTimeOfThePress) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(10, 10);
    host.Press(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(5)); // the display counts milliseconds
    // Later than the press, which the editor hasn't handled yet. It must not win by being later to the
    // display.
    const auto other = host.MakeWindow(host.Root(), 700, 400, 100, 100, true);
    host.Show(other, true);
    host.Focus(other);
    editor.Lines();
    EXPECT_EQ(host.Focused(), other);
    editor.Run(LongAfterTheCheck);
    EXPECT_EQ(host.Focused(), other); // nothing of the host's: it isn't taken back
}

TEST(X11Focus, IsTakenOnceMoreFromTheHostsWindow) {
    CXTestHost host({.isFramed = true});
    CX11Editor editor(host);
    Press(host, editor);
    ASSERT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
    host.Focus(host.Top()); // a window manager activates it
    EXPECT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
    host.Focus(host.Top()); // the user, later
    editor.Run(LongAfterTheCheck);
    EXPECT_EQ(host.Focused(), host.Top());
}

TEST(X11Focus, IsTakenOnceMoreWhenTheFirstRequestWasIgnored) {
    CXTestHost host;
    CX11Editor editor(host);
    host.MoveTo(10, 10);
    host.Press(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    host.Focus(host.Top()); // before the editor has seen the press, whose time is older then
    EXPECT_TRUE(editor.Until([&] { return editor.heard.Count("press") == 1; }));
    EXPECT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
    host.Release(1);
}

TEST(X11Focus, IsTakenOnceMoreFromAWindowInsideTheHosts) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto holder = host.MakeWindow(host.Top(), 0, 0, 1, 1);
    host.Show(holder, true);
    Press(host, editor);
    host.Focus(holder);
    EXPECT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
}

TEST(X11Focus, IsLeftToOtherPrograms) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto other = host.MakeWindow(host.Root(), 700, 400, 100, 100, true);
    host.Show(other, true);
    Press(host, editor);
    host.Focus(other);
    editor.Run(LongAfterTheCheck);
    EXPECT_EQ(host.Focused(), other);
}

TEST(X11Focus, GoesBackAtTheEndToTheWindowThatHadItFirst) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto holder = host.MakeWindow(host.Top(), 0, 0, 1, 1);
    host.Show(holder, true);
    host.Focus(holder);
    Press(host, editor);
    ASSERT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
    host.Focus(host.Top());
    editor.Run(LongAfterTheCheck);
    Press(host, editor); // a later one changes nothing
    ASSERT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
    editor.window->End();
    EXPECT_EQ(host.Focused(), holder);
}

TEST(X11Focus, GoesToTheHostsWindowAtTheEndIfTheFirstOneCannotHaveIt) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto holder = host.MakeWindow(host.Top(), 0, 0, 1, 1);
    host.Show(holder, true);
    host.Focus(holder);
    Press(host, editor);
    ASSERT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
    host.Show(holder, false);
    editor.window->End();
    EXPECT_EQ(host.Focused(), host.Top());
}

TEST(X11Focus, StaysWhereItIsAtTheEndIfItIsNotOurs) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto holder = host.MakeWindow(host.Top(), 0, 0, 1, 1);
    host.Show(holder, true);
    host.Focus(holder);
    Press(host, editor);
    editor.Run(LongAfterTheCheck);
    host.Focus(host.Top());
    editor.window->End();
    EXPECT_EQ(host.Focused(), host.Top());
}

TEST(X11Focus, IsNotTouchedAtTheEndWithoutAPress) {
    CXTestHost host;
    host.Focus(host.Top());
    {
        CX11Editor editor(host);
        editor.Run();
        EXPECT_EQ(host.Focused(), host.Top());
    }
    EXPECT_EQ(host.Focused(), host.Top());
}

TEST(X11Focus, OfATextBoxIsTheEditorsWindowsAndIsKeptAfterwards) {
    CXTestHost host;
    CX11Editor editor(host);
    host.Focus(host.Top());
    OpenBox(editor);
    EXPECT_EQ(host.Focused(), editor.id);
    host.Type(XKB_KEY_2);
    EXPECT_TRUE(editor.Until([&] { return editor.window->BoxText() == u"2"; }));
    editor.window->CloseTextBox();
    editor.Run(LongAfterTheCheck);
    EXPECT_EQ(host.Focused(), editor.id);
    EXPECT_EQ(editor.window->BoxText(), u"");
    EXPECT_EQ(editor.heard.Count("typed"), 0);
}

TEST(X11Focus, LostForGoodCommitsTheTextBox) {
    CXTestHost host;
    CX11Editor editor(host);
    editor.heard.onTyped = [&] { editor.window->CloseTextBox(); };
    OpenBox(editor);
    host.Focus(host.Top());
    EXPECT_TRUE(editor.Until([&] { return editor.heard.Count("typed 1.5") == 1; }));
    EXPECT_EQ(host.Focused(), host.Top());
    editor.Run();
    EXPECT_EQ(editor.heard.Count("typed"), 1);
}

TEST(X11Focus, LostToTheHostForAMomentKeepsTheTextBox) {
    CXTestHost host;
    CX11Editor editor(host);
    ASSERT_TRUE(editor.window->OpenTextBox({20, 20, 60, 18}, u"1.5", false));
    ASSERT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
    host.Focus(host.Top());
    EXPECT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
    editor.Run(LongAfterTheCheck);
    EXPECT_EQ(editor.heard.Count("typed"), 0);
    EXPECT_EQ(editor.window->BoxText(), u"1.5");
}

TEST(X11Focus, LostToAnotherProgramAtOnceCommitsTheTextBox) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto other = host.MakeWindow(host.Root(), 700, 400, 100, 100, true);
    host.Show(other, true);
    ASSERT_TRUE(editor.window->OpenTextBox({20, 20, 60, 18}, u"1.5", false));
    ASSERT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
    host.Focus(other);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.Count("typed 1.5") == 1; }));
}

TEST(X11Focus, LostToAGrabOrByThePointerIsNotLost) {
    CXTestHost host;
    CX11Editor editor(host);
    OpenBox(editor);
    xcb_grab_keyboard(
        host.Connection(), 0, host.Top(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    host.Sync();
    editor.Run();
    xcb_ungrab_keyboard(host.Connection(), XCB_CURRENT_TIME);
    host.Sync();
    SendFocusOut(host, editor.id, XCB_NOTIFY_DETAIL_POINTER, XCB_NOTIFY_MODE_NORMAL);
    editor.Run();
    EXPECT_EQ(editor.heard.Count("typed"), 0);
    SendFocusOut(host, editor.id, XCB_NOTIFY_DETAIL_NONLINEAR, XCB_NOTIFY_MODE_NORMAL); // this one counts
    EXPECT_TRUE(editor.Until([&] { return editor.heard.Count("typed") == 1; }));
}

TEST(X11Focus, LostWithTheHostsWindowClosesTheTextBoxUntyped) {
    CXTestHost host;
    CX11Editor editor(host);
    OpenBox(editor);
    host.Show(host.Top(), false);
    EXPECT_TRUE(editor.Until([&] { return editor.window->BoxText().empty(); }));
    editor.Run();
    EXPECT_EQ(editor.heard.Count("typed"), 0);
    EXPECT_FALSE(editor.window->OpenTextBox({20, 20, 60, 18}, u"1.5", false));
}

} // namespace KAV::Tests
