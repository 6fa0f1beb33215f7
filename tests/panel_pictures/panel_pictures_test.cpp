// The panel as the user sees it, compared with committed pictures.

#include "gui/value_widget.h"
#include "tests/panel_pictures/rendered_panel.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// Compares what the user then sees with the panel at rest, where nobody points at anything.
class PanelPictures : public RenderedPanel {
protected:
    static constexpr SPixel Nowhere{377, 300}; // over the display of the gain reduction

    Pixels::SBitmap rest;

    void SetUp() override {
        RenderedPanel::SetUp();
        robot.Move(Nowhere.x, Nowhere.y);
        Settle();
        rest = Shown();
    }
    void Leave() {
        robot.Move(Nowhere.x, Nowhere.y);
        Settle();
    }
    testing::AssertionResult Is(const std::string& name) {
        return DiffersAsExpected(Shown(), rest, "panel/" + name);
    }
};

} // namespace

TEST_P(RenderedPanel, AtRestIsTheCommittedPicture) {
    for (const std::int32_t width : {500, 754, 1508}) {
        ShowAtWidth(width);
        EXPECT_TRUE(IsExpected(Shown(), "panel/rest_" + std::to_string(width)));
    }
}

TEST_P(RenderedPanel, AtWorkIsTheCommittedPicture) {
    for (const std::int32_t width : {500, 754, 1508}) {
        ShowAtWidth(width);
        const auto rest = Shown();
        effect->Set(4, 0.7f);
        effect->Set(24, 0.8f);
        Play(250, 1.6f);
        EXPECT_TRUE(DiffersAsExpected(Shown(), rest, "panel/busy_" + std::to_string(width), true));
        Renew(); // without a history of the curve
    }
}

// The pointer

TEST_P(PanelPictures, AFaderUnderThePointerShowsItsValueInAHint) {
    Point(Named(u"Threshold"));
    Settle();
    EXPECT_TRUE(Is("hint_fader"));
}

TEST_P(PanelPictures, AButtonOfTheToolbarSaysWhatItDoes) {
    Point(Named(u"ToolBtnABCopy"));
    Settle();
    EXPECT_TRUE(Is("hint_toolbar"));
}

TEST_P(PanelPictures, TheHintsStayWithinThePanel) {
    Point(Named(u"ToolBtnFxCopy"));
    Settle();
    EXPECT_TRUE(Is("hint_at_the_edge"));
}

TEST_P(PanelPictures, APressedButtonIsLit) {
    const auto [x, y] = MiddleOf(Named(u"ToolBtnSave"));
    robot.Move(x, y);
    robot.Press(x, y);
    Settle();
    EXPECT_TRUE(Is("pressed"));
    robot.Release(x, y);
}

// Values

TEST_P(PanelPictures, FadersStandAtTheirPrintedNumbers) {
    effect->Set(0, 0.5f);
    effect->Set(4, 1.0f / 3.0f);
    effect->Set(16, 0.2f);
    effect->Set(20, 0.0f);
    Settle();
    EXPECT_TRUE(Is("faders"));
}

TEST_P(PanelPictures, KnobsTurnFromEndToEnd) {
    dynamic_cast<GUI::CValueWidget&>(Named(u"Main Input Gain")).SetValue(0.0f, false);
    dynamic_cast<GUI::CValueWidget&>(Named(u"Main Output Gain")).SetValue(1.0f, false);
    for (int n = 0; n < 5; ++n)
        dynamic_cast<GUI::CValueWidget&>(WithId(24 + n)).SetValue(0.25f * static_cast<float>(n), false);
    Settle();
    EXPECT_TRUE(Is("knobs"));
}

TEST_P(PanelPictures, ALimiterThatIsOffIsDark) {
    Click(Named(u"Limiter"));
    Leave();
    EXPECT_TRUE(Is("limiter_off"));
}

TEST_P(PanelPictures, AutoReleaseFadesTheFader) {
    Click(Named(u"Auto Release"));
    Leave();
    EXPECT_TRUE(Is("auto_release"));
}

TEST_P(PanelPictures, OversamplingAndHighQuality) {
    Click(Named(u"ToolBtnNextOS"));
    Click(Named(u"ToolBtnNextOS"));
    Click(Named(u"Hiqh Quality"));
    Leave();
    EXPECT_TRUE(Is("oversampling"));
}

// Groups and channels

TEST_P(PanelPictures, AnotherGroupShowsItsOwnValues) {
    effect->Set(5, 0.4f); // the threshold of group 2
    Click(Named(u"ToolBtnFx2"));
    Leave();
    EXPECT_TRUE(Is("group_2"));
}

