// How the panel changes: successive frames of a part of it, compared with committed sheets.

#include "gui/hint.h"
#include "tests/panel_pictures/film.h"
#include "tests/panel_pictures/painted_panel.h"
#include "tests/support/golden_picture.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

using GUI::SPixelRect;

constexpr SPixelRect GroupButtons{586, 18, 112, 68};
constexpr SPixelRect PatchName{164, 532, 195, 21};

class PanelFilms : public PaintedPanel {
protected:
    static constexpr SPixel Nowhere{377, 300}; // over the display of the gain reduction

    void SetUp() override {
        PaintedPanel::SetUp();
        Leave();
    }
    void Leave() {
        robot.Move(Nowhere.x, Nowhere.y);
        Settle();
    }
    /// A frame of now, and `frames - 1` more, each `ticks` ticks after the one before.
    void Roll(CFilm& film, const SPixelRect& area, int frames, int ticks = 2) {
        film.Add(Cut(Shown(), area));
        for (int frame = 1; frame < frames; ++frame) {
            for (int tick = 0; tick < ticks; ++tick) robot.Tick();
            film.Add(Cut(Shown(), area));
        }
    }
    /// Whether the film's last frame is what stays.
    testing::AssertionResult EndsThere(const CFilm& film, const SPixelRect& area) {
        Settle();
        return AreTheSame(film.Frames().back(), Cut(Shown(), area));
    }
    /// The smallest rectangle of whole pixels around a widget, `margin` larger on each side.
    static SPixelRect Around(const GUI::CWidget& widget, std::int32_t margin) {
        const auto rect = widget.PixelRect();
        return {rect.nL - margin, rect.nT - margin, rect.nW + 2 * margin, rect.nH + 2 * margin};
    }
    static testing::AssertionResult Is(const CFilm& film, const std::string& name) {
        return IsTheCommittedPicture(film.Sheet(), "panel/film_" + name);
    }
};

/// The sum of all colours of all pixels.
std::int64_t LightIn(const Pixels::SBitmap& picture) {
    std::int64_t sum = 0;
    for (std::size_t n = 0; n < picture.bytes.size(); ++n) {
        if (n % 4 != 3) sum += picture.bytes[n];
    }
    return sum;
}

/// Whether the light of the frames goes from the first to the last without turning back.
testing::AssertionResult FadesOneWay(const CFilm& film) {
    const auto& frames = film.Frames();
    const auto first = LightIn(frames.front());
    const auto last = LightIn(frames.back());
    for (std::size_t n = 1; n < frames.size(); ++n) {
        const auto step = LightIn(frames[n]) - LightIn(frames[n - 1]);
        if (last > first ? step < 0 : step > 0) return testing::AssertionFailure() << "not in frame " << n;
    }
    return testing::AssertionSuccess();
}

} // namespace

// What fades

TEST_F(PanelFilms, AHintAppearsAtItsPlaceAndStays) {
    constexpr SPixelRect area{240, 60, 124, 76};
    CFilm film(5);
    Point(Named(u"Threshold"));
    robot.Advance(GUI::CHint::DelayMs);
    Roll(film, area, 10);
    EXPECT_TRUE(EndsThere(film, area));
    EXPECT_TRUE(Is(film, "hint"));
}

TEST_F(PanelFilms, ASwitchFadesFromOneStateToTheOther) {
    const auto area = Around(Named(u"Limiter"), 1);
    CFilm film(5);
    effect->Set(12, 0.0f);
    Roll(film, area, 10);
    EXPECT_TRUE(EndsThere(film, area));
    EXPECT_TRUE(Is(film, "switch"));
}

TEST_F(PanelFilms, TheReleaseFaderFadesToHalf) {
    constexpr SPixelRect area{440, 230, 66, 90};
    CFilm film(10);
    effect->Set(8, 1.0f);
    Roll(film, area, 10);
    EXPECT_TRUE(EndsThere(film, area));
    EXPECT_TRUE(FadesOneWay(film));
    EXPECT_TRUE(Is(film, "auto_release"));
}

TEST_F(PanelFilms, TheLampBreathes) {
    const auto area = Around(Named(u"UpdateLed"), 4);
    CFilm film(12);
    Named(u"UpdateLed").SetVisible(true, 0);
    Roll(film, area, 36, 4);
    EXPECT_TRUE(Is(film, "lamp"));
}

