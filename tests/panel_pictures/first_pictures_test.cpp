// What the user sees when the window, its size or its renderer is new: whole pictures of the panel, nothing
// else.

#include "device_gui/about_switches.h"
#include "gfx/renderers.h"
#include "gui/value_widget.h"
#include "tests/panel_pictures/film.h"
#include "tests/panel_pictures/painted_panel.h"
#include "tests/support/golden_picture.h"

#include <algorithm>

using namespace KAV;
using namespace KAV::Tests;

namespace {

// Entries of the settings menu
constexpr std::int32_t Settings = -3;
constexpr std::int32_t Processor = 45;
constexpr std::int32_t OpenGL = 46;

class FirstPictures : public PaintedPanel {
protected:
    static constexpr SPixel Edge{750, 276};
    static constexpr SPixel Nowhere{377, 300}; // over the display of the gain reduction

    std::vector<Pixels::SBitmap> seen; ///< every picture since Watch()

    void SetUp() override {
        PaintedPanel::SetUp();
        robot.Move(Nowhere.x, Nowhere.y);
        Settle();
    }
    void Watch() {
        seen.clear();
        kept.picture = {};
        kept.afterPut = [this] { seen.push_back(kept.picture); };
    }
    static bool IsWhole(const Pixels::SBitmap& picture, std::int32_t width, std::int32_t height) {
        if (picture.width != width || picture.height != height) return false;
        for (std::size_t n = 3; n < picture.bytes.size(); n += 4) {
            if (picture.bytes[n] != 255) return false;
        }
        return true;
    }
    /// What a window shows that opens at this width.
    Pixels::SBitmap OpenedAt(std::int32_t width) {
        Close();
        Device().State().ResizeToWidth(width);
        Open();
        Settle();
        return Shown();
    }
};

} // namespace

TEST_F(FirstPictures, AWindowShowsTheWholePanelFromTheFirstOneOn) {
    const auto rest = Shown();
    Close();
    Watch();
    Open();
    Settle();
    ASSERT_FALSE(seen.empty());
    for (const auto& picture : seen) EXPECT_TRUE(AreTheSame(picture, rest));
}

TEST_F(FirstPictures, AWindowThatOpensAgainShowsWhatTheHostHasSetMeanwhile) {
    Close();
    effect->Set(4, 0.4f);
    effect->Set(12, 0.0f);
    effect->Set(24, 0.9f);
    Watch();
    Open();
    Settle();
    ASSERT_FALSE(seen.empty());
    for (const auto& picture : seen) ASSERT_TRUE(IsWhole(picture, 754, 553));
    CFilm film(5);
    for (std::size_t n = 0; n < std::min<std::size_t>(seen.size(), 10); ++n)
        film.Add(Cut(seen[n], {270, 112, 160, 90}));
    EXPECT_TRUE(IsTheCommittedPicture(film.Sheet(), "panel/film_opening"));
}

TEST_F(FirstPictures, AtTheEdgeTheWindowStretchesAndIsSharpInTheEnd) {
    constexpr GUI::SPixelRect area{8, 12, 190, 62};
    CFilm film(2);
    film.Add(Cut(Shown(), area));
    robot.Press(Edge.x, Edge.y);
    for (const std::int32_t width : {720, 650, 560, 620, 700}) {
        Watch();
        robot.Move(width - (754 - Edge.x), Edge.y);
        const auto height = static_cast<std::int32_t>(static_cast<float>(width) / 1.363472f);
        ASSERT_FALSE(seen.empty()) << "the system would show what it had, in the wrong size";
        for (const auto& picture : seen) ASSERT_TRUE(IsWhole(picture, width, height)) << width;
        film.Add(Cut(Shown(), area));
    }
    robot.Release(700 - (754 - Edge.x), Edge.y);
    robot.Move(Nowhere.x, Nowhere.y);
    robot.Tick();
    film.Add(Cut(Shown(), area));
    EXPECT_TRUE(IsTheCommittedPicture(film.Sheet(), "panel/film_resizing"));
    const auto sharp = Shown();
    EXPECT_TRUE(AreTheSame(sharp, OpenedAt(700)));
}

TEST_F(FirstPictures, AnotherRendererBeginsWithTheWholePanel) {
    const auto rest = Shown();
    for (const auto item : {Processor, OpenGL}) {
        Watch();
        Command(Settings, item);
        Settle();
        ASSERT_FALSE(seen.empty());
        for (const auto& picture : seen) EXPECT_TRUE(AreTheSame(picture, rest)) << item;
    }
}

TEST_F(FirstPictures, TheSameRendererAgainDrawsNothing) {
    Command(Settings, Processor);
    Settle();
    Watch();
    Command(Settings, Processor);
    Settle();
    EXPECT_TRUE(seen.empty());
}

TEST_F(FirstPictures, ARendererThatDoesNotWorkLeavesNoTrace) {
    const auto rest = Shown();
    table[GFX::OpenGL] = {u"OpenGL",
        [](const GFX::SRendererTarget&, GFX::EReason) -> std::unique_ptr<GFX::GPU> { return nullptr; }, true};
    Watch();
    Command(Settings, OpenGL);
    Settle();
    ASSERT_FALSE(seen.empty());
    for (const auto& picture : seen) EXPECT_TRUE(AreTheSame(picture, rest));
    EXPECT_EQ(window.boxes.size(), 1u);
}

TEST_F(FirstPictures, TheAboutViewStaysWhileItsSwitchChangesTheRenderer) {
    constexpr GUI::SPixelRect mayDiffer{300, 0, 454, 130}; // the mark pulses, the switch turns
    Gui().OpenAbout();
    Settle();
    const auto without = [&](Pixels::SBitmap picture) {
        Paste(Pixels::TransparentBitmap(mayDiffer.nW, mayDiffer.nH), mayDiffer.nL, mayDiffer.nT, picture);
        return picture;
    };
    const auto before = without(Shown());
    Watch();
    Gui().Find<CSwitchGPU>()->SetItem(0, false);
    Settle();
    ASSERT_FALSE(seen.empty());
    for (std::size_t n = 0; n < seen.size(); ++n) ASSERT_TRUE(AreTheSame(without(seen[n]), before)) << n;
}

TEST_F(FirstPictures, NoneIsDrawnOrPushedWhileNothingMoves) {
    Settle();
    const auto puts = kept.puts;
    robot.Advance(5000);
    EXPECT_EQ(kept.puts, puts);
    EXPECT_FALSE(Gui().Frame().IsRedrawDue());
}
