#include "native/linux/x11_menu.h"
#include "native/menu_model.h"
#include "tests/native/menus.h"
#include "tests/native/overlay_fixture.h"
#include "tests/support/hand_clock.h"

#include <gtest/gtest.h>
#include <sys/uio.h>
#include <utility>
#include <xcb/randr.h>
#include <xcb/xcbext.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

namespace {

using Native::CX11Menu;
using SPlace = CXTestHost::SPlace;

/// Another program, with a connection of its own.
class CGrabber final {
public:
    explicit CGrabber(CXTestHost& host)
        : _connection(xcb_connect(host.Display().c_str(), nullptr)), _window(host.Root()) {}
    ~CGrabber() { xcb_disconnect(_connection); }
    CGrabber(const CGrabber&) = delete;
    CGrabber& operator=(const CGrabber&) = delete;

    bool Grab() {
        const bool hasPointer = GrabPointer();
        return GrabKeyboard() && hasPointer;
    }
    bool GrabPointer() {
        const std::unique_ptr<xcb_grab_pointer_reply_t, Platform::SFree> reply(xcb_grab_pointer_reply(
            _connection,
            xcb_grab_pointer(_connection, 1, _window, 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, 0, 0, 0),
            nullptr));
        return reply != nullptr && reply->status == XCB_GRAB_STATUS_SUCCESS;
    }
    bool GrabKeyboard() {
        const std::unique_ptr<xcb_grab_keyboard_reply_t, Platform::SFree> reply(
            xcb_grab_keyboard_reply(_connection,
                xcb_grab_keyboard(_connection, 1, _window, 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                nullptr));
        return reply != nullptr && reply->status == XCB_GRAB_STATUS_SUCCESS;
    }
    void Release() {
        xcb_ungrab_pointer(_connection, 0);
        xcb_ungrab_keyboard(_connection, 0);
        free(xcb_get_input_focus_reply(_connection, xcb_get_input_focus(_connection), nullptr));
    }

private:
    xcb_connection_t* _connection;
    xcb_window_t _window;
};

class X11Menu : public COverlayFixture {
protected:
    using COverlayFixture::COverlayFixture;

    Native::IX11Overlay* Overlay() override { return _menu.get(); }

