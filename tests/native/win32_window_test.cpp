// The editor's window on Windows, driven by the messages that a user and a host send.

#include "gfx/cpu/gdiplus/data.h"
#include "native/native_window.h"
#include "platform/module.h"
#include "platform/winapi/gdiplus_library.h"
#include "platform/winapi/windows_header.h"
#include "utils/text.h"

#include <shellapi.h>
#include <shlobj.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV;

namespace {

using Native::CNativeWindow;

/// What the window reports, one line each.
class CHeard final : public GUI::IWindowClient {
public:
    std::vector<std::string> lines; ///< without ticks, moves and paints
    std::string lastMove;
    std::vector<std::uint32_t> ticks;
    int paints = 0;
    std::function<void()> onPress;
    std::function<void()> onTyped;
    CNativeWindow* window = nullptr;

    void OnTick(std::uint32_t a_nTimeMs) override { ticks.push_back(a_nTimeMs); }
    void OnPress(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags, std::uint32_t) override {
        lines.push_back("press " + Place(x, y, a_nFlags));
        if (onPress) onPress();
    }
    void OnRelease(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override {
        lines.push_back("release " + Place(x, y, a_nFlags));
    }
    void OnMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override {
        lastMove = Place(x, y, a_nFlags);
    }
    void OnLeave() override { lines.emplace_back("leave"); }
    void OnWheel(float a_fNotches, std::uint32_t a_nFlags) override {
        lines.push_back("wheel " + std::to_string(a_fNotches).substr(0, 4) + " " + std::to_string(a_nFlags));
    }
    void OnKey(std::uint32_t a_nKey, bool a_bDown) override {
        lines.push_back("key " + std::to_string(a_nKey) + (a_bDown ? " down" : " up"));
    }
    void OnPaint() override { ++paints; }
    void OnCancel() override { lines.emplace_back("cancel"); }
    void OnCommand(std::uint32_t a_nCommand) override {
        lines.push_back("command " + std::to_string(a_nCommand));
    }
    void OnTyped() override {
        lines.push_back("typed " + Utils::ToUtf8(window->BoxText()));
        if (onTyped) onTyped();
    }
    void OnGone() override { lines.emplace_back("gone"); }
    void OnUserMessage(std::uint32_t a_nMessage) override {
        lines.push_back("message " + std::to_string(a_nMessage));
    }

private:
    static std::string Place(std::int32_t x, std::int32_t y, std::uint32_t flags) {
        return std::to_string(x) + "," + std::to_string(y) + " " + std::to_string(flags);
    }
};

/// A host with one window, and an editor that opens its window when it may.
class NativeWindow : public testing::Test, public Native::IEditor {
protected:
    static constexpr std::uint32_t Frames = 60;
    using Lines = std::vector<std::string>;

    CNativeWindow window;
    CHeard heard;
    HWND host = nullptr;
    std::vector<std::string> hostKeys;
    int rounds = 0;
    int closings = 0;
    std::function<void()> onRound;
    std::function<void()> onHostTimer;

