#include "native/linux/x11_text_box.h"
#include "tests/native/overlay_fixture.h"
#include "tests/support/generic_event.h"
#include "tests/support/hand_clock.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

namespace {

using Native::CX11TextBox;

constexpr GUI::SPixelRect Place{50, 40, 120, 15};

class X11TextBox : public COverlayFixture {
protected:
    Native::IX11Overlay* Overlay() override { return _box.get(); }

    void Open(std::u16string_view text, bool numbersOnly = false) {
        _box = CX11TextBox::Open(*_display, _editor, Place, text, numbersOnly, [this] {
            ++_committed;
            _text = _box->Text();
            if (_closes) _box.reset();
        });
        ASSERT_NE(_box, nullptr);
        Pump();
        const auto children = _host.Children(_editor);
        ASSERT_EQ(children.size(), 1u);
        _window = children[0];
    }
    std::vector<std::uint32_t> Shown() {
        Sync();
        return _host.Pixels(_window, 0, 0, Place.nW, Place.nH);
    }
    void TypeText(std::string_view text) {
        for (const char character : text) Type(static_cast<std::uint32_t>(character));
    }
    /// The display has that layout from now on, and its connection has heard of it.
    void Choose(const std::string& layout) {
        const auto command = "setxkbmap -display " + _host.Display() + " " + layout;
        EXPECT_EQ(std::system(command.c_str()), 0) << command; // NOLINT(concurrency-mt-unsafe)
        Pump();
    }
    /// A point of the box.
    void MoveInBox(std::int32_t x) {
        _host.MoveTo(Place.nL + x, Place.nT + Place.nH / 2);
        Pump();
    }
    std::u16string Text() const { return _box->Text(); }

    std::unique_ptr<CX11TextBox> _box;
    xcb_window_t _window = 0;
    int _committed = 0;
    bool _closes = true;  // at the commit
    std::u16string _text; // that was committed
};

/// Another program that owns the clipboard.
class COtherOwner final {
public:
    explicit COtherOwner(CXTestHost& host) : _host(host), _connection(host.Connection()) {
        _window = host.MakeWindow(host.Root(), 0, 0, 1, 1);
        Take();
    }
    void Take() {
        xcb_set_selection_owner(_connection, _window, _host.Atom("CLIPBOARD"), XCB_CURRENT_TIME);
        _host.Sync();
    }
    xcb_window_t Window() const { return _window; }

    CXTestHost& _host;
    xcb_connection_t* _connection;
    xcb_window_t _window = 0;
};

} // namespace

TEST_F(X11TextBox, StandsInItsPlaceWithAllSelected) {
    Open(u"Voice");
    const auto place = _host.Place(_window);
    EXPECT_EQ(place.x, Place.nL);
    EXPECT_EQ(place.y, Place.nT);
    EXPECT_EQ(place.width, Place.nW);
    EXPECT_EQ(place.height, Place.nH);
    EXPECT_TRUE(_host.IsViewable(_window));
    Type(XKB_KEY_b);
    EXPECT_EQ(Text(), u"b");
}

TEST_F(X11TextBox, TypingIsShown) {
    Open(u"");
    const auto empty = Shown();
    TypeText("voice");
    EXPECT_EQ(Text(), u"voice");
    EXPECT_NE(Shown(), empty);
    EXPECT_EQ(Passed(XCB_KEY_PRESS), 0) << "the host gets none of it";
    EXPECT_EQ(Passed(XCB_KEY_RELEASE), 0);
}

TEST_F(X11TextBox, ReturnAndEnterOfTheKeypadCommitOnce) {
    for (const auto symbol : {std::uint32_t{XKB_KEY_Return}, std::uint32_t{XKB_KEY_KP_Enter}}) {
        _committed = 0;
        Open(u"a");
        Type(XKB_KEY_b);
        Type(symbol);
        EXPECT_EQ(_committed, 1);
        EXPECT_EQ(_text, u"b");
        EXPECT_TRUE(_host.Children(_editor).empty());
    }
}

TEST_F(X11TextBox, LossOfTheFocusCommitsOnce) {
    _closes = false;
    Open(u"a");
    Type(XKB_KEY_b);
    _box->OnFocusLost();
    _box->OnFocusLost();
    Type(XKB_KEY_Return);
    EXPECT_EQ(_committed, 1);
    EXPECT_EQ(_text, u"b");
    Type(XKB_KEY_c);
    EXPECT_EQ(Text(), u"b") << "nothing changes what is committed";
}