// What moves

TEST_F(PanelFilms, ANewNameSlidesIntoItsDisplay) {
    CFilm film(2);
    Device().State().SetPatchName(u"Drums, loud");
    Roll(film, PatchName, 12);
    EXPECT_TRUE(EndsThere(film, PatchName));
    EXPECT_TRUE(Is(film, "patch_name"));
}

TEST_F(PanelFilms, AnotherGroupLetsTheFadersTravel) {
    constexpr SPixelRect caps{272, 118, 61, 190};
    effect->Set(5, 0.5f); // the threshold of group 2
    CFilm faders(10);
    Click(Named(u"ToolBtnFx2"));
    Roll(faders, caps, 10);
    EXPECT_TRUE(EndsThere(faders, caps));
    EXPECT_TRUE(Is(faders, "group_fader"));
}

TEST_F(PanelFilms, TheLightMovesToTheOtherGroup) {
    CFilm film(5);
    Click(Named(u"ToolBtnFx4"));
    robot.Move(Nowhere.x, Nowhere.y);
    Roll(film, GroupButtons, 10);
    EXPECT_TRUE(EndsThere(film, GroupButtons));
    EXPECT_TRUE(Is(film, "group_buttons"));
}

TEST_F(PanelFilms, CopyModePulsesUntilItEnds) {
    CFilm film(6);
    Click(Named(u"ToolBtnFxCopy"));
    robot.Move(Nowhere.x, Nowhere.y);
    Roll(film, GroupButtons, 12, 4);
    Click(Named(u"ToolBtnFxCopy"));
    robot.Move(Nowhere.x, Nowhere.y);
    Roll(film, GroupButtons, 6, 4);
    EXPECT_TRUE(EndsThere(film, GroupButtons));
    EXPECT_TRUE(Is(film, "copy_mode"));
}

TEST_F(PanelFilms, TheCopyToTheOtherSideTurnsWhileItIsPressed) {
    const auto area = Around(Named(u"ToolBtnABCopy"), 0);
    const auto key = Named(u"ToolBtnABCopy").PixelRect();
    const auto x = key.nL + key.nW - 1; // where the hint of a pressed widget leaves the key in sight
    const auto y = key.nT + key.nH / 2;
    CFilm film(9);
    robot.Move(x, y);
    robot.Press(x, y);
    Roll(film, area, 9);
    robot.Release(x, y);
    robot.Move(Nowhere.x, Nowhere.y);
    Roll(film, area, 9);
    EXPECT_TRUE(EndsThere(film, area));
    EXPECT_TRUE(Is(film, "copy_to_other_side"));
}

// Macros

TEST_F(PanelFilms, AMacroOpensAndCloses) {
    constexpr SPixelRect area{272, 262, 61, 50};
    CFilm film(10);
    Click(Named(u"Macro 1", 1));
    Roll(film, area, 10);
    EXPECT_TRUE(EndsThere(film, area));
    Click(Named(u"Macro 1", 1));
    Roll(film, area, 10);
    EXPECT_TRUE(EndsThere(film, area));
    EXPECT_TRUE(Is(film, "macro"));
}

TEST_F(PanelFilms, OneMacroGivesWayToAnother) {
    constexpr SPixelRect area{272, 262, 61, 50};
    Device().State().AssignMacro(1, 33, 0.9f);
    Device().State().AssignMacro(1, 133, 0.2f);
    CFilm film(10);
    Click(Named(u"Macro 1", 1));
    Settle();
    Click(Named(u"Macro 2", 1));
    Roll(film, area, 10);
    EXPECT_TRUE(EndsThere(film, area));
    EXPECT_TRUE(Is(film, "macro_to_macro"));
}

// What lies over the panel

TEST_F(PanelFilms, TheAboutViewComesAndGoesAtOnce) {
    constexpr SPixelRect area{316, 12, 122, 78};
    CFilm film(10);
    Gui().OpenAbout();
    Roll(film, area, 10, 8);
    Click(Named(u"BtnOk"));
    Roll(film, area, 10);
    EXPECT_TRUE(EndsThere(film, area));
    EXPECT_TRUE(Is(film, "about"));
}
