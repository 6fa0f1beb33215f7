#include "tests/native/x11_editor.h"

#include <cstdlib>
#include <cstring>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

namespace {

using Lines = std::vector<std::string>;
using Keys = std::vector<CXTestHost::SKey>;

/// What arrives at the host's window when a key is handed on.
CXTestHost::SKey Sent(CXTestHost& host, std::uint32_t symbol, bool down, std::uint16_t state = 0) {
    return {host.Top(), host.KeyCode(symbol), state, down, true};
}

/// Those that were sent, once the editor has handled all.
Keys SentKeys(CXTestHost& host, CX11Editor& editor) {
    editor.heard.lines = editor.Lines();
    Keys sent;
    for (const auto& key : host.Keys()) {
        if (key.sent) sent.push_back(key);
    }
    return sent;
}

void FocusEditor(CXTestHost& host, CX11Editor& editor) {
    host.MoveTo(10, 10);
    host.Click(1);
    ASSERT_TRUE(editor.Until([&] { return host.Focused() == editor.id; }));
    editor.Lines();
}

} // namespace

TEST(X11Keys, WithoutAUseAreHandedOnPressAndRelease) {
    CXTestHost host({.isFramed = true});
    CX11Editor editor(host);
    FocusEditor(host, editor);
    host.Type(XKB_KEY_space);
    EXPECT_EQ(
        SentKeys(host, editor), (Keys{Sent(host, XKB_KEY_space, true), Sent(host, XKB_KEY_space, false)}));
    EXPECT_EQ(editor.heard.Count("key"), 0);
}

TEST(X11Keys, AreHandedOnWithTheFocusElsewhereAndThePointerOverTheEditor) {
    CXTestHost host;
    CX11Editor editor(host);
    host.Focus(host.Top());
    host.MoveTo(10, 10);
    host.Type(XKB_KEY_space);
    EXPECT_EQ(SentKeys(host, editor).size(), 2u);
}

TEST(X11Keys, AreHandedToTheChildOfTheRootWithoutAWindowManager) {
    CXTestHost host({.hasManager = false, .isFramed = true});
    CX11Editor editor(host);
    FocusEditor(host, editor);
    host.Type(XKB_KEY_space);
    const auto sent = SentKeys(host, editor);
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].event, host.Frame());
}

TEST(X11Keys, AreHandedToTheWindowThatTheParentIsInNow) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto top = host.MakeWindow(host.Root(), 500, 100, 500, 400);
    host.Show(top, true);
    host.Reparent(host.Parent(), top, 5, 5);
    host.Show(host.Parent(), true);
    host.MarkAsTop(top);
    ASSERT_TRUE(editor.Until([&] { return editor.loop.HostWindow() == top; }));
    FocusEditor(host, editor);
    host.Type(XKB_KEY_space);
    const auto sent = SentKeys(host, editor);
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].event, top);
}

TEST(X11Keys, ThatWereSentAreNotHandedOnAgain) {
    CXTestHost host;
    CX11Editor editor(host);
    FocusEditor(host, editor);
    std::array<char, 32> message{};
    xcb_key_press_event_t event{};
    event.response_type = XCB_KEY_PRESS;
    event.detail = host.KeyCode(XKB_KEY_space);
    event.event = editor.id;
    event.root = host.Root();
    event.same_screen = 1;
    std::memcpy(message.data(), &event, sizeof(event));
    xcb_send_event(host.Connection(), 0, editor.id, XCB_EVENT_MASK_NO_EVENT, message.data());
    message[0] = XCB_KEY_RELEASE;
    xcb_send_event(host.Connection(), 0, editor.id, XCB_EVENT_MASK_NO_EVENT, message.data());
    EXPECT_EQ(SentKeys(host, editor), Keys{});
    host.Type(XKB_KEY_space); // a real one still is
    EXPECT_EQ(SentKeys(host, editor).size(), 2u);
}