TEST_P(PanelPictures, SoloAndMuteColourTheGroups) {
    Click(Named(u"ToolBtnFx3"), GUI::MouseLeft | GUI::MouseShift);
    Click(Named(u"ToolBtnFx1"), GUI::MouseLeft | GUI::MouseDouble);
    Leave();
    EXPECT_TRUE(Is("solo_and_mute"));
}

TEST_P(PanelPictures, CopyModePulses) {
    Click(Named(u"ToolBtnFxCopy"));
    robot.Move(Nowhere.x, Nowhere.y);
    robot.Advance(1250);
    EXPECT_TRUE(Is("copy_mode"));
}

TEST_P(PanelPictures, GroupsAndMacrosHaveTheNamesOfTheUser) {
    Device().State().NameGroup(0, u"\u0394\u03B9\u03AC\u03BB\u03BF\u03B3\u03BF\u03C2");
    Device().State().NameGroup(1, u"\u041C\u0443\u0437\u044B\u043A\u0430");
    Device().State().NameGroup(2, u"");
    Device().State().NameGroup(3, u"A name that is far too long"); // all of them in the embedded typeface
    Device().State().NameMacro(0, u"Loudness of the whole mix");
    Device().State().NameMacro(1, u"");
    Settle();
    EXPECT_TRUE(Is("names"));
}

// Routings

TEST_P(PanelPictures, ASurroundRoutingNamesItsChannels) {
    Device().State().SetRouting(
        "<kav_input_routing>\r\n\t<name>5.1</name>\r\n\t<map>0,-1|*|1,-1|*|2,-1|*|3,-1|*|4,-1|*|5,-1</map>"
        "\r\n\t<ch_names>L|*|R|*|C|*|LFE|*|Ls|*|Rs</ch_names>\r\n</kav_input_routing>",
        -1);
    Settle();
    EXPECT_TRUE(Is("routing_surround"));
}

TEST_P(PanelPictures, AMidSideRoutingCannotBeEdited) {
    Device().State().SetRouting(
        "<kav_input_routing>\r\n\t<name>M/S</name>\r\n\t<type>mid/side</type>\r\n\t<map>0,-1|*|1,-1</map>"
        "\r\n\t<ch_names>M|*|S</ch_names>\r\n</kav_input_routing>",
        -1);
    Settle();
    EXPECT_TRUE(Is("routing_mid_side"));
}

TEST_P(PanelPictures, ARoutingIsPutTogether) {
    Click(Named(u"ToolBtnRoutingEdit"));
    Click(Named(u"ToolCh6"), GUI::MouseLeft | GUI::MouseShift);
    Leave();
    EXPECT_TRUE(Is("routing_edit"));
}

// Patches

TEST_P(PanelPictures, ALongPatchNameEndsInAnEllipsis) {
    Device().State().SetPatchName(u"Mastering, loud, with a long release and a ceiling of -1 dB");
    Settle();
    EXPECT_TRUE(Is("patch_name"));
}

TEST_P(PanelPictures, TheOtherSideIsB) {
    Click(Named(u"ToolBtnA"));
    Leave();
    EXPECT_TRUE(Is("side_b"));
}

TEST_P(PanelPictures, AStepThatCanBeUndoneLightsItsButton) {
    Wheel(Named(u"Threshold"), -3.0f);
    Leave();
    EXPECT_TRUE(Is("undo"));
    Click(Named(u"ToolBtnUndo"));
    Leave();
    EXPECT_TRUE(Is("redo"));
}

// Macros

TEST_P(PanelPictures, AnOpenMacroHasAKnobForEachGroupOnEachFader) {
    Click(Named(u"Macro 1", 1));
    Leave();
    EXPECT_TRUE(Is("macro_open"));
}

TEST_P(PanelPictures, SensitivitiesShowTheirDirection) {
    Device().State().AssignMacro(1, 33, 0.9f);
    Device().State().AssignMacro(1, 133, 0.2f);
    Device().State().AssignMacro(1, 232, 1.0f);
    Device().State().AssignMacro(1, 37, 0.0f);
    Click(Named(u"Macro 2", 1));
    Leave();
    EXPECT_TRUE(Is("macro_sensitivities"));
}

// What lies over the panel

TEST_P(PanelPictures, TheAboutViewCoversThePanel) {
    Gui().OpenAbout();
    Settle();
    const auto view = Shown();
    EXPECT_NE(view.bytes, rest.bytes);
}

TEST_P(PanelPictures, TheLampOfANewVersion) {
    Named(u"UpdateLed").SetVisible(true, 0);
    robot.Advance(1000);
    EXPECT_TRUE(Is("lamp"));
}

INSTANTIATE_TEST_SUITE_P(Renderers, RenderedPanel, testing::ValuesIn(ComparedRenderers()), RendererName);
INSTANTIATE_TEST_SUITE_P(Renderers, PanelPictures, testing::ValuesIn(ComparedRenderers()), RendererName);
