// The buttons of the macros: what opens and closes their panels, and their names.

#include "tests/device_gui/open_macros.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class MacroBtn : public OpenMacros {
protected:
    /// How many buttons are on.
    std::size_t On() {
        std::size_t on = 0;
        for (const auto* const button : Gui().FindAll<CMacroBtn>()) on += button->Value() != 0.0f ? 1u : 0u;
        return on;
    }
};

} // namespace

TEST_F(MacroBtn, APressOpensThePanelsAndTheNextOneClosesThem) {
    Toggle(0);
    EXPECT_EQ(Button(0).Value(), 1.0f);
    for (std::size_t target = 0; target < Targets; ++target) {
        EXPECT_TRUE(PanelOver(target).IsVisible()) << target;
        for (std::size_t group = 0; group < Groups; ++group)
            EXPECT_TRUE(Sens(target, group).IsVisible()) << target << group;
    }
    Toggle(0);
    EXPECT_EQ(Button(0).Value(), 0.0f);
    for (std::size_t target = 0; target < Targets; ++target) {
        EXPECT_FALSE(PanelOver(target).IsVisible()) << target;
        for (std::size_t group = 0; group < Groups; ++group)
            EXPECT_FALSE(Sens(target, group).IsVisible()) << target << group;
    }
}

TEST_F(MacroBtn, SensitivitiesStayWhenThePanelsClose) {
    Toggle(0);
    Sens(1, 0).SetValue(0.75f, true);
    Toggle(0);
    EXPECT_EQ(Table(0), "33;0.750");
    Toggle(0);
    EXPECT_EQ(Sens(1, 0).Value(), 0.75f);
}

TEST_F(MacroBtn, PanelsFadeInAQuarterOfASecond) {
    Click(Button(0));
    EXPECT_EQ(PanelOver(0).sVisible.fValue, 0.0f) << "before the first tick";
    for (const auto* const widget : std::initializer_list<GUI::CWidget*>{&PanelOver(0), &Sens(0, 0)}) {
        EXPECT_EQ(widget->sVisible.nRiseMs, 250u);
        EXPECT_EQ(widget->sVisible.nFallMs, 250u);
    }
    robot.Advance(100);
    EXPECT_GT(PanelOver(0).sVisible.fValue, 0.0f);
    EXPECT_NE(PanelOver(0).sVisible.fValue, 1.0f);
    EXPECT_EQ(PanelOver(0).sVisible.fValue, Sens(3, 3).sVisible.fValue) << "all of them together";
    robot.Advance(200);
    EXPECT_EQ(PanelOver(0).sVisible.fValue, 1.0f);
    Click(Button(0));
    robot.Advance(100);
    EXPECT_NE(PanelOver(0).sVisible.fValue, 0.0f);
    EXPECT_NE(PanelOver(0).sVisible.fValue, 1.0f);
    robot.Advance(200);
    EXPECT_EQ(PanelOver(0).sVisible.fValue, 0.0f);
}

TEST_F(MacroBtn, PressesInTheMiddleOfAFadeLeaveThePanelsAsTheButtonIs) {
    for (int press = 0; press < 7; ++press) {
        Click(Button(0));
        robot.Advance(press % 3 == 0 ? 0 : 40);
        EXPECT_EQ(PanelOver(0).IsVisible(), Button(0).Value() != 0.0f) << press;
        EXPECT_EQ(Sens(2, 3).IsVisible(), Button(0).Value() != 0.0f) << press;
    }
    robot.Advance(300);
    EXPECT_EQ(PanelOver(0).sVisible.fValue, 1.0f);
}

TEST_F(MacroBtn, AnotherMacroTakesThePlaceOfTheOneThatIsOpen) {
    Toggle(0);
    Click(Button(3));
    EXPECT_EQ(Button(0).Value(), 0.0f);
    EXPECT_EQ(Button(3).Value(), 1.0f);
    EXPECT_EQ(On(), 1u);
    EXPECT_FALSE(PanelOver(0, 0).IsVisible());
    EXPECT_TRUE(PanelOver(0, 1).IsVisible());
    robot.Advance(100);
    EXPECT_NE(PanelOver(0, 0).sVisible.fValue, 0.0f) << "the old ones fade out";
    EXPECT_NE(PanelOver(0, 1).sVisible.fValue, 0.0f) << "while the new ones fade in";
    robot.Advance(200);
    EXPECT_EQ(PanelOver(0, 0).sVisible.fValue, 0.0f);
    EXPECT_EQ(PanelOver(0, 1).sVisible.fValue, 1.0f);
}

TEST_F(MacroBtn, EachMacroShowsItsOwnSensitivities) {
    Device().AssignMacro(0, 33, 0.9f);
    Device().AssignMacro(4, 33, 0.2f);
    Toggle(4); // the first one opened isn't the first of the macros
    EXPECT_EQ(Sens(1, 0, 0).Value(), 0.2f);
    Toggle(0);
    EXPECT_EQ(Sens(1, 0, 1).Value(), 0.9f);
    Sens(1, 0, 1).SetValue(0.3f, true);
    EXPECT_EQ(Table(0), "33;0.300");
    EXPECT_EQ(Table(4), "33;0.200");
}