TEST_F(X11TextBox, EscapeDoesNothing) {
    Open(u"abc");
    Type(XKB_KEY_Right);
    Type(XKB_KEY_Escape);
    Type(XKB_KEY_d);
    EXPECT_EQ(Text(), u"abcd");
    EXPECT_EQ(_committed, 0);
}

TEST_F(X11TextBox, ArrowsHomeEndAndErasing) {
    Open(u"one two");
    Type(XKB_KEY_End);
    Type(XKB_KEY_Left);
    Type(XKB_KEY_BackSpace);
    EXPECT_EQ(Text(), u"one to");
    Type(XKB_KEY_Delete);
    EXPECT_EQ(Text(), u"one t");
    Type(XKB_KEY_Home);
    Type(XKB_KEY_Right);
    Type(XKB_KEY_x);
    EXPECT_EQ(Text(), u"oxne t");
    Type(XKB_KEY_Control_L, XKB_KEY_Right);
    Type(XKB_KEY_y);
    EXPECT_EQ(Text(), u"oxne yt");
    Type(XKB_KEY_Control_L, XKB_KEY_Left);
    Type(XKB_KEY_z);
    EXPECT_EQ(Text(), u"oxne zyt");
    Type(XKB_KEY_Control_L, XKB_KEY_BackSpace);
    EXPECT_EQ(Text(), u"oxne yt");
    Type(XKB_KEY_Shift_L, XKB_KEY_Home);
    Type(XKB_KEY_Delete);
    EXPECT_EQ(Text(), u"yt");
    Type(XKB_KEY_Shift_R, XKB_KEY_Right);
    Type(XKB_KEY_u);
    EXPECT_EQ(Text(), u"ut");
}

TEST_F(X11TextBox, NumbersOnlyTakesNoLetters) {
    Open(u"0", true);
    TypeText("-1x2k.d5");
    EXPECT_EQ(Text(), u"-12k.5");
}

TEST_F(X11TextBox, ShiftTypesCapitals) {
    Open(u"");
    Type(XKB_KEY_Shift_L, XKB_KEY_a);
    EXPECT_EQ(Text(), u"A");
}

TEST_F(X11TextBox, ControlAltAndTabTypeNothing) {
    Open(u"a");
    Type(XKB_KEY_Control_L, XKB_KEY_z);
    Type(XKB_KEY_Alt_L, XKB_KEY_f);
    Type(XKB_KEY_Tab);
    Type(XKB_KEY_F1);
    EXPECT_EQ(Text(), u"a");
}

TEST_F(X11TextBox, TypesAndShortcutsByTheUsersLayout) {
    Choose("gr");
    Open(u"x");
    _host.Type(0x7E1); // alpha
    _host.Type(0x7E2);
    Pump();
    EXPECT_EQ(Text(), u"αβ");
    Type(XKB_KEY_Control_L, 0x7E1);
    _host.Type(0x7E4);
    Pump();
    EXPECT_EQ(Text(), u"δ") << "all was selected by the key of the Latin a";
}

TEST_F(X11TextBox, TypesWhatSequencesCompose) {
    setenv("LC_ALL", "en_US.UTF-8", 1);
    Choose("us -variant intl");
    Connect();
    Open(u"");
    Type(XKB_KEY_dead_acute);
    EXPECT_EQ(Text(), u"");
    Type(XKB_KEY_e);
    EXPECT_EQ(Text(), u"é");
    Type(XKB_KEY_dead_acute);
    _box.reset();
    Open(u"");
    Type(XKB_KEY_e);
    EXPECT_EQ(Text(), u"e") << "a new box begins anew";
}

TEST_F(X11TextBox, CaretBlinksAndStandsStillWhileTyping) {
    const CHandClock clock;
    Open(u"");
    const auto shown = Shown();
    std::uint32_t due = 0;
    ASSERT_TRUE(_box->NextTime(due));
    _box->OnTime(due - 1);
    EXPECT_EQ(Shown(), shown);
    _box->OnTime(due);
    EXPECT_NE(Shown(), shown);
    ASSERT_TRUE(_box->NextTime(due));
    _box->OnTime(due);
    EXPECT_EQ(Shown(), shown);
    ASSERT_TRUE(_box->NextTime(due));
    _box->OnTime(due); // hidden
    Type(XKB_KEY_Left);
    EXPECT_EQ(Shown(), shown);
}