    void SetUp() override {
        heard.window = &window;
        WNDCLASSW kind{};
        kind.lpfnWndProc = &NativeWindow::OnHostMessage;
        kind.hInstance = GetModuleHandleW(nullptr);
        kind.lpszClassName = L"Host";
        RegisterClassW(&kind);
        host = MakeHost();
        ASSERT_TRUE(Open());
    }
    void TearDown() override {
        window.Close();
        if (IsWindow(host)) DestroyWindow(host);
        Pump();
    }
    HWND MakeHost() {
        const HWND made = CreateWindowW(L"Host", L"host", WS_POPUP | WS_CLIPCHILDREN | WS_VISIBLE, 10, 10,
            500, 400, nullptr, nullptr, GetModuleHandleW(nullptr), this);
        SetWindowLongPtrW(made, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        return made;
    }
    bool Open() {
        const bool opened = window.Open(host, 300, 200, *this);
        if (opened) window.Show(true);
        Pump();
        heard.lines.clear();
        return opened;
    }
    HWND Editor() const { return static_cast<HWND>(window.Handle()); }
    HWND Box() const { return GetWindow(Editor(), GW_CHILD); }

    // IEditor
    void OnOpened() noexcept override { window.Create(heard, host, 300, 200, Frames); }
    void OnRound() noexcept override {
        ++rounds;
        if (onRound) onRound();
    }
    void OnClosing() noexcept override {
        ++closings;
        window.Destroy();
    }

    static void Pump(int ms = 0) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
        do {
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
            if (ms > 0) Sleep(1);
        } while (std::chrono::steady_clock::now() < end);
    }
    static bool PumpUntil(const std::function<bool()>& holds) {
        for (int n = 0; n < 1000 && !holds(); ++n) Pump(5);
        return holds();
    }
    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) const {
        return SendMessageW(Editor(), message, wParam, lParam);
    }
    static LPARAM At(int x, int y) { return MAKELPARAM(x, y); }
    void Type(std::string_view text) const {
        for (const char letter : text) SendMessageW(Box(), WM_CHAR, static_cast<WPARAM>(letter), 0);
    }
    Lines Heard() { return std::exchange(heard.lines, {}); }

private:
    static LRESULT CALLBACK OnHostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* const self = reinterpret_cast<NativeWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (self != nullptr && (message == WM_KEYDOWN || message == WM_KEYUP))
            self->hostKeys.push_back((message == WM_KEYDOWN ? "down " : "up ") + std::to_string(wParam));
        if (self != nullptr && message == WM_TIMER && self->onHostTimer) self->onHostTimer();
        return DefWindowProcW(window, message, wParam, lParam);
    }
};

GUI::SMenuItem Entry(std::u16string text, std::uint32_t command) {
    GUI::SMenuItem entry;
    entry.sText = std::move(text);
    entry.nCommand = command;
    return entry;
}

// How many of them the process can still make: the system has no count of those that there are.
constexpr std::size_t Most = 100000;
// Menus and windows take their room from all programs of a desktop, of which others may run meanwhile. One
// that were lost at each of 200 openings would still be seen.
constexpr std::size_t OfOthers = 100;

template<typename TMake, typename TFree>
std::size_t RoomFor(const TMake& make, const TFree& free) {
    std::vector<decltype(make())> made;
    while (made.size() < Most) {
        const auto one = make();
        if (one == nullptr) break;
        made.push_back(one);
    }
    for (const auto one : made) free(one);
    return made.size();
}

std::size_t RoomForMenus() {
    return RoomFor([] { return CreatePopupMenu(); }, [](HMENU menu) { DestroyMenu(menu); });
}

std::size_t RoomForBrushes() {
    COLORREF colour = 0; // another each time, as the system may share those of one colour
    return RoomFor([&] { return CreateSolidBrush(++colour); }, [](HBRUSH brush) { DeleteObject(brush); });
}

void SendMouse(DWORD what, int x, int y) {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = what | MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
    input.mi.dx = (x * 65536 + 32768) / GetSystemMetrics(SM_CXSCREEN);
    input.mi.dy = (y * 65536 + 32768) / GetSystemMetrics(SM_CYSCREEN);
    SendInput(1, &input, sizeof(input));
}

} // namespace

// Opening and closing

TEST_F(NativeWindow, TwoHundredOpeningsLeaveRoomForAsManyMenusAndBrushes) {
    const GUI::Menu menu{Entry(u"one", 401)};
    const auto openings = [&](int count) {
        for (int n = 0; n < count; ++n) {
            window.Close();
            ASSERT_TRUE(Open());
            window.SetCursor(GUI::ECursor::SizeBoth);
            ASSERT_TRUE(window.OpenTextBox({0, 0, 50, 20}, u"1", true));
            Pump();
        }
    };
    openings(3); // what the system keeps from the first ones
    const auto menus = RoomForMenus();
    const auto brushes = RoomForBrushes();
    ASSERT_LT(menus, Most);
    ASSERT_LT(brushes, Most);
    openings(200);
    EXPECT_GT(RoomForMenus() + OfOthers, menus);
    EXPECT_EQ(RoomForBrushes(), brushes);
}

