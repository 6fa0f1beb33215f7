#include "native/linux/x11_display.h"
#include "tests/support/x_test_host.h"

#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

namespace {

using Native::CX11Display;
using Native::STypedKey;

/// A keyboard with these layouts, and what its keys mean. The events are made here, as the display makes
/// them.
class CKeys {
public:
    explicit CKeys(const std::string& layouts, const char* locale = "en_US.UTF-8") {
        setenv("LC_ALL", locale, 1);
        Choose(layouts);
        std::u16string reason;
        _display = CX11Display::Connect(host.Display(), host.Parent(), reason);
        EXPECT_NE(_display, nullptr);
    }

    void Choose(const std::string& layouts) const {
        const auto command = "setxkbmap -display " + host.Display() + " " + layouts;
        EXPECT_EQ(std::system(command.c_str()), 0) << command; // NOLINT(concurrency-mt-unsafe)
    }

    STypedKey Down(std::uint8_t code, std::uint16_t state = 0) { return Event(XCB_KEY_PRESS, code, state); }
    STypedKey Up(std::uint8_t code, std::uint16_t state = 0) { return Event(XCB_KEY_RELEASE, code, state); }
    std::u16string Text(std::uint8_t code, std::uint16_t state = 0) { return Down(code, state).text; }

    CX11Display& Display() { return *_display; }

    /// What a key types once the display has reported new layouts, within a generous time.
    bool Types(std::uint8_t code, std::u16string_view text) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (std::chrono::steady_clock::now() < end) {
            const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event(
                xcb_poll_for_event(_display->Connection()), &std::free);
            if (event != nullptr) _display->OnEvent(*event);
            if (Text(code) == text) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return false;
    }

    CXTestHost host;

private:
    STypedKey Event(std::uint8_t type, std::uint8_t code, std::uint16_t state) {
        xcb_key_press_event_t event{};
        event.response_type = type;
        event.detail = code;
        event.state = state;
        event.time = ++_time;
        return _display->Typed(event);
    }

    std::unique_ptr<CX11Display> _display;
    xcb_timestamp_t _time = 1;
};

// Codes of keys by what a US keyboard has on them.
constexpr std::uint8_t KeyA = 38;
constexpr std::uint8_t KeyE = 26;
constexpr std::uint8_t KeyY = 29;
constexpr std::uint8_t KeyZ = 52;
constexpr std::uint8_t KeyReturn = 36;
constexpr std::uint8_t KeyApostrophe = 48;
constexpr std::uint8_t KeySemicolon = 47;
constexpr std::uint8_t KeyLeftControl = 37;
constexpr std::uint16_t SecondLayout = 1u << 13u; // of an event's state

} // namespace

TEST(X11Keyboard, TypesByLayoutAndModifiers) {
    CKeys keys("us");
    EXPECT_EQ(keys.Text(KeyA), u"a");
    EXPECT_EQ(keys.Text(KeyA, XCB_MOD_MASK_SHIFT), u"A");
    EXPECT_EQ(keys.Text(KeyA, XCB_MOD_MASK_LOCK), u"A");
    EXPECT_EQ(keys.Up(KeyA).text, u"");
    EXPECT_EQ(keys.Up(KeyA).symbol, std::uint32_t{XKB_KEY_a});
}

TEST(X11Keyboard, SaysWhichKeyItIsAndWhatIsHeld) {
    CKeys keys("us");
    const auto key = keys.Down(KeyReturn, XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1);
    EXPECT_EQ(key.symbol, std::uint32_t{XKB_KEY_Return});
    EXPECT_TRUE(key.down && key.shift && key.control && key.alt);
    const auto plain = keys.Up(KeyReturn);
    EXPECT_FALSE(plain.down || plain.shift || plain.control || plain.alt);
}

TEST(X11Keyboard, TypesNoTextWithControlOrAltAndNoControlCharacters) {
    CKeys keys("us");
    EXPECT_EQ(keys.Text(KeyA, XCB_MOD_MASK_CONTROL), u"");
    EXPECT_EQ(keys.Text(KeyA, XCB_MOD_MASK_1), u"");
    EXPECT_EQ(keys.Text(KeyReturn), u"");
    EXPECT_EQ(keys.Text(KeyLeftControl), u"");
}