TEST_F(X11TextBox, PressSetsTheCaretAndDraggingSelects) {
    Open(u"aaaaaaaa");
    MoveInBox(2);
    _host.Press(1);
    Pump();
    EXPECT_EQ(Passed(XCB_BUTTON_PRESS), 0);
    MoveInBox(Place.nW - 2);
    _host.Release(1);
    Pump();
    Type(XKB_KEY_b);
    EXPECT_EQ(Text(), u"b") << "all was selected";
    MoveInBox(30); // no double click
    Click();
    Type(XKB_KEY_c);
    EXPECT_EQ(Text(), u"cb");
    MoveInBox(Place.nW - 2); // no button is down any more
    Type(XKB_KEY_d);
    EXPECT_EQ(Text(), u"cdb");
    EXPECT_EQ(Passed(XCB_MOTION_NOTIFY), 0);
    EXPECT_EQ(Passed(XCB_BUTTON_RELEASE), 0);
}

TEST_F(X11TextBox, ShiftPressExtendsTheSelection) {
    Open(u"aaaa");
    MoveInBox(2);
    Click();
    _host.Key(XKB_KEY_Shift_L, true);
    MoveInBox(Place.nW - 2);
    Click();
    _host.Key(XKB_KEY_Shift_L, false);
    Type(XKB_KEY_b);
    EXPECT_EQ(Text(), u"b");
}

TEST_F(X11TextBox, DoubleClickSelectsAWord) {
    Open(u"iiiiiiii iiiiiiii");
    xcb_button_press_event_t press{};
    press.response_type = XCB_BUTTON_PRESS;
    press.detail = XCB_BUTTON_INDEX_1;
    press.event = _window;
    press.event_x = Place.nW / 2 + 15;
    press.event_y = 5;
    const auto pressAt = [&](xcb_timestamp_t time) {
        press.time = time;
        press.response_type = XCB_BUTTON_PRESS;
        EXPECT_TRUE(_box->OnEvent(Generic(press)));
        press.response_type = XCB_BUTTON_RELEASE;
        EXPECT_TRUE(_box->OnEvent(Generic(press)));
    };
    pressAt(1000);
    pressAt(1501);
    Type(XKB_KEY_l);
    EXPECT_EQ(Text().size(), 18u) << "too slow: nothing is selected";
    pressAt(3000);
    pressAt(3500);
    Type(XKB_KEY_b);
    EXPECT_EQ(Text(), u"iiiiiiii b");
}

TEST_F(X11TextBox, PressesInTheEditorAreTheEditors) {
    Open(u"abc");
    _host.MoveTo(300, 200);
    Click();
    EXPECT_EQ(Passed(XCB_BUTTON_PRESS), 1);
    EXPECT_NE(_box, nullptr);
}

TEST_F(X11TextBox, CopiesAndPastesItsOwnTextWithoutWaiting) {
    Open(u"one two");
    Type(XKB_KEY_Control_L, XKB_KEY_a);
    Type(XKB_KEY_Control_L, XKB_KEY_c);
    Type(XKB_KEY_End);
    Type(XKB_KEY_Control_L, XKB_KEY_v);
    EXPECT_EQ(Text(), u"one twoone two");
    Type(XKB_KEY_Control_R, XKB_KEY_a);
    Type(XKB_KEY_Control_R, XKB_KEY_x);
    EXPECT_EQ(Text(), u"");
    Type(XKB_KEY_Control_R, XKB_KEY_v);
    EXPECT_EQ(Text(), u"one twoone two");
}

TEST_F(X11TextBox, CopyingNothingKeepsWhatWasCopied) {
    Open(u"abc");
    Type(XKB_KEY_Control_L, XKB_KEY_c);
    Type(XKB_KEY_End);
    Type(XKB_KEY_Control_L, XKB_KEY_c);
    Type(XKB_KEY_Control_L, XKB_KEY_x);
    Type(XKB_KEY_Control_L, XKB_KEY_v);
    EXPECT_EQ(Text(), u"abcabc");
}

TEST_F(X11TextBox, ProgramThatNeverAnswersHoldsNothingUp) {
    const COtherOwner silent(_host);
    Open(u"abc");
    Type(XKB_KEY_Control_L, XKB_KEY_v);
    Type(XKB_KEY_Right);
    TypeText("de");
    EXPECT_EQ(Text(), u"abcde");
    Type(XKB_KEY_Return);
    EXPECT_EQ(_text, u"abcde");
}

} // namespace KAV::Tests