TEST_F(NativeWindow, IsAHiddenChildOfTheHostsUntilItIsShown) {
    EXPECT_EQ(GetParent(Editor()), host);
    RECT place{};
    GetClientRect(Editor(), &place);
    EXPECT_EQ(place.right, 300);
    EXPECT_EQ(place.bottom, 200);
    EXPECT_TRUE(IsWindowVisible(Editor()));
    window.Close();
    ASSERT_TRUE(window.Open(host, 300, 200, *this));
    EXPECT_FALSE(IsWindowVisible(Editor()));
    const auto style = static_cast<DWORD>(GetWindowLongPtrW(Editor(), GWL_STYLE));
    EXPECT_EQ(
        style & (WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN), WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN);
    std::array<wchar_t, 32> name{};
    GetClassNameW(Editor(), name.data(), static_cast<int>(name.size()));
    EXPECT_EQ(std::wstring(name.data()), L"KAVGUIWindow");
}

TEST_F(NativeWindow, DoesNotOpenTwiceOrInNoWindow) {
    EXPECT_FALSE(window.Open(host, 300, 200, *this));
    CNativeWindow other;
    EXPECT_FALSE(other.Open(nullptr, 300, 200, *this));
    EXPECT_FALSE(other.IsOpen());
    other.Close();
    window.Close();
    EXPECT_EQ(closings, 1);
    window.Close();
    EXPECT_EQ(closings, 1);
    EXPECT_EQ(GetWindow(host, GW_CHILD), nullptr);
    EXPECT_TRUE(Open());
}

TEST_F(NativeWindow, IsGoneWhenTheHostDestroysItsOwnFirst) {
    DestroyWindow(host);
    EXPECT_EQ(Heard(), Lines{"gone"});
    EXPECT_FALSE(window.Exists());
    EXPECT_EQ(window.Handle(), nullptr);
    window.Resize(10, 10);
    window.Capture(true);
    EXPECT_FALSE(window.OpenTextBox({0, 0, 10, 10}, u"x", false));
    Pump(50);
    window.Close();
    EXPECT_EQ(closings, 1);
    EXPECT_EQ(Heard(), Lines{});
    host = MakeHost();
    EXPECT_TRUE(Open());
}

TEST_F(NativeWindow, MayCloseFromInsideAMessage) {
    heard.onPress = [this] { window.Close(); };
    Send(WM_LBUTTONDOWN, MK_LBUTTON, At(10, 10));
    EXPECT_FALSE(window.IsOpen());
    EXPECT_EQ(closings, 1);
    Pump(50);
    EXPECT_EQ(Heard(), Lines{"press 10,10 1"});
}

TEST_F(NativeWindow, ACallToTheHostMayCloseIt) {
    bool went = true;
    onRound = [&] {
        onRound = nullptr;
        went = window.CallOut([this] { window.Close(); });
    };
    Send(WM_LBUTTONDOWN, MK_LBUTTON, At(10, 10));
    EXPECT_FALSE(went) << "the editor must touch nothing any more";
    EXPECT_FALSE(window.IsOpen());
    ASSERT_TRUE(Open());
    bool stays = false;
    onRound = [&] {
        onRound = nullptr;
        stays = window.CallOut([] {});
    };
    Send(WM_LBUTTONDOWN, MK_LBUTTON, At(10, 10));
    EXPECT_TRUE(stays);
}

TEST_F(NativeWindow, MovesIntoAnotherWindowOfTheHost) {
    const HWND other = MakeHost();
    window.Reparent(other);
    EXPECT_EQ(GetParent(Editor()), other);
    window.Reparent(nullptr);
    EXPECT_EQ(GetParent(Editor()), other);
    DestroyWindow(host);
    EXPECT_TRUE(window.Exists());
    host = other;
}

TEST_F(NativeWindow, ARoundFollowsEachMessageAndEachTick) {
    const int before = rounds;
    Send(WM_MOUSEMOVE, 0, At(5, 5));
    EXPECT_EQ(rounds, before + 1);
    const auto ticks = heard.ticks.size();
    ASSERT_TRUE(PumpUntil([&] { return heard.ticks.size() > ticks + 3; }));
    EXPECT_GT(rounds, before + 3);
}

// The pointer

TEST_F(NativeWindow, ReportsPressesMovesAndReleasesWithSignedPlacesAndFlags) {
    Send(WM_LBUTTONDOWN, MK_LBUTTON | MK_SHIFT, At(10, 20));
    Send(WM_MOUSEMOVE, MK_LBUTTON | MK_CONTROL, At(-5, -7));
    EXPECT_EQ(heard.lastMove, "-5,-7 9");
    Send(WM_LBUTTONUP, 0, At(-5, 30));
    Send(WM_RBUTTONDOWN, MK_RBUTTON, At(1, 2));
    Send(WM_RBUTTONUP, 0, At(1, 2));
    EXPECT_EQ(Heard(), (Lines{"press 10,20 5", "release -5,30 1", "press 1,2 2", "release 1,2 2"}));
    Send(WM_LBUTTONDOWN, MK_LBUTTON | MK_XBUTTON1 | MK_MBUTTON, At(1, 1));
    EXPECT_EQ(Heard(), Lines{"press 1,1 1"}) << "of other buttons nothing is known";
}

