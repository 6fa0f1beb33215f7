#include "tests/native/x11_editor.h"

#include <fstream>
#include <sstream>

namespace KAV::Tests {

namespace {

constexpr std::uint32_t Red = 0xFFFF0000;
constexpr std::uint32_t Green = 0xFF00FF00;
constexpr std::uint32_t Blue = 0xFF0000FF;

/// The pieces of shared memory that this process has made: the number of those that go with it, and of those
/// that would stay.
struct SShared {
    int marked = 0;
    int unmarked = 0;
};
SShared SharedMemory() {
    SShared shared;
    std::ifstream file("/proc/sysvipc/shm");
    std::string line;
    std::getline(file, line); // the heading
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        std::int64_t key = 0;
        std::int64_t id = 0;
        std::uint64_t size = 0;
        std::string mode;
        pid_t maker = 0;
        fields >> key >> id >> mode >> size >> maker;
        constexpr unsigned goes = 01000;
        if (maker == getpid())
            ++((std::stoul(mode, nullptr, 8) & goes) != 0 ? shared.marked : shared.unmarked);
    }
    return shared;
}

/// The display does nothing for others meanwhile.
class CStandstill {
public:
    explicit CStandstill(CXTestHost& host) : _host(host) {
        xcb_grab_server(_host.Connection());
        _host.Sync();
    }
    ~CStandstill() {
        xcb_ungrab_server(_host.Connection());
        _host.Sync();
    }
    CStandstill(const CStandstill&) = delete;
    CStandstill& operator=(const CStandstill&) = delete;

private:
    CXTestHost& _host;
};

void ShowsEachPixelOfALargePicture(CXTestHost& host) {
    CX11Editor editor(host);
    editor.window->Resize(390, 290);
    constexpr std::int32_t stride = 400; // pixels
    std::vector<std::uint32_t> pixels(stride * 290);
    for (std::size_t n = 0; n < pixels.size(); ++n)
        pixels[n] = 0xFF000000 | static_cast<std::uint32_t>(n * 2654435761u >> 8u);
    const Platform::SArea all{0, 0, 390, 290};
    ASSERT_TRUE(editor.Until([&] {
        return host.Place(editor.id).width == 390 &&
               editor.window->Put(pixels.data(), stride * 4, 390, 290, std::span(&all, 1));
    }));
    ASSERT_TRUE(editor.Shows(389, 289, pixels[289 * stride + 389]));
    const auto shown = host.Pixels(editor.id, 0, 0, 390, 290);
    for (std::int32_t y = 0; y < 290; ++y) {
        for (std::int32_t x = 0; x < 390; ++x)
            ASSERT_EQ(shown[static_cast<std::size_t>(y * 390 + x)] & 0xFFFFFF,
                pixels[static_cast<std::size_t>(y * stride + x)] & 0xFFFFFF)
                << x << ", " << y;
    }
}

void ShowsOnlyTheAreasThatAreDue(CXTestHost& host) {
    CX11Editor editor(host);
    ASSERT_TRUE(editor.Until([&] { return editor.Fill(Red); }));
    ASSERT_TRUE(editor.Shows(0, 0, Red));
    ASSERT_TRUE(editor.Until([&] { return editor.Fill(Green, {{10, 20, 30, 40}, {150, 100, 900, 900}}); }));
    ASSERT_TRUE(editor.Shows(199, 149, Green));
    for (const auto& [x, y] : {std::pair{10, 20}, {39, 59}, {150, 100}})
        EXPECT_EQ(host.Pixel(editor.id, x, y) & 0xFFFFFF, Green & 0xFFFFFF) << x << ", " << y;
    for (const auto& [x, y] : {std::pair{9, 20}, {10, 19}, {40, 59}, {39, 60}, {149, 100}, {150, 99}})
        EXPECT_EQ(host.Pixel(editor.id, x, y) & 0xFFFFFF, Red & 0xFFFFFF) << x << ", " << y;
}

/// After parts of it were put one after the other.
void ShowsAgainWhatWasCovered(CXTestHost& host) {
    CX11Editor editor(host);
    for (const auto& [colour, area] : {std::pair{Red, Platform::SArea{0, 0, 200, 150}},
             {Green, Platform::SArea{0, 0, 50, 150}}, {Blue, Platform::SArea{150, 0, 50, 150}}})
        ASSERT_TRUE(editor.Until([&, c = colour, a = area] { return editor.Fill(c, {a}); }));
    ASSERT_TRUE(editor.Shows(199, 0, Blue));
    const auto cover = host.MakeWindow(host.Top(), 0, 0, 220, 100);
    host.Show(cover, true);
    editor.Lines();
    host.Show(cover, false);
    EXPECT_TRUE(editor.Shows(100, 0, Red));
    EXPECT_TRUE(editor.Shows(0, 0, Green));
    EXPECT_TRUE(editor.Shows(199, 0, Blue));
}

/// Refuses pictures while the display is busy with `many`, and asks for one when it no longer is.
void WaitsForNoBusyDisplay(CXTestHost& host, int many) {
    CX11Editor editor(host);
    for (int n = 0; n < 4; ++n) ASSERT_TRUE(editor.Until([&] { return editor.Fill(Red); }));
    ASSERT_TRUE(editor.Shows(0, 0, Red));
    editor.Lines();
    const std::vector<Platform::SArea> corner{{0, 0, 20, 20}}; // more wouldn't fit into the connection
    int taken = 0;
    {
        const CStandstill standstill(host);
        while (taken < 10 && editor.Fill(Blue, corner)) ++taken;
        EXPECT_EQ(taken, many);
        editor.heard.paints = 0;
        editor.Run();
        EXPECT_FALSE(editor.Fill(Green, corner));
        EXPECT_EQ(editor.heard.paints, 0);
    }
    EXPECT_TRUE(editor.Until([&] { return editor.heard.paints > 0; }));
    EXPECT_TRUE(editor.Fill(Green, corner));
    EXPECT_TRUE(editor.Shows(0, 0, Green));
}

} // namespace

