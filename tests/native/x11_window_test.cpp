#include "tests/native/x11_editor.h"

#include <csignal>

namespace KAV::Tests {

namespace {

using Native::CX11Window;
using SPlace = CXTestHost::SPlace;

constexpr std::uint32_t Red = 0xFFFF0000;
constexpr std::uint32_t Black = 0xFF000000;

std::vector<std::uint32_t> Part(const std::vector<std::uint32_t>& values, std::size_t begin) {
    return values.size() < begin + 2 ? std::vector<std::uint32_t>{}
                                     : std::vector<std::uint32_t>{values[begin], values[begin + 1]};
}

} // namespace

TEST(X11Window, IsAHiddenChildOfTheHostsWindowInItsFormat) {
    CXTestHost host;
    std::u16string reason;
    const auto window = CX11Window::Create(host.Display(), host.Parent(), 200, 150, reason);
    ASSERT_NE(window, nullptr);
    const auto id = host.Editor();
    ASSERT_NE(id, 0u);
    EXPECT_EQ(host.Place(id), (SPlace{0, 0, 200, 150, host.Place(host.Parent()).depth}));
    EXPECT_EQ(host.VisualOf(id), host.VisualOf(host.Parent()));
    EXPECT_FALSE(host.IsViewable(id));
    EXPECT_FALSE(window->IsThere()); // it hasn't begun
}

TEST(X11Window, TakesTheFormatOfAParentThatMayBeTransparent) {
    CXTestHost host({.depth = 32});
    CX11Editor editor(host);
    EXPECT_EQ(host.Place(editor.id).depth, 32);
    EXPECT_EQ(host.VisualOf(editor.id), host.VisualOf(host.Parent()));
    EXPECT_TRUE(editor.Until([&] { return host.Pixel(editor.id, 199, 149) == Black; }));
    EXPECT_TRUE(editor.Until([&] { return editor.Fill(Red); }));
    EXPECT_TRUE(editor.Until([&] { return host.Pixel(editor.id, 199, 149) == Red; }));
}

TEST(X11Window, SaysWhyItCannotBe) {
    CXTestHost host;
    std::u16string reason;
    EXPECT_EQ(CX11Window::Create(host.Display(), 0x4711, 200, 150, reason), nullptr);
    EXPECT_EQ(reason, u"the host's window doesn't exist");
    EXPECT_EQ(CX11Window::Create(":4711", host.Parent(), 200, 150, reason), nullptr);
    EXPECT_EQ(reason, u"no connection to the display");
}

TEST(X11Window, LeavesNothingWhenItEndsBeforeItBegins) {
    CXTestHost host;
    std::u16string reason;
    CX11Window::Create(host.Display(), host.Parent(), 200, 150, reason);
    for (int n = 0; n < 1000 && host.Editor() != 0; ++n) host.Sync();
    EXPECT_TRUE(host.Children(host.Parent()).empty());
}

TEST(X11Window, LeavesNothingWhenItEnds) {
    CXTestHost host;
    CX11Editor editor(host);
    editor.window->End();
    EXPECT_TRUE(host.Children(host.Parent()).empty()); // at once
    EXPECT_FALSE(editor.window->IsThere());
    EXPECT_FALSE(editor.window->Round(editor.wake));
    EXPECT_EQ(editor.heard.Count("gone"), 0);
}

TEST(X11Window, TellsSocketsThatItIsToBeMappedAndHowLargeItIs) {
    CXTestHost host;
    CX11Editor editor(host);
    EXPECT_EQ(host.Property(editor.id, "_XEMBED_INFO"), (std::vector<std::uint32_t>{0, 1}));
    const auto hints = host.Property(editor.id, "WM_NORMAL_HINTS");
    ASSERT_EQ(hints.size(), 18u);
    EXPECT_EQ(hints[0], 8u + 16u + 256u);
    const std::vector<std::uint32_t> size{200, 150};
    EXPECT_EQ(Part(hints, 3), size);
    EXPECT_EQ(Part(hints, 5), size);
    EXPECT_EQ(Part(hints, 15), size);
    editor.window->Show(false);
    EXPECT_TRUE(editor.Until([&] { return !host.IsViewable(editor.id); }));
    EXPECT_EQ(host.Property(editor.id, "_XEMBED_INFO"), (std::vector<std::uint32_t>{0, 0}));
}

TEST(X11Window, WaitsForNoHostThatRedirectsWhatItAsksFor) {
    CXTestHost host({.redirects = true});
    CX11Editor editor(host); // creating and showing have returned
    editor.window->Resize(180, 120);
    EXPECT_FALSE(host.IsViewable(editor.id));
    EXPECT_FALSE(editor.Fill(Red));
    EXPECT_TRUE(editor.Until([&] { return host.Answer() > 0 && host.IsViewable(editor.id); }));
    EXPECT_TRUE(editor.Until([&] { return editor.heard.paints > 0 && editor.Fill(Red); }));
    EXPECT_TRUE(editor.Shows(10, 10, Red));
}

TEST(X11Window, TakesTheSizeThatItIsGiven) {
    CXTestHost host;
    CX11Editor editor(host);
    editor.window->Resize(210, 160);
    EXPECT_TRUE(editor.Until([&] { return host.Place(editor.id).width == 210; }));
    EXPECT_EQ(host.Place(editor.id).height, 160);
    EXPECT_EQ(Part(host.Property(editor.id, "WM_NORMAL_HINTS"), 5), (std::vector<std::uint32_t>{210, 160}));
    editor.window->ResizeParent(333, 222);
    EXPECT_TRUE(editor.Until([&] { return host.Place(host.Parent()).width == 333; }));
    EXPECT_EQ(host.Place(host.Parent()).height, 222);
}

TEST(X11Window, KeepsItsPictureWhereItIsWhenTheHostGivesItASize) {
    CXTestHost host;
    CX11Editor editor(host);
    ASSERT_TRUE(editor.Until([&] { return editor.Fill(Red); }));
    ASSERT_TRUE(editor.Shows(199, 149, Red));
    host.Resize(editor.id, 300, 250);
    EXPECT_TRUE(editor.Shows(200, 150, Black));
    EXPECT_TRUE(editor.Shows(0, 0, Red));
    EXPECT_TRUE(editor.Shows(199, 149, Red));
    EXPECT_TRUE(editor.Shows(299, 249, Black));
    editor.Lines();
    EXPECT_EQ(host.Place(editor.id), (SPlace{0, 0, 300, 250, 24})); // it doesn't fight
    EXPECT_EQ(Part(host.Property(editor.id, "WM_NORMAL_HINTS"), 5), (std::vector<std::uint32_t>{200, 150}));
    host.Resize(editor.id, 50, 40);
    EXPECT_TRUE(editor.Shows(49, 39, Red));
}

TEST(X11Window, EndsARoundWhenItIsWokenAndLeavesTheWakeToItsOwner) {
    CXTestHost host;
    CX11Editor editor(host);
    editor.Lines();
    editor.window->SetRate(1);
    eventfd_write(editor.wake, 1);
    EXPECT_TRUE(editor.window->Round(editor.wake));
    eventfd_t count = 0;
    EXPECT_EQ(eventfd_read(editor.wake, &count), 0);
    EXPECT_EQ(count, 1u);
}

TEST(X11Window, TellsOnceThatTheHostHasDestroyedItsParent) {
    CXTestHost host;
    CX11Editor editor(host);
    host.Destroy(host.Parent());
    EXPECT_TRUE(editor.Until([&] { return editor.heard.Count("gone") > 0; }));
    EXPECT_FALSE(editor.window->IsThere());
    EXPECT_FALSE(editor.window->Round(editor.wake));
    EXPECT_FALSE(editor.window->Round(editor.wake));
    EXPECT_EQ(editor.heard.Count("gone"), 1);
    EXPECT_FALSE(editor.Fill(Red));
    editor.window->Show(true); // what the editor still asks for does no harm
    editor.window->Focus();
    editor.window->End();
}

TEST(X11Window, TellsOnceThatTheDisplayHasGone) {
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN; // NOLINT(cppcoreguidelines-pro-type-cstyle-cast)
    sigaction(SIGPIPE, &ignored, nullptr);
    auto host = std::make_unique<CXTestHost>();
    CX11Editor editor(*host);
    host->KillServer();
    EXPECT_TRUE(editor.Until([&] { return editor.heard.Count("gone") > 0; }));
    EXPECT_FALSE(editor.window->IsThere());
    EXPECT_FALSE(editor.window->Round(editor.wake));
    EXPECT_EQ(editor.heard.Count("gone"), 1);
    EXPECT_FALSE(editor.Fill(Red));
    editor.window->End();
}

TEST(X11Window, KnowsTheHostsTopLevelWindowWhereverItsParentGoes) {
    CXTestHost host;
    CX11Editor editor(host);
    EXPECT_EQ(editor.loop.HostWindow(), host.Top());
    const auto top = host.MakeWindow(host.Root(), 500, 100, 500, 400);
    const auto socket = host.MakeWindow(top, 10, 10, 450, 350);
    host.Show(socket, true);
    host.Show(top, true);
    host.Reparent(host.Parent(), socket, 5, 5);
    EXPECT_TRUE(editor.Until([&] { return editor.loop.HostWindow() == top; })); // the child of the root
    const auto frame = host.MakeWindow(host.Root(), 480, 90, 600, 500);
    host.Show(frame, true);
    host.Reparent(top, frame, 1, 1);
    EXPECT_TRUE(editor.Until([&] { return editor.loop.HostWindow() == frame; }));
    host.MarkAsTop(top); // a window manager does that last
    EXPECT_TRUE(editor.Until([&] { return editor.loop.HostWindow() == top; }));
}

} // namespace KAV::Tests