TEST_F(NativeWindow, CapturesThePointerAndGivesItBack) {
    window.Capture(true);
    EXPECT_EQ(GetCapture(), Editor());
    window.Capture(false);
    EXPECT_EQ(GetCapture(), nullptr);
    SetCapture(host);
    window.Capture(false);
    EXPECT_EQ(GetCapture(), host) << "somebody else's";
    ReleaseCapture();
    Send(WM_CANCELMODE, 0, 0);
    EXPECT_EQ(Heard(), Lines{"cancel"});
}

TEST_F(NativeWindow, TheWheelCountsNotches) {
    Send(WM_MOUSEWHEEL, MAKEWPARAM(MK_SHIFT, WHEEL_DELTA), At(10, 10));
    Send(WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(-WHEEL_DELTA / 2)), At(10, 10));
    EXPECT_EQ(Heard(), (Lines{"wheel 1.00 4", "wheel -0.5 0"}));
}

TEST_F(NativeWindow, TellsThatThePointerHasLeft) {
    Send(WM_MOUSELEAVE, 0, 0);
    EXPECT_EQ(Heard(), Lines{"leave"});
}

TEST_F(NativeWindow, HasTheCursorThatWasSetAsLongAsThePointerIsInside) {
    window.SetCursor(GUI::ECursor::SizeWidth);
    EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_SIZEWE));
    ::SetCursor(LoadCursorW(nullptr, IDC_IBEAM));
    EXPECT_EQ(
        Send(WM_SETCURSOR, reinterpret_cast<WPARAM>(Editor()), MAKELPARAM(HTCLIENT, WM_MOUSEMOVE)), TRUE);
    EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_SIZEWE));
    window.SetCursor(GUI::ECursor::SizeBoth);
    EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_SIZENWSE));
    window.SetCursor(GUI::ECursor::Arrow);
    EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_ARROW));
}

TEST_F(NativeWindow, ADragOfTheUsersGoesOnOutsideTheWindowWhileThePointerIsCaptured) {
    heard.onPress = [this] { window.Capture(true); };
    SetForegroundWindow(host);
    SendMouse(MOUSEEVENTF_MOVE, 110, 60); // of the screen; the window's corner is at 10, 10
    ASSERT_TRUE(PumpUntil([this] { return heard.lastMove == "100,50 0"; })) << heard.lastMove;
    SendMouse(MOUSEEVENTF_LEFTDOWN, 110, 60);
    ASSERT_TRUE(PumpUntil([this] { return !heard.lines.empty(); }));
    SendMouse(MOUSEEVENTF_MOVE, 600, 5);
    ASSERT_TRUE(PumpUntil([this] { return heard.lastMove == "590,-5 1"; })) << heard.lastMove;
    SendMouse(MOUSEEVENTF_LEFTUP, 600, 5);
    ASSERT_TRUE(PumpUntil([this] { return heard.lines.size() >= 2; }));
    EXPECT_EQ(Heard(), (Lines{"press 100,50 1", "release 590,-5 1"}));
    window.Capture(false);
    SendMouse(MOUSEEVENTF_MOVE, 620, 8);
    Pump(50);
    EXPECT_EQ(heard.lastMove, "590,-5 1") << "not any more";
}

TEST_F(NativeWindow, ADoubleClickIsTwoPresses) {
    // With the other style of windows the second one would be a message that the editor doesn't know.
    EXPECT_EQ(GetClassLongPtrW(Editor(), GCL_STYLE) & CS_DBLCLKS, 0u);
    SetForegroundWindow(host);
    for (int n = 0; n < 2; ++n) {
        SendMouse(MOUSEEVENTF_LEFTDOWN, 110, 60);
        SendMouse(MOUSEEVENTF_LEFTUP, 110, 60);
    }
    ASSERT_TRUE(PumpUntil([this] { return heard.lines.size() >= 4; }));
    EXPECT_EQ(Heard(), (Lines{"press 100,50 1", "release 100,50 1", "press 100,50 1", "release 100,50 1"}));
}

