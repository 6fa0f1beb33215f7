#include "native/linux/x11_display.h"
#include "tests/support/x_test_host.h"

#include <cstring>
#include <gtest/gtest.h>

namespace KAV::Tests {

namespace {

using Native::CX11Display;

std::unique_ptr<CX11Display> Connected(CXTestHost& host) {
    std::u16string reason;
    auto display = CX11Display::Connect(host.Display(), host.Parent(), reason);
    EXPECT_NE(display, nullptr) << "not connected";
    EXPECT_TRUE(reason.empty());
    return display;
}

/// The display has done what was asked of it.
void Wait(CX11Display& display) {
    std::int32_t x = 0;
    std::int32_t y = 0;
    EXPECT_TRUE(display.Pointer(x, y));
}

Pixels::SBitmap Gradient(std::int32_t width, std::int32_t height, std::int32_t gap) {
    auto picture = Pixels::TransparentBitmap(width, height);
    picture.stride += gap;
    picture.bytes.assign(static_cast<std::size_t>(picture.stride) * static_cast<std::size_t>(height), 0x55);
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            auto* const pixel = picture.bytes.data() + y * picture.stride + x * 4;
            pixel[0] = static_cast<std::uint8_t>(x);
            pixel[1] = static_cast<std::uint8_t>(y);
            pixel[2] = static_cast<std::uint8_t>(x + y);
            pixel[3] = 0xFF;
        }
    }
    return picture;
}

} // namespace

TEST(X11Display, TakesTheFormatOfTheHostsWindow) {
    CXTestHost host;
    const auto display = Connected(host);
    EXPECT_EQ(display->Depth(), host.Place(host.Parent()).depth);
    EXPECT_EQ(display->Visual(), host.VisualOf(host.Parent()));
    EXPECT_EQ(display->Root(), host.Root());
}

TEST(X11Display, TakesTheFormatOfAWindowThatMayBeTransparent) {
    CXTestHost host({.depth = 32});
    const auto display = Connected(host);
    EXPECT_EQ(display->Depth(), 32);
    EXPECT_EQ(display->Visual(), host.VisualOf(host.Parent()));
    EXPECT_NE(display->Colormap(), display->Screen().default_colormap);
}

TEST(X11Display, SaysWhyItIsNotConnected) {
    CXTestHost host;
    std::u16string reason;
    EXPECT_EQ(CX11Display::Connect(":4711", host.Parent(), reason), nullptr);
    EXPECT_EQ(reason, u"no connection to the display");
    EXPECT_EQ(CX11Display::Connect(host.Display(), 0x12345, reason), nullptr);
    EXPECT_EQ(reason, u"the host's window doesn't exist");
}

TEST(X11Display, PutsAPictureOfAnySizeIntoAWindow) {
    CXTestHost host;
    const auto display = Connected(host);
    // Longer than a request may be, and with a gap between the rows.
    const auto picture = Gradient(390, 290, 12);
    const auto window = display->MakeWindow(host.Parent(), {0, 0, 390, 290}, 0, false);
    host.Sync();
    display->Flush();
    Wait(*display);
    host.Show(window, true);
    display->Put(window, picture);
    Wait(*display);
    const auto pixels = host.Pixels(window, 0, 0, 390, 290);
    ASSERT_EQ(pixels.size(), 390u * 290u);
    for (std::int32_t y = 0; y < 290; ++y) {
        for (std::int32_t x = 0; x < 390; ++x) {
            std::uint32_t expected = 0;
            std::memcpy(&expected, picture.bytes.data() + y * picture.stride + x * 4, 4);
            ASSERT_EQ(pixels[static_cast<std::size_t>(y * 390 + x)] & 0xFFFFFF, expected & 0xFFFFFF)
                << x << ", " << y;
        }
    }
}

TEST(X11Display, MakesWindowsThatAreBlackAndOpaque) {
    CXTestHost host({.depth = 32});
    const auto display = Connected(host);
    const auto window = display->MakeWindow(host.Parent(), {3, 4, 50, 40}, 0, false);
    Wait(*display);
    EXPECT_EQ(host.Place(window), (CXTestHost::SPlace{3, 4, 50, 40, 32}));
    EXPECT_FALSE(host.IsViewable(window));
    host.Show(window, true);
    EXPECT_EQ(host.Pixel(window, 10, 10), 0xFF000000);
}

TEST(X11Display, KnowsThePointerAndTheMonitorThatItIsOn) {
    CXTestHost host;
    const auto display = Connected(host);
    host.MoveTo(7, 9);
    std::int32_t x = 0;
    std::int32_t y = 0;
    ASSERT_TRUE(display->Pointer(x, y));
    EXPECT_EQ(x, 100 + 20 + 7);
    EXPECT_EQ(y, 80 + 30 + 9);
    const Platform::SArea screen{0, 0, 1280, 720};
    EXPECT_EQ(display->Monitors(), (std::vector{screen}));
    EXPECT_EQ(display->MonitorAt(x, y), screen);
    EXPECT_EQ(display->MonitorAt(-50, 9000), screen);
}

TEST(X11Display, AsksForANameOnce) {
    CXTestHost host;
    const auto display = Connected(host);
    const auto atom = display->Atom("WM_STATE");
    EXPECT_EQ(atom, host.Atom("WM_STATE"));
    EXPECT_EQ(display->Atom("WM_STATE"), atom);
}

TEST(X11Display, TakesTheDensityOfTheDesktop) {
    CXTestHost host;
    EXPECT_EQ(Connected(host)->DotsPerInch(), 96);
    const std::string resources = "Xft.antialias:\t1\nXft.dpi:\t144\n";
    xcb_change_property(host.Connection(), XCB_PROP_MODE_REPLACE, host.Root(), XCB_ATOM_RESOURCE_MANAGER,
        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(resources.size()), resources.data());
    host.Sync();
    EXPECT_EQ(Connected(host)->DotsPerInch(), 144);
}

TEST(X11Display, DoesNothingAfterTheDisplayHasGone) {
    std::unique_ptr<CX11Display> display;
    {
        CXTestHost host;
        display = Connected(host);
        EXPECT_FALSE(display->IsLost());
    }
    std::int32_t x = 0;
    std::int32_t y = 0;
    EXPECT_FALSE(display->Pointer(x, y));
    EXPECT_TRUE(display->IsLost());
    display->Put(1, Gradient(10, 10, 0));
    EXPECT_EQ(display->Atom("KAV_ANYTHING"), XCB_ATOM_NONE);
    EXPECT_EQ(display->Monitors().size(), 1u);
    EXPECT_FALSE(display->IsLeftControlHeld());
    display->Flush();
}

} // namespace KAV::Tests