TEST(X11Keys, OfUndoRedoAndHelpAreTheEditors) {
    CXTestHost host;
    CX11Editor editor(host);
    FocusEditor(host, editor);
    host.Type(XKB_KEY_F1);
    EXPECT_EQ(editor.Lines(), (Lines{"key 112 down", "key 112 up"}));
    EXPECT_EQ(SentKeys(host, editor), Keys{});
    host.Key(XKB_KEY_Control_L, true);
    host.Type(XKB_KEY_z);
    host.Type(XKB_KEY_y);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.Count("key 89 up") == 1; }));
    EXPECT_TRUE(editor.window->IsLeftControlDown());
    host.Key(XKB_KEY_Control_L, false);
    EXPECT_EQ(editor.Lines(), (Lines{"key 90 down", "key 90 up", "key 89 down", "key 89 up"}));
    EXPECT_FALSE(editor.window->IsLeftControlDown());
    for (const auto& key : SentKeys(host, editor)) EXPECT_EQ(key.code, host.KeyCode(XKB_KEY_Control_L));
}

TEST(X11Keys, OfUndoNeedTheLeftControlKey) {
    CXTestHost host;
    CX11Editor editor(host);
    FocusEditor(host, editor);
    host.Type(XKB_KEY_z);
    host.Key(XKB_KEY_Control_R, true);
    host.Type(XKB_KEY_z);
    host.Key(XKB_KEY_Control_R, false);
    const auto sent = SentKeys(host, editor);
    EXPECT_EQ(editor.heard.lines, Lines{});
    EXPECT_EQ(std::count_if(sent.begin(), sent.end(),
                  [&](const auto& key) { return key.code == host.KeyCode(XKB_KEY_z); }),
        4);
}

TEST(X11Keys, OfUndoLieWhereTheUsersLatinLayoutHasThem) {
    CXTestHost host;
    const auto command = "setxkbmap -display " + host.Display() + " gr,de";
    ASSERT_EQ(std::system(command.c_str()), 0); // NOLINT(concurrency-mt-unsafe)
    CX11Editor editor(host);
    FocusEditor(host, editor);
    host.Key(XKB_KEY_Control_L, true);
    host.Type(XKB_KEY_Greek_upsilon); // on the key of the German Z
    host.Key(XKB_KEY_Control_L, false);
    EXPECT_EQ(editor.Lines(), (Lines{"key 90 down", "key 90 up"}));
}

TEST(X11Keys, GoWhereTheirPressWentWhenTheyAreReleased) {
    CXTestHost host;
    CX11Editor editor(host);
    editor.heard.onTyped = [&] { editor.window->CloseTextBox(); };
    FocusEditor(host, editor);
    host.Key(XKB_KEY_space, true); // the host's
    editor.Lines();
    ASSERT_TRUE(editor.window->OpenTextBox({20, 20, 60, 18}, u"1.5", false));
    host.Key(XKB_KEY_space, false);
    EXPECT_EQ(SentKeys(host, editor).back(), Sent(host, XKB_KEY_space, false));
    host.Key(XKB_KEY_Return, true); // the box's, which it closes
    ASSERT_TRUE(editor.Until([&] { return editor.heard.Count("typed 1.5") == 1; }));
    host.Key(XKB_KEY_Return, false);
    EXPECT_EQ(SentKeys(host, editor).size(), 2u);
    host.Key(XKB_KEY_F1, true); // the editor's
    editor.Lines();
    ASSERT_TRUE(editor.window->OpenTextBox({20, 20, 60, 18}, u"1.5", false));
    host.Key(XKB_KEY_F1, false);
    EXPECT_EQ(editor.Lines(), Lines{"key 112 up"});
}

TEST(X11Keys, AreAllTheTextBoxsWhileItIsOpen) {
    CXTestHost host;
    CX11Editor editor(host);
    FocusEditor(host, editor);
    ASSERT_TRUE(editor.window->OpenTextBox({20, 20, 60, 18}, u"1.5", false));
    host.Type(XKB_KEY_7);
    host.Type(XKB_KEY_F1);
    host.Type(XKB_KEY_Escape);
    host.Key(XKB_KEY_Control_L, true);
    host.Type(XKB_KEY_z);
    host.Key(XKB_KEY_Control_L, false);
    EXPECT_EQ(SentKeys(host, editor), Keys{});
    EXPECT_EQ(editor.heard.lines, Lines{});
    EXPECT_EQ(editor.window->BoxText(), u"7");
}

TEST(X11Keys, AreTheHostsWhileAQuestionIsUp) {
    CXTestHost host;
    CX11Editor editor(host);
    FocusEditor(host, editor);
    CQuestion question;
    editor.loop.SetModal(&question);
    host.Type(XKB_KEY_F1);
    EXPECT_EQ(SentKeys(host, editor).size(), 2u);
    EXPECT_EQ(editor.heard.lines, Lines{});
    editor.loop.SetModal(nullptr);
}