TEST_F(NativeWindow, FilesThatAreDroppedAreTakenAndMeanNothing) {
    EXPECT_NE(GetWindowLongPtrW(Editor(), GWL_EXSTYLE) & WS_EX_ACCEPTFILES, 0);
    const std::wstring name(L"C:\\a.txt");
    const HGLOBAL files =
        GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, sizeof(DROPFILES) + 2 * (name.size() + 2));
    ASSERT_NE(files, nullptr);
    auto* const head = static_cast<DROPFILES*>(GlobalLock(files));
    head->pFiles = sizeof(DROPFILES);
    head->fWide = TRUE;
    std::copy(name.begin(), name.end(), reinterpret_cast<wchar_t*>(head + 1));
    GlobalUnlock(files);
    EXPECT_EQ(Send(WM_DROPFILES, reinterpret_cast<WPARAM>(files), 0), 0);
    EXPECT_EQ(Heard(), Lines{});
    EXPECT_EQ(GlobalSize(files), 0u) << "they are freed";
}

// Keys

TEST_F(NativeWindow, HandsKeysItHasNoUseForToTheHost) {
    Send(WM_KEYDOWN, VK_SPACE, 0);
    Send(WM_KEYUP, VK_SPACE, 0);
    Send(WM_KEYDOWN, 'Z', 0); // without Control
    Pump();
    EXPECT_EQ(hostKeys, (Lines{"down 32", "up 32", "down 90"}));
    EXPECT_EQ(Heard(), Lines{});
    Send(WM_KEYDOWN, VK_F1, 0);
    Send(WM_KEYUP, VK_F1, 0);
    Pump();
    EXPECT_EQ(Heard(), (Lines{"key 112 down", "key 112 up"}));
    EXPECT_EQ(hostKeys.size(), 3u);
}

TEST_F(NativeWindow, HandsNoKeyToTheHostWhileTheTextBoxIsOpen) {
    ASSERT_TRUE(window.OpenTextBox({10, 10, 80, 20}, u"1", true));
    Send(WM_KEYDOWN, VK_SPACE, 0);
    Pump();
    EXPECT_EQ(hostKeys, Lines{});
    window.CloseTextBox();
    Send(WM_KEYDOWN, VK_SPACE, 0);
    Pump();
    EXPECT_EQ(hostKeys, Lines{"down 32"});
}

// The text box

TEST_F(NativeWindow, HandsOnTheMessagesOfItsOwnRange) {
    for (const UINT message : {1024u, 1025u, 1028u, 2046u, 2047u}) Send(message, 7, 8);
    EXPECT_EQ(Heard(), (Lines{"message 1025", "message 1028", "message 2046"}));
}

TEST_F(NativeWindow, ADoubleClickIsWhatTheUserHasSet) {
    const auto usual = GetDoubleClickTime();
    SetDoubleClickTime(321);
    EXPECT_EQ(window.DoubleClickMs(), 321);
    SetDoubleClickTime(usual);
    EXPECT_EQ(window.DoubleClickMs(), usual);
    EXPECT_EQ(window.DoubleClickWidth(), GetSystemMetrics(SM_CXDOUBLECLK));
    EXPECT_EQ(window.DoubleClickHeight(), GetSystemMetrics(SM_CYDOUBLECLK));
}