TEST(X11Keyboard, FollowsTheLayoutThatTheEventNames) {
    CKeys keys("us,gr");
    EXPECT_EQ(keys.Text(KeyA), u"a");
    EXPECT_EQ(keys.Text(KeyA, SecondLayout), u"α");
}

TEST(X11Keyboard, FindsLatinLettersByTheFirstLayoutThatHasThem) {
    CKeys keys("gr,de");
    EXPECT_EQ(keys.Down(KeyA).text, u"α");
    EXPECT_EQ(keys.Down(KeyA).latin, u'A');
    EXPECT_EQ(keys.Down(KeyZ).latin, u'Y'); // of the German layout
    EXPECT_EQ(keys.Down(KeyZ, SecondLayout).latin, u'Y');
    EXPECT_EQ(keys.Down(KeyY, SecondLayout | XCB_MOD_MASK_CONTROL).latin, u'Z');
    EXPECT_EQ(keys.Down(KeyReturn).latin, 0);
}

TEST(X11Keyboard, FindsLatinLettersOfAUserWithoutALatinLayout) {
    CKeys keys("gr");
    EXPECT_EQ(keys.Down(KeyZ).latin, u'Z');
    EXPECT_EQ(keys.Down(KeyY).latin, u'Y');
    EXPECT_EQ(keys.Down(KeyZ).text, u"ζ");
}

TEST(X11Keyboard, FollowsAChangeOfTheLayouts) {
    CKeys keys("us");
    EXPECT_EQ(keys.Text(KeyY), u"y");
    keys.Choose("de");
    EXPECT_TRUE(keys.Types(KeyY, u"z"));
}

TEST(X11Keyboard, ComposesByTheUsersLanguage) {
    CKeys keys("us -variant intl");
    EXPECT_EQ(keys.Text(KeyApostrophe), u""); // a dead key
    keys.Up(KeyApostrophe);
    EXPECT_EQ(keys.Text(KeyE), u"é");
    keys.Up(KeyE);
    EXPECT_EQ(keys.Text(KeyE), u"e");
}

TEST(X11Keyboard, ForgetsABegunSequence) {
    CKeys keys("us -variant intl");
    EXPECT_EQ(keys.Text(KeyApostrophe), u"");
    keys.Display().ResetCompose();
    EXPECT_EQ(keys.Text(KeyE), u"e");
}

TEST(X11Keyboard, AnswersTheSameEventTwiceAlikeAndComposesItOnce) {
    CKeys keys("us -variant intl");
    xcb_key_press_event_t dead{};
    dead.response_type = XCB_KEY_PRESS;
    dead.detail = KeyApostrophe;
    dead.time = 1000;
    EXPECT_EQ(keys.Display().Typed(dead).text, u"");
    EXPECT_EQ(keys.Display().Typed(dead).text, u""); // twice would be the accent itself
    auto letter = dead;
    letter.detail = KeyE;
    letter.time = 1001;
    EXPECT_EQ(keys.Display().Typed(letter).text, u"é");
    EXPECT_EQ(keys.Display().Typed(letter).text, u"é");
}

TEST(X11Keyboard, DropsASequenceThatMeansNothing) {
    CKeys keys("us -variant intl");
    EXPECT_EQ(keys.Text(KeyApostrophe), u"");
    EXPECT_EQ(keys.Text(KeySemicolon), u"");
    EXPECT_EQ(keys.Text(KeyE), u"e");
}

TEST(X11Keyboard, KnowsTheLeftControlKeyFromTheRightOne) {
    CKeys keys("us");
    EXPECT_FALSE(keys.Display().IsLeftControlHeld());
    keys.host.Key(XKB_KEY_Control_R, true);
    EXPECT_FALSE(keys.Display().IsLeftControlHeld());
    keys.host.Key(XKB_KEY_Control_R, false);
    keys.host.Key(XKB_KEY_Control_L, true);
    EXPECT_TRUE(keys.Display().IsLeftControlHeld());
    keys.host.Key(XKB_KEY_Control_L, false);
    EXPECT_FALSE(keys.Display().IsLeftControlHeld());
}

} // namespace KAV::Tests