// The menu

namespace {

const GUI::Menu TwoItems{{u"One", 11, false, true, false, {}}, {u"Two", 12, false, true, false, {}}};

std::size_t WindowsOfTheRoot(CXTestHost& host) {
    return host.Children(host.Root()).size();
}

} // namespace

TEST(X11WindowMenu, ReportsTheChoice) {
    CXTestHost host;
    CX11Editor editor(host);
    FocusEditor(host, editor);
    const auto before = WindowsOfTheRoot(host);
    editor.window->ShowMenu(TwoItems);
    EXPECT_TRUE(editor.Until([&] { return WindowsOfTheRoot(host) == before + 1; }));
    host.Type(XKB_KEY_Down);
    host.Type(XKB_KEY_Down);
    host.Type(XKB_KEY_Return);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.Count("command 12") == 1; }));
    EXPECT_TRUE(editor.Until([&] { return WindowsOfTheRoot(host) == before; }));
    EXPECT_EQ(SentKeys(host, editor), Keys{});
    EXPECT_EQ(editor.heard.Count("command"), 1);
}

TEST(X11WindowMenu, ReportsNothingWhenNothingIsChosen) {
    CXTestHost host;
    CX11Editor editor(host);
    FocusEditor(host, editor);
    const auto before = WindowsOfTheRoot(host);
    editor.window->ShowMenu(TwoItems);
    EXPECT_TRUE(editor.Until([&] { return WindowsOfTheRoot(host) == before + 1; }));
    host.Type(XKB_KEY_Escape);
    EXPECT_TRUE(editor.Until([&] { return WindowsOfTheRoot(host) == before; }));
    EXPECT_EQ(editor.Lines(), Lines{});
    editor.window->ShowMenu(TwoItems);
    EXPECT_TRUE(editor.Until([&] { return WindowsOfTheRoot(host) == before + 1; }));
    editor.window->CloseMenu();
    EXPECT_TRUE(editor.Until([&] { return WindowsOfTheRoot(host) == before; }));
    EXPECT_EQ(editor.Lines(), Lines{});
}

TEST(X11WindowMenu, EndsTheDragThatOpenedIt) {
    CXTestHost host;
    CX11Editor editor(host);
    editor.heard.onPress = [&] { editor.window->ShowMenu(TwoItems); };
    host.MoveTo(10, 10);
    host.Press(3);
    EXPECT_EQ(editor.Lines(), (Lines{"press 10,10 flags 2", "cancel"}));
    host.Release(3);
    EXPECT_EQ(editor.Lines(), Lines{});
}

TEST(X11WindowMenu, ClosesWhenTheHostHidesItsWindow) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto before = WindowsOfTheRoot(host);
    editor.window->ShowMenu(TwoItems);
    EXPECT_TRUE(editor.Until([&] { return WindowsOfTheRoot(host) == before + 1; }));
    host.Show(host.Top(), false);
    EXPECT_TRUE(editor.Until([&] { return WindowsOfTheRoot(host) == before; }));
    EXPECT_EQ(editor.heard.Count("command"), 0);
    editor.window->ShowMenu(TwoItems); // and doesn't open
    editor.Run();
    EXPECT_EQ(WindowsOfTheRoot(host), before);
}

TEST(X11WindowMenu, ClosesWhenAQuestionComesUpAndDoesNotOpenMeanwhile) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto before = WindowsOfTheRoot(host);
    editor.window->ShowMenu(TwoItems);
    EXPECT_TRUE(editor.Until([&] { return WindowsOfTheRoot(host) == before + 1; }));
    CQuestion question;
    editor.loop.SetModal(&question);
    EXPECT_TRUE(editor.Until([&] { return WindowsOfTheRoot(host) == before; }));
    editor.window->ShowMenu(TwoItems);
    editor.Run();
    EXPECT_EQ(WindowsOfTheRoot(host), before);
    editor.loop.SetModal(nullptr);
}

TEST(X11WindowMenu, GoesWithTheWindow) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto before = WindowsOfTheRoot(host);
    editor.window->ShowMenu(TwoItems);
    EXPECT_TRUE(editor.Until([&] { return WindowsOfTheRoot(host) == before + 1; }));
    editor.window->End();
    EXPECT_EQ(WindowsOfTheRoot(host), before);
    EXPECT_EQ(editor.heard.Count("command"), 0);
}

} // namespace KAV::Tests