TEST_F(NativeWindow, TheTextBoxOpensWithItsTextSelected) {
    ASSERT_TRUE(window.OpenTextBox({10, 20, 80, 20}, u"-3.0", true));
    EXPECT_TRUE(IsWindowVisible(Box()));
    RECT place{};
    GetWindowRect(Box(), &place);
    MapWindowPoints(nullptr, Editor(), reinterpret_cast<POINT*>(&place), 2);
    EXPECT_EQ(place.left, 10);
    EXPECT_EQ(place.top, 20);
    EXPECT_EQ(place.right - place.left, 80);
    EXPECT_EQ(window.BoxText(), u"-3.0");
    DWORD from = 7;
    DWORD to = 7;
    SendMessageW(Box(), EM_GETSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
    EXPECT_EQ(from, 0u);
    EXPECT_EQ(to, 4u);
    EXPECT_EQ(GetWindowLongPtrW(Box(), GWL_STYLE) & ES_CENTER, ES_CENTER);
}

TEST_F(NativeWindow, ANumberTakesDigitsAndNothingThatIsNone) {
    ASSERT_TRUE(window.OpenTextBox({10, 20, 80, 20}, u"", true));
    Type("-1x2,.5k e+\x1b");
    EXPECT_EQ(window.BoxText(), u"-12.5k");
    Type("\b");
    EXPECT_EQ(window.BoxText(), u"-12.5");
    ASSERT_TRUE(window.OpenTextBox({10, 20, 80, 20}, u"", false));
    Type("a b,1");
    EXPECT_EQ(window.BoxText(), u"a b,1");
}

TEST_F(NativeWindow, EnterCommitsAndSoDoesTheLossOfTheFocus) {
    heard.onTyped = [this] { window.CloseTextBox(); };
    ASSERT_TRUE(window.OpenTextBox({10, 20, 80, 20}, u"1", false));
    Type("2\r");
    EXPECT_EQ(Heard(), Lines{"typed 2"});
    EXPECT_FALSE(IsWindowVisible(Box()));
    ASSERT_TRUE(window.OpenTextBox({10, 20, 80, 20}, u"5", false));
    SendMessageW(Box(), WM_KILLFOCUS, 0, 0);
    EXPECT_EQ(Heard(), Lines{"typed 5"});
    SendMessageW(Box(), WM_KILLFOCUS, 0, 0);
    EXPECT_EQ(Heard(), Lines{}) << "it is closed";
}

TEST_F(NativeWindow, ClosingTheTextBoxCommitsNothing) {
    ASSERT_TRUE(window.OpenTextBox({10, 20, 80, 20}, u"1", false));
    window.CloseTextBox();
    window.Focus();
    Pump();
    EXPECT_EQ(Heard(), Lines{});
    ASSERT_TRUE(window.OpenTextBox({10, 20, 80, 20}, u"1", false));
    window.Close();
    EXPECT_EQ(Heard(), Lines{});
}

TEST_F(NativeWindow, TheTextBoxTakesEnterFromADialogAroundIt) {
    ASSERT_TRUE(window.OpenTextBox({10, 20, 80, 20}, u"1", false));
    EXPECT_NE(SendMessageW(Box(), WM_GETDLGCODE, 0, 0) & DLGC_WANTALLKEYS, 0);
}

// Menus and boxes

TEST_F(NativeWindow, AMenuReturnsItsChoiceAsACommandAndLetsTicksPass) {
    GUI::SMenuItem line;
    line.bSeparator = true;
    const GUI::Menu menu{Entry(u"one", 401), line, Entry(u"two", 402)};
    const auto ticks = heard.ticks.size();
    heard.onPress = [&] { window.ShowMenu(menu); };
    int step = 0;
    onHostTimer = [&] {
        // Both at once: a move of the pointer, which is over the menu, would choose its own entry in between.
        if (++step < 4) return;
        PostMessageW(Editor(), WM_KEYDOWN, VK_END, 0);
        PostMessageW(Editor(), WM_KEYDOWN, VK_RETURN, 0);
    };
    SetTimer(host, 1, 100, nullptr);
    Send(WM_LBUTTONDOWN, MK_LBUTTON, At(10, 10));
    KillTimer(host, 1);
    EXPECT_EQ(Heard(), (Lines{"press 10,10 1", "command 402"}));
    EXPECT_GT(heard.ticks.size(), ticks + 3);
}

TEST_F(NativeWindow, AMenuThatIsClosedChoosesNothingAndAClosedEditorHearsNothing) {
    const GUI::Menu menu{Entry(u"one", 401)};
    onHostTimer = [this] { window.CloseMenu(); };
    SetTimer(host, 1, 100, nullptr);
    window.ShowMenu(menu);
    EXPECT_EQ(Heard(), Lines{});
    onHostTimer = [this] { window.Close(); };
    window.ShowMenu(menu);
    KillTimer(host, 1);
    EXPECT_EQ(Heard(), Lines{});
    EXPECT_FALSE(window.IsOpen());
}

TEST_F(NativeWindow, AMenuComesUpWhenTheMessageIsOver) {
    const GUI::Menu menu{Entry(u"one", 401)};
    bool isAtWork = false;
    int looks = 0;
    heard.onPress = [&] {
        isAtWork = true;
        window.ShowMenu(menu);
        isAtWork = false;
    };
    onHostTimer = [&] {
        EXPECT_FALSE(isAtWork) << "the host may end what is at work";
        ++looks;
        window.CloseMenu();
    };
    SetTimer(host, 1, 20, nullptr);
    Send(WM_LBUTTONDOWN, MK_LBUTTON, At(10, 10));
    KillTimer(host, 1);
    EXPECT_GT(looks, 0) << "in the menu's own loop";
}

TEST_F(NativeWindow, ABoxComesUpWhenTheTickIsOver) {
    bool isAtWork = false;
    heard.onPress = [&] {
        isAtWork = true;
        window.ShowBox(u"title", u"text");
        EXPECT_TRUE(window.IsBoxUp()) << "or is about to be";
        isAtWork = false;
    };
    onHostTimer = [&] {
        EXPECT_FALSE(isAtWork) << "the host may end what is at work";
        if (FindWindowW(L"#32770", L"title") != nullptr) window.Close();
    };
    SetTimer(host, 1, 20, nullptr);
    Send(WM_LBUTTONDOWN, MK_LBUTTON, At(10, 10));
    EXPECT_TRUE(PumpUntil([&] { return !window.IsOpen() && FindWindowW(L"#32770", L"title") == nullptr; }));
    KillTimer(host, 1);
}

TEST_F(NativeWindow, ABoxDoesNotComeUpWhileTheEditorOpens) {
    window.Close();
    ASSERT_TRUE(window.Open(host, 300, 200, *this));
    window.ShowBox(u"title", u"text"); // as an error of the first picture
    window.Show(true);
    Send(WM_MOUSEMOVE, 0, At(1, 1));
    EXPECT_TRUE(window.IsBoxUp());
    EXPECT_EQ(FindWindowW(L"#32770", L"title"), nullptr);
    onHostTimer = [&] {
        if (FindWindowW(L"#32770", L"title") != nullptr) window.Close();
    };
    SetTimer(host, 1, 20, nullptr);
    EXPECT_TRUE(PumpUntil([&] { return !window.IsOpen(); }));
    KillTimer(host, 1);
    EXPECT_TRUE(PumpUntil([&] { return FindWindowW(L"#32770", L"title") == nullptr; }));
}

TEST_F(NativeWindow, AThousandMenusLeaveRoomForAsMany) {
    auto more = Entry(u"more", 0);
    more.vsSub = {Entry(u"inner", 402)};
    const GUI::Menu menu{Entry(u"one", 401), more};
    const auto before = RoomForMenus();
    ASSERT_LT(before, Most) << "a leak would not be seen";
    onHostTimer = [this] { window.CloseMenu(); };
    for (int n = 0; n < 1000; ++n) {
        PostMessageW(host, WM_TIMER, 1, 0); // which the menu's own loop finds
        window.ShowMenu(menu);
    }
    EXPECT_GT(RoomForMenus() + OfOthers, before);
}

TEST_F(NativeWindow, AnErrorIsShownByABoxThatTicksPass) {
    HWND box = nullptr;
    bool wasUp = false;
    std::wstring title(64, L'\0');
    std::wstring text(64, L'\0');
    onHostTimer = [&] {
        box = FindWindowW(L"#32770", L"Sorrel v1");
        if (box == nullptr || wasUp) return;
        wasUp = window.IsBoxUp();
        EXPECT_EQ(GetWindow(box, GW_OWNER), host) << "which the box belongs to";
        EXPECT_NE(FindWindowExW(box, nullptr, L"Static", L"It has failed."), nullptr);
        EXPECT_FALSE(IsWindowEnabled(host)) << "it waits for the answer";
        PostMessageW(box, WM_COMMAND, IDOK, 0);
    };
    const auto ticks = heard.ticks.size();
    SetTimer(host, 1, 100, nullptr);
    window.ShowBox(u"Sorrel v1", u"It has failed.");
    EXPECT_TRUE(PumpUntil([&] { return !window.IsBoxUp(); })) << "a tick shows it";
    KillTimer(host, 1);
    EXPECT_TRUE(wasUp);
    EXPECT_FALSE(window.IsBoxUp());
    EXPECT_GT(heard.ticks.size(), ticks);
    EXPECT_TRUE(IsWindowEnabled(host));
}

// Sizes and times

TEST_F(NativeWindow, TicksComeNoMoreOftenThanTheRateSays) {
    window.SetRate(5);
    Pump();
    const auto begin = GetTickCount();
    const auto before = heard.ticks.size();
    Pump(450);
    EXPECT_LE(heard.ticks.size() - before, (GetTickCount() - begin) / 200 + 1);
    window.SetRate(100); // and the old timer is gone
    const auto then = heard.ticks.size();
    ASSERT_TRUE(PumpUntil([&] { return heard.ticks.size() > then + 3; }));
    window.SetRate(0); // as 1
    const auto slow = heard.ticks.size();
    const auto slowBegin = GetTickCount();
    Pump(300);
    EXPECT_LE(heard.ticks.size() - slow, (GetTickCount() - slowBegin) / 1000 + 1);
}

TEST_F(NativeWindow, ShowsTheFrameOfTheSoftwareRenderer) {
    GFX::CPU::DATA gpu({window.Handle(), 300, 200});
    ASSERT_TRUE(gpu.IsReady());
    const std::vector<std::uint32_t> bits(16, 0xFF3060C0);
    GFX::STexture texture;
    texture.nW = texture.nH = 4;
    gpu.CreateTextureBits(bits.data(), 16, PixelFormat32bppRGB, texture, 4, 4, 4, 4);
    gpu.Clear();
    GFX::SDraw draw;
    draw.sTo = {290, 190, 4, 4};
    gpu.DrawTexture(texture, draw);
    gpu.Present();
    const HDC screen = GetDC(Editor());
    EXPECT_EQ(GetPixel(screen, 292, 192), RGB(0x30, 0x60, 0xC0));
    EXPECT_EQ(GetPixel(screen, 5, 5), RGB(0, 0, 0));
    ReleaseDC(Editor(), screen);
}

TEST_F(NativeWindow, IsResizedWithItsHostsWindow) {
    window.Resize(320, 240);
    RECT place{};
    GetClientRect(Editor(), &place);
    EXPECT_EQ(place.right, 320);
    EXPECT_EQ(place.bottom, 240);
    window.ResizeParent(350, 280);
    GetWindowRect(host, &place);
    EXPECT_EQ(place.right - place.left, 350);
    window.Resize(0, -5);
    GetClientRect(Editor(), &place);
    EXPECT_EQ(place.right, 1);
    EXPECT_EQ(place.bottom, 1);
}

TEST_F(NativeWindow, TicksStopWithTheWindow) {
    window.SetRate(100);
    ASSERT_TRUE(PumpUntil([this] { return heard.ticks.size() > 5; }));
    window.Close();
    const auto ticks = heard.ticks.size();
    Pump(100);
    EXPECT_EQ(heard.ticks.size(), ticks);
}

TEST_F(NativeWindow, APaintOfTheSystemsAsksForAPicture) {
    heard.paints = 0;
    InvalidateRect(Editor(), nullptr, FALSE);
    UpdateWindow(Editor());
    EXPECT_EQ(heard.paints, 1);
    EXPECT_FALSE(GetUpdateRect(Editor(), nullptr, FALSE)) << "it would be asked for again and again";
    EXPECT_EQ(Send(WM_ERASEBKGND, 0, 0), 1);
}

TEST_F(NativeWindow, TwoEditorsOfAModuleShareTheClassOfTheirWindows) {
    struct SOther final : Native::IEditor {
        CNativeWindow window;
        CHeard heard;
        HWND host = nullptr;
        void OnOpened() noexcept override { window.Create(heard, host, 100, 100, 60); }
        void OnRound() noexcept override {}
        void OnClosing() noexcept override { window.Destroy(); }
    } other;
    other.heard.window = &other.window;
    other.host = host;
    ASSERT_TRUE(other.window.Open(host, 100, 100, other));
    window.Close();
    SendMessageW(static_cast<HWND>(other.window.Handle()), WM_MOUSELEAVE, 0, 0);
    EXPECT_EQ(other.heard.lines, Lines{"leave"});
    ASSERT_TRUE(Open()) << "while the other one's window still has the class";
    other.window.Close();
    Send(WM_MOUSELEAVE, 0, 0);
    EXPECT_EQ(Heard(), Lines{"leave"});
}