TEST(X11Picture, ShowsEachPixelOfALargePicture) {
    CXTestHost host;
    ShowsEachPixelOfALargePicture(host);
}

TEST(X11Picture, ShowsEachPixelWithoutSharedMemory) {
    CXTestHost host({.without = "MIT-SHM"});
    ShowsEachPixelOfALargePicture(host);
    EXPECT_EQ(SharedMemory().marked, 0);
}

TEST(X11Picture, ShowsOnlyTheAreasThatAreDue) {
    CXTestHost host;
    ShowsOnlyTheAreasThatAreDue(host);
}

TEST(X11Picture, ShowsOnlyTheAreasThatAreDueWithoutSharedMemory) {
    CXTestHost host({.without = "MIT-SHM"});
    ShowsOnlyTheAreasThatAreDue(host);
}

TEST(X11Picture, IsCompleteAgainAfterItWasCovered) {
    CXTestHost host;
    ShowsAgainWhatWasCovered(host);
}

TEST(X11Picture, IsCompleteAgainWithoutSharedMemory) {
    CXTestHost host({.without = "MIT-SHM"});
    ShowsAgainWhatWasCovered(host);
}

TEST(X11Picture, IsRefusedWhileTheDisplayIsBusyWithTwoAndAskedForAfterwards) {
    CXTestHost host;
    WaitsForNoBusyDisplay(host, 2);
}

TEST(X11Picture, IsRefusedWhileTheDisplayIsBusyWithOneThatIsNotShared) {
    CXTestHost host({.without = "MIT-SHM"});
    WaitsForNoBusyDisplay(host, 1);
}

TEST(X11Picture, LiesInMemoryThatGoesWithTheProcess) {
    CXTestHost host;
    {
        CX11Editor editor(host);
        for (int n = 0; n < 4; ++n) ASSERT_TRUE(editor.Until([&] { return editor.Fill(Red); }));
        EXPECT_EQ(SharedMemory().marked, 2);
        EXPECT_EQ(SharedMemory().unmarked, 0);
    }
    for (int n = 0; n < 1000 && SharedMemory().marked > 0; ++n) host.Sync();
    EXPECT_EQ(SharedMemory().marked, 0);
}