TEST_F(MacroBtn, ItsNameIsBrightWhileItIsOnAndDimWhenItIsOff) {
    Toggle(0);
    EXPECT_EQ(Button(0).nTextColor, 0xFFFFFFFFu);
    const auto lettered = pictures.lettered.size();
    Toggle(1);
    EXPECT_EQ(Button(0).nTextColor, 0x64FFFFFFu);
    EXPECT_EQ(Button(1).nTextColor, 0xFFFFFFFFu);
    bool isDrawn = false;
    for (auto n = lettered; n < pictures.lettered.size(); ++n) {
        const auto& text = pictures.lettered[n];
        isDrawn = isDrawn || (text.sText == u"Macro 1" && text.nColor == 0x64FFFFFFu);
    }
    EXPECT_TRUE(isDrawn) << "the name is drawn in the new colour";
    Button(2).nTextColor = 0xFF123456;
    Toggle(2);
    Toggle(2);
    EXPECT_EQ(Button(2).nTextColor, 0x64123456u) << "only its alpha changes";
}

TEST_F(MacroBtn, NeitherTheHostNorTheHistoryHearsOfIt) {
    const auto before = Gui().Records();
    const auto chunk = Chunk(false);
    Toggle(0);
    Toggle(1);
    EXPECT_EQ(Told(), Lines{});
    EXPECT_EQ(Gui().Records(), before);
    EXPECT_EQ(Chunk(false), chunk);
}

TEST_F(MacroBtn, ModifiersAndADoubleClickPressAsUsual) {
    const auto [x, y] = MiddleOf(Button(0));
    robot.Move(x, y);
    robot.Click(x, y, GUI::MouseLeft | GUI::MouseShift);
    EXPECT_EQ(Button(0).Value(), 1.0f);
    robot.Click(x, y, GUI::MouseLeft | GUI::MouseControl);
    EXPECT_EQ(Button(0).Value(), 0.0f);
    robot.Click(x, y);
    robot.Click(x, y, GUI::MouseLeft | GUI::MouseDouble);
    EXPECT_EQ(Button(0).Value(), 0.0f);
    EXPECT_FALSE(PanelOver(0).IsVisible());
    robot.Wheel(1.0f);
    EXPECT_EQ(Button(0).Value(), 0.0f);
}

TEST_F(MacroBtn, ARightPressEditsTheNameAndOpensNothing) {
    const auto widgets = Gui().AllWidgets().size();
    Click(Button(1), GUI::MouseRight);
    EXPECT_EQ(Button(1).Value(), 0.0f);
    EXPECT_EQ(Gui().AllWidgets().size(), widgets);
    ASSERT_TRUE(window.textBox.has_value());
    EXPECT_EQ(window.textBox->text, u"Macro 2");
    EXPECT_FALSE(window.textBox->numbersOnly);
    EXPECT_EQ(window.textBox->place.nL, Button(1).PixelRect().nL);
    EXPECT_EQ(window.textBox->place.nW, Button(1).PixelRect().nW);
    TypeOver(u"Push 2k");
    EXPECT_FALSE(window.textBox.has_value());
    EXPECT_EQ(Button(1).Text(), u"Push 2k");
    EXPECT_NE(Chunk(false).find("<macro_group_names>Macro 1|*|Push 2k|*|Macro 3|*|Macro 4|*|Macro 5</"),
        std::string::npos);
    EXPECT_EQ(Told(), Lines{});
}

TEST_F(MacroBtn, ALeftPressOpensNoTextBox) {
    Click(Button(1));
    EXPECT_FALSE(window.textBox.has_value());
}

TEST_F(MacroBtn, APressElsewhereDropsWhatWasTyped) {
    Click(Button(1), GUI::MouseRight);
    robot.Type(u"Push");
    Click(Button(0));
    EXPECT_FALSE(window.textBox.has_value());
    EXPECT_EQ(Button(1).Text(), u"Macro 2");
}

TEST_F(MacroBtn, ANameMayBeAnything) {
    for (const std::u16string& name :
        {std::u16string(u"<b>&amp;</name>"), std::u16string(u"a||b"), std::u16string(u"a|*|b"),
            std::u16string(u"\U0001F50A loud"), std::u16string(10000, u'm'), std::u16string()}) {
        Click(Button(2), GUI::MouseRight);
        TypeOver(name);
        if (name.empty()) { // nothing typed leaves the old text selected
            Click(Button(2), GUI::MouseRight);
            TypeOver(std::u16string(1, u'\b'));
        }
        robot.Advance(300);
        EXPECT_EQ(Button(2).Text(), name);
        robot.Tick();
        EXPECT_EQ(Button(2).Text(), name) << "the state has it, too";
    }
    Click(Button(2));
    EXPECT_EQ(Button(2).Value(), 1.0f);
}

TEST_F(MacroBtn, NamesThatAPatchBringsAreShown) {
    Read("<macro_group_names>Push|*|Calm</macro_group_names>");
    robot.Tick();
    EXPECT_EQ(Button(0).Text(), u"Push");
    EXPECT_EQ(Button(1).Text(), u"Calm");
    EXPECT_EQ(Button(2).Text(), u"Macro 3");
}

TEST_F(MacroBtn, ThePanelsAreStillOpenWhenTheEditorIsOpenedAgain) {
    Toggle(0);
    const auto widgets = Gui().AllWidgets().size();
    Close();
    Device().AssignMacro(0, 32, 0.25f);
    Open();
    robot.Advance(500);
    EXPECT_EQ(Button(0).Value(), 1.0f);
    EXPECT_TRUE(PanelOver(0).IsVisible());
    EXPECT_EQ(Gui().AllWidgets().size(), widgets);
    Toggle(0);
    EXPECT_FALSE(PanelOver(0).IsVisible());
}