    /// With the pointer at that point of the screen.
    void Open(const GUI::Menu& menu, std::int32_t x = 300, std::int32_t y = 200) {
        MoveOnScreen(x, y);
        OpenHere(menu);
    }
    void OpenHere(const GUI::Menu& menu) {
        _menu = CX11Menu::Open(*_display, _editor, menu, [this](std::uint32_t command) {
            _ended.push_back(command);
            if (_closes) _menu.reset();
        });
        Pump();
    }
    /// A window that isn't shown can't hold pointer or keyboard.
    void OpenWithoutGrab(const GUI::Menu& menu) {
        const auto editor =
            std::exchange(_editor, _display->MakeWindow(_host.Parent(), {0, 0, 1, 1}, 0, false));
        Open(menu);
        _editor = editor;
        EXPECT_TRUE(CGrabber(_host).Grab()) << "nobody holds them";
    }
    /// The middle of an entry of a window, all entries before it being no separators.
    void MoveToEntry(std::size_t window, std::int32_t entry) {
        const auto place = PlaceOf(window);
        const auto metrics = Native::MenuMetrics(96);
        MoveOnScreen(place.x + place.width / 2,
            place.y + metrics.frame + metrics.padding + entry * metrics.row + metrics.row / 2);
    }
    SPlace PlaceOf(std::size_t window) {
        const auto windows = Popups();
        return window < windows.size() ? _host.Place(windows[window]) : SPlace{};
    }
    /// Half of the screen, with an output unless that is 0.
    void AddMonitor(const std::string& name, std::int16_t left, xcb_randr_output_t output) {
        // The library's own function for this counts the length wrongly.
        xcb_randr_set_monitor_request_t request{};
        request.window = _host.Root();
        xcb_randr_monitor_info_t monitor{};
        monitor.name = _host.Atom(name);
        monitor.nOutput = output != 0 ? 1 : 0;
        monitor.x = left;
        monitor.width = 640;
        monitor.height = 720;
        std::array<iovec, 5> parts{};
        parts[2] = {&request, sizeof(request)};
        parts[3] = {&monitor, sizeof(monitor)};
        parts[4] = {&output, output != 0 ? sizeof(output) : 0};
        const xcb_protocol_request_t kind{3, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
        xcb_send_request(_host.Connection(), 0, &parts[2], &kind);
        _host.Sync();
    }
    xcb_randr_output_t Output() {
        const std::unique_ptr<xcb_randr_get_screen_resources_reply_t, Platform::SFree> reply(
            xcb_randr_get_screen_resources_reply(_host.Connection(),
                xcb_randr_get_screen_resources(_host.Connection(), _host.Root()), nullptr));
        const bool hasOne = reply != nullptr && reply->num_outputs > 0;
        return hasOne ? *xcb_randr_get_screen_resources_outputs(reply.get()) : 0;
    }
    bool IsOn(const SPlace& place) {
        return place.x >= 0 && place.y >= 0 && place.x + place.width <= 1280 &&
               place.y + place.height <= 720 && place.width > 0;
    }

    std::unique_ptr<CX11Menu> _menu;
    std::vector<std::uint32_t> _ended; // the commands that came
    bool _closes = true;               // at its end
};

class X11MenuOfATransparentHost : public X11Menu {
protected:
    X11MenuOfATransparentHost() : X11Menu({.depth = 32}) {}
};

constexpr std::uint32_t Ground = 0xFF25282C;

const GUI::Menu& Plain() {
    static const GUI::Menu menu{Entry(u"One", 11), Disabled(Entry(u"Two", 12)),
        SubMenu(u"More", Entries(3, 20)), Entry(u"Three", 13)};
    return menu;
}

using Commands = std::vector<std::uint32_t>;

} // namespace

TEST_F(X11Menu, OpensAtThePointerAndIsDrawn) {
    Open(Plain(), 310, 220);
    ASSERT_EQ(Popups().size(), 1u);
    const auto place = PlaceOf(0);
    EXPECT_EQ(place.x, 310);
    EXPECT_EQ(place.y, 220);
    const auto pixels = _host.Pixels(Popups()[0], 0, 0, place.width, place.height);
    EXPECT_TRUE(std::find(pixels.begin(), pixels.end(), Ground) != pixels.end()) << "its ground";
    EXPECT_TRUE(std::any_of(pixels.begin(), pixels.end(), [](std::uint32_t pixel) {
        return (pixel & 0xFF) > 0xB0;
    })) << "its texts";
}

TEST_F(X11Menu, WindowManagersLeaveItAlone) {
    Open(Plain());
    ASSERT_EQ(Popups().size(), 1u);
    const std::unique_ptr<xcb_get_window_attributes_reply_t, Platform::SFree> attributes(
        xcb_get_window_attributes_reply(
            _host.Connection(), xcb_get_window_attributes(_host.Connection(), Popups()[0]), nullptr));
    ASSERT_NE(attributes, nullptr);
    EXPECT_EQ(attributes->override_redirect, 1);
    EXPECT_EQ(_host.Property(Popups()[0], "_NET_WM_WINDOW_TYPE"),
        std::vector<std::uint32_t>{_host.Atom("_NET_WM_WINDOW_TYPE_POPUP_MENU")});
}

TEST_F(X11Menu, ChosenByTheMouse) {
    Open(Plain());
    MoveToEntry(0, 3);
    Click();
    EXPECT_EQ(_ended, Commands{13});
    EXPECT_TRUE(Popups().empty());
    EXPECT_EQ(Passed(XCB_BUTTON_PRESS), 0);
    EXPECT_EQ(Passed(XCB_BUTTON_RELEASE), 0);
}

TEST_F(X11Menu, PointerHighlightsAnEntry) {
    Open(Plain());
    const auto inRow = [this] { return _host.Pixel(Popups().at(0), 4, 5 + 11); };
    EXPECT_EQ(inRow(), Ground);
    MoveToEntry(0, 0);
    EXPECT_NE(inRow(), Ground);
    MoveOnScreen(900, 600);
    EXPECT_EQ(inRow(), Ground);
}

TEST_F(X11Menu, ChosenByTheKeyboard) {
    Open(Plain());
    Type(XKB_KEY_Down);
    Type(XKB_KEY_Down);
    Type(XKB_KEY_Right);
    EXPECT_EQ(Popups().size(), 2u);
    Type(XKB_KEY_Down);
    Type(XKB_KEY_Return);
    EXPECT_EQ(_ended, Commands{21});
    EXPECT_TRUE(Popups().empty());
    EXPECT_EQ(Passed(XCB_KEY_PRESS), 0);
}

TEST_F(X11Menu, EveryKeyOfTheMenuIsKnown) {
    for (const auto& [symbol, command] : {std::pair{XKB_KEY_Home, 11u}, {XKB_KEY_End, 13u}, {XKB_KEY_Up, 13u},
             {XKB_KEY_Down, 11u}, {XKB_KEY_KP_Home, 11u}, {XKB_KEY_KP_End, 13u}, {XKB_KEY_KP_Up, 13u},
             {XKB_KEY_KP_Down, 11u}, {XKB_KEY_Page_Down, 13u}, {XKB_KEY_Page_Up, 11u}}) {
        _ended.clear();
        Open(Plain());
        Type(static_cast<std::uint32_t>(symbol));
        Type(symbol == XKB_KEY_End ? XKB_KEY_KP_Enter : XKB_KEY_Return);
        EXPECT_EQ(_ended, Commands{command}) << symbol;
    }
    Open(Plain());
    Type(XKB_KEY_End);
    Type(XKB_KEY_Up);
    Type(XKB_KEY_Right);
    Type(XKB_KEY_Left);
    EXPECT_EQ(Popups().size(), 1u);
}

TEST_F(X11Menu, KeysWithoutAUseGoNowhere) {
    Open(Plain());
    Type(XKB_KEY_space);
    Type(XKB_KEY_a);
    EXPECT_TRUE(_ended.empty());
    EXPECT_EQ(Passed(XCB_KEY_PRESS), 0);
    EXPECT_TRUE(_host.Keys().empty());
}

TEST_F(X11Menu, EscapeEndsIt) {
    Open(Plain());
    Type(XKB_KEY_Down);
    Type(XKB_KEY_Escape);
    EXPECT_EQ(_ended, Commands{0});
    EXPECT_TRUE(Popups().empty());
}

TEST_F(X11Menu, KeysReachItWhereverTheFocusIs) {
    _host.Focus(_host.Top());
    Open(Plain());
    Type(XKB_KEY_Down);
    Type(XKB_KEY_Return);
    EXPECT_EQ(_ended, Commands{11});
    EXPECT_TRUE(_host.Keys().empty());
}

TEST_F(X11Menu, SubMenuOpensByRestingAndIsChosenFrom) {
    CHandClock clock;
    Open(Plain());
    MoveToEntry(0, 2);
    clock.Advance(199);
    Pump();
    EXPECT_EQ(Popups().size(), 1u) << "not at once";
    clock.Advance(1);
    Pump();
    ASSERT_EQ(Popups().size(), 2u);
    MoveToEntry(1, 2);
    Click();
    EXPECT_EQ(_ended, Commands{22});
    EXPECT_TRUE(Popups().empty());
}

TEST_F(X11Menu, PressOutsideClosesItAndIsNotPassedOn) {
    Open(Plain());
    MoveOnScreen(130, 120); // over the editor
    _host.Press(1);
    Pump();
    EXPECT_TRUE(Popups().empty()) << "at once";
    _host.Release(1);
    Pump();
    EXPECT_EQ(_ended, Commands{0});
    EXPECT_EQ(Passed(XCB_BUTTON_PRESS), 0);
    EXPECT_EQ(Passed(XCB_BUTTON_RELEASE), 0);
    Click();
    EXPECT_EQ(Passed(XCB_BUTTON_PRESS), 1) << "the next one is the editor's";
}

TEST_F(X11Menu, PressInTheHostsWindowClosesItAndTheHostHearsNothing) {
    Open(Plain());
    MoveOnScreen(102, 82); // over the host's top-level
    Click();
    EXPECT_EQ(_ended, Commands{0});
    EXPECT_TRUE(_host.Buttons().empty());
    Click();
    EXPECT_FALSE(_host.Buttons().empty()) << "nothing is held any more";
}

TEST_F(X11Menu, ReleaseOfThePressThatOpenedItChoosesNothing) {
    MoveOnScreen(300, 200);
    _host.Press(1);
    Pump();
    OpenHere(Entries(100, 1)); // an entry lies at the pointer
    _host.Release(1);
    Pump();
    EXPECT_TRUE(_ended.empty());
    EXPECT_EQ(Popups().size(), 1u);
    EXPECT_EQ(Passed(XCB_BUTTON_RELEASE), 0);
}

TEST_F(X11Menu, PressDragReleaseChooses) {
    MoveOnScreen(300, 200);
    _host.Press(1);
    Pump();
    OpenHere(Plain());
    MoveToEntry(0, 0);
    MoveToEntry(0, 3);
    _host.Release(1);
    Pump();
    EXPECT_EQ(_ended, Commands{13});
}

TEST_F(X11Menu, StaysOnTheScreenAtEveryEdge) {
    for (const auto& [x, y] : {std::pair{1279, 100}, {300, 719}, {1279, 719}, {0, 0}, {0, 719}}) {
        Open(Plain(), x, y);
        ASSERT_EQ(Popups().size(), 1u);
        EXPECT_TRUE(IsOn(PlaceOf(0))) << x << ", " << y;
        Type(XKB_KEY_Down);
        Type(XKB_KEY_Down);
        Type(XKB_KEY_Right);
        ASSERT_EQ(Popups().size(), 2u);
        EXPECT_TRUE(IsOn(PlaceOf(1))) << x << ", " << y;
        Type(XKB_KEY_Escape);
    }
}

TEST_F(X11Menu, LongMenuFitsTheScreenAndScrolls) {
    Open(Entries(5000, 1), 300, 200);
    ASSERT_EQ(Popups().size(), 1u);
    EXPECT_TRUE(IsOn(PlaceOf(0)));
    EXPECT_EQ(PlaceOf(0).height, 720);
    MoveOnScreen(320, 300);
    const auto shown = [this] {
        const auto place = PlaceOf(0);
        return _host.Pixels(Popups()[0], 0, 40, place.width, 200);
    };
    const auto before = shown();
    Click(5);
    EXPECT_NE(shown(), before);
    EXPECT_TRUE(_ended.empty());
    Click(4);
    EXPECT_EQ(shown(), before);
    Type(XKB_KEY_End);
    Type(XKB_KEY_Return);
    EXPECT_EQ(_ended, Commands{5000});
}

TEST_F(X11Menu, IsDrawnAgainAfterItWasCovered) {
    Open(Plain());
    const auto place = PlaceOf(0);
    const auto window = Popups().at(0);
    const auto before = _host.Pixels(window, 0, 0, place.width, place.height);
    const auto cover = _host.MakeWindow(_host.Root(), place.x, place.y, place.width, place.height, true);
    _host.Show(cover, true);
    Pump();
    _host.Destroy(cover);
    ASSERT_TRUE(Until([&] { return _host.Pixels(window, 0, 0, place.width, place.height) == before; }));
}

TEST_F(X11Menu, IsUsedByTheMouseWhileAnotherProgramHoldsTheKeyboard) {
    CGrabber other(_host);
    ASSERT_TRUE(other.GrabKeyboard());
    Open(Plain());
    MoveToEntry(0, 3);
    Click();
    EXPECT_EQ(_ended, Commands{13});
}

TEST_F(X11Menu, OpensWhileAnotherProgramHoldsPointerAndKeyboard) {
    CGrabber other(_host);
    ASSERT_TRUE(other.Grab());
    Open(Plain());
    EXPECT_EQ(Popups().size(), 1u);
    _menu.reset();
    Sync();
    EXPECT_FALSE(CGrabber(_host).GrabPointer()) << "that program still holds it";
}

TEST_F(X11Menu, IsChosenFromWithoutAGrab) {
    OpenWithoutGrab(Plain());
    MoveToEntry(0, 2);
    Click();
    EXPECT_EQ(Popups().size(), 2u);
    MoveToEntry(1, 1);
    Click();
    EXPECT_EQ(_ended, Commands{21});
}

TEST_F(X11Menu, WithoutAGrabTheHighlightGoesWithThePointer) {
    OpenWithoutGrab(Plain());
    const auto inRow = [this] { return _host.Pixel(Popups().at(0), 4, 5 + 11); };
    MoveToEntry(0, 0);
    EXPECT_NE(inRow(), Ground);
    MoveOnScreen(900, 600);
    EXPECT_EQ(inRow(), Ground);
}

TEST_F(X11Menu, WithoutAGrabAPressInTheEditorEndsItAndIsNotPassedOn) {
    OpenWithoutGrab(Plain());
    MoveOnScreen(130, 120);
    _host.Press(1);
    Pump();
    EXPECT_TRUE(Popups().empty());
    _host.Release(1);
    Pump();
    EXPECT_EQ(_ended, Commands{0});
    EXPECT_EQ(Passed(XCB_BUTTON_PRESS), 0);
    EXPECT_EQ(Passed(XCB_BUTTON_RELEASE), 0);
}

TEST_F(X11Menu, WithoutAGrabTheKeysOfTheEditorsWindowAreItsKeys) {
    OpenWithoutGrab(Plain());
    Type(XKB_KEY_Down);
    Type(XKB_KEY_Return);
    EXPECT_EQ(_ended, Commands{11});
    OpenWithoutGrab(Plain());
    Type(XKB_KEY_Escape);
    EXPECT_EQ(_ended, (Commands{11, 0}));
}

TEST_F(X11Menu, TakesPointerAndKeyboardWhenAnotherProgramLetsGo) {
    _host.Focus(_host.Top());
    CGrabber other(_host);
    ASSERT_TRUE(other.Grab());
    Open(Plain());
    other.Release();
    CGrabber third(_host);
    ASSERT_TRUE(Until([&] {
        const bool isFree = third.Grab();
        third.Release();
        return !isFree;
    }));
    MoveOnScreen(102, 82);
    Click();
    EXPECT_EQ(_ended, Commands{0});
    EXPECT_TRUE(_host.Buttons().empty());
}

TEST_F(X11Menu, ItsEndLetsGoOfPointerAndKeyboard) {
    Open(Plain());
    CGrabber other(_host);
    EXPECT_FALSE(other.Grab());
    _menu.reset();
    Pump();
    EXPECT_TRUE(Popups().empty());
    EXPECT_TRUE(_ended.empty()) << "nobody has ended it";
    EXPECT_TRUE(other.Grab());
}

TEST_F(X11Menu, AfterItsEndItIsGoneEvenIfItIsKept) {
    _closes = false;
    Open(Plain());
    Type(XKB_KEY_Down);
    Type(XKB_KEY_Return);
    Type(XKB_KEY_Return);
    EXPECT_EQ(Passed(XCB_KEY_PRESS), 1);
    std::uint32_t due = 0;
    if (_menu->NextTime(due)) _menu->OnTime(due);
    Pump();
    EXPECT_EQ(_ended, Commands{11});
    EXPECT_TRUE(Popups().empty());
}

TEST_F(X11Menu, StaysOnTheMonitorOfThePointer) {
    AddMonitor("left", 0, Output()); // in place of the monitor that is the whole screen
    AddMonitor("right", 640, 0);
    ASSERT_EQ(_display->Monitors().size(), 2u);
    Open(Plain(), 630, 100);
    EXPECT_EQ(PlaceOf(0).x + PlaceOf(0).width, 640);
    Type(XKB_KEY_Down);
    Type(XKB_KEY_Down);
    Type(XKB_KEY_Right);
    EXPECT_LT(PlaceOf(1).x + PlaceOf(1).width, 640) << "left of it, not on the other monitor";
    Type(XKB_KEY_Escape);
    Open(Plain(), 641, 100);
    EXPECT_EQ(PlaceOf(0).x, 641);
}

TEST_F(X11Menu, EmptyMenuDoesNotOpen) {
    Open({});
    EXPECT_EQ(_menu, nullptr);
    EXPECT_TRUE(_ended.empty());
}

TEST_F(X11MenuOfATransparentHost, IsOpaque) {
    Open(Plain());
    ASSERT_EQ(Popups().size(), 1u);
    const auto place = PlaceOf(0);
    EXPECT_EQ(place.depth, 32);
    for (const auto pixel : _host.Pixels(Popups()[0], 0, 0, place.width, place.height))
        ASSERT_EQ(pixel >> 24u, 0xFFu);
}

} // namespace KAV::Tests