TEST(X11Picture, IsPutNowhereWhileTheHostHidesItsWindow) {
    CXTestHost host;
    CX11Editor editor(host);
    ASSERT_TRUE(editor.Until([&] { return editor.Fill(Red); }));
    host.Show(host.Top(), false); // neither the editor's window nor its parent hears of it
    EXPECT_TRUE(editor.Until([&] { return !editor.Fill(Blue); }));
    editor.heard.paints = 0;
    editor.Run();
    EXPECT_EQ(editor.heard.paints, 0);
    host.Show(host.Top(), true);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.paints > 0 && editor.Fill(Green); }));
    EXPECT_TRUE(editor.Shows(0, 0, Green));
}

TEST(X11Picture, IsPutNowhereWhileTheWindowItselfIsNotShown) {
    CXTestHost host;
    CX11Editor editor(host);
    ASSERT_TRUE(editor.Until([&] { return editor.Fill(Red); }));
    editor.window->Show(false);
    EXPECT_TRUE(editor.Until([&] { return !editor.Fill(Blue); }));
    editor.window->Show(true);
    EXPECT_TRUE(editor.Until([&] { return editor.Fill(Green); }));
}

TEST(X11Picture, IsPutNowhereWhileOtherWindowsCoverItAll) {
    CXTestHost host;
    CX11Editor editor(host);
    ASSERT_TRUE(editor.Until([&] { return editor.Fill(Red); }));
    const auto cover = host.MakeWindow(host.Root(), 90, 70, 600, 500, true);
    host.Show(cover, true);
    EXPECT_TRUE(editor.Until([&] { return !editor.Fill(Blue); }));
    editor.Run();
    EXPECT_FALSE(editor.Fill(Blue));
    editor.heard.paints = 0;
    host.Show(cover, false);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.paints > 0 && editor.Fill(Green); }));
    EXPECT_TRUE(editor.Shows(100, 100, Green));
}

TEST(X11Picture, IsPutWhileAPartOfTheWindowIsCovered) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto cover = host.MakeWindow(host.Root(), 90, 70, 60, 80, true);
    host.Show(cover, true);
    EXPECT_TRUE(editor.Until([&] { return editor.Fill(Blue); }));
    EXPECT_TRUE(editor.Shows(150, 100, Blue));
}

TEST(X11Picture, FollowsTheSizeOfTheWindow) {
    CXTestHost host;
    CX11Editor editor(host);
    for (int n = 0; n < 3; ++n) ASSERT_TRUE(editor.Until([&] { return editor.Fill(Red); }));
    editor.window->Resize(100, 50);
    const std::vector<std::uint32_t> pixels(350 * 280, Blue);
    const Platform::SArea small{0, 0, 100, 50};
    ASSERT_TRUE(editor.Until(
        [&] { return editor.window->Put(pixels.data(), 100 * 4, 100, 50, std::span(&small, 1)); }));
    EXPECT_TRUE(editor.Shows(99, 49, Blue));
    editor.window->Resize(350, 280);
    const Platform::SArea large{0, 0, 350, 280};
    ASSERT_TRUE(editor.Until(
        [&] { return editor.window->Put(pixels.data(), 350 * 4, 350, 280, std::span(&large, 1)); }));
    EXPECT_TRUE(editor.Shows(349, 279, Blue));
}

TEST(X11Picture, OfNoAreaOrNoSizeIsNothing) {
    CXTestHost host;
    CX11Editor editor(host);
    ASSERT_TRUE(editor.Until([&] { return editor.Fill(Red); }));
    EXPECT_TRUE(editor.Fill(Blue, {}));
    EXPECT_TRUE(editor.Until([&] {
        return editor.Fill(Blue, {{-50, -50, 40, 40}, {200, 0, 5, 5}, {0, 0, 0, 9}});
    }));
    const Platform::SArea area{0, 0, 10, 10};
    EXPECT_TRUE(editor.window->Put(nullptr, 0, 0, 0, std::span(&area, 1)));
    editor.Lines();
    EXPECT_TRUE(editor.Shows(0, 0, Red));
}

} // namespace KAV::Tests
