// What hints over the panel say.

#include "tests/device_gui/open_panel.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class Hints : public OpenPanel {
protected:
    /// The text that appears when the pointer rests on the widget; empty without a hint.
    std::u16string HintOver(const GUI::CWidget& widget) {
        robot.LeaveWindow();
        Point(widget);
        robot.Advance(GUI::CHint::DelayMs + 100);
        return Gui().Hint().IsVisible() ? Gui().Hint().Text() : std::u16string();
    }
};

} // namespace

TEST_F(Hints, OfEveryRowAreForTheUser) {
    const auto rows = Panel::Rows();
    const auto& all = Gui().AllWidgets();
    ASSERT_EQ(rows.size(), 118u);
    for (std::size_t n = 0; n < rows.size(); ++n) {
        auto& widget = *all.at(all.size() - rows.size() + n);
        ASSERT_EQ(Utils::ToUtf8(widget.sName), rows[n].name);
        EXPECT_EQ(widget.sClass, widget.sName);
        const auto hint = Utils::ToUtf8(widget.GetText(false));
        const std::string title(rows[n].title.empty() ? rows[n].name : rows[n].title);
        EXPECT_TRUE(hint == title || hint.starts_with(title + ": ")) << rows[n].name << ": " << hint;
        for (const auto* const internal : {"Tool", "Btn", "Bkgnd", "Rtg", "Led", "Fx"})
            EXPECT_EQ(hint.find(internal), std::string::npos) << hint;
        ASSERT_FALSE(hint.empty());
        EXPECT_NE(hint.back(), ' ') << hint;
        EXPECT_NE(hint.back(), ':') << hint;
    }
}

TEST_F(Hints, NameAKeyByWhatItDoes) {
    EXPECT_EQ(HintOver(Named(u"ToolBtnUndo")), u"") << "it is inert";
    Wheel(Named(u"Threshold"), -1.0f);
    robot.Advance(1000);
    EXPECT_EQ(HintOver(Named(u"ToolBtnUndo")), u"Undo");
    EXPECT_EQ(HintOver(Named(u"ToolBtnABCopy")), u"Copy to the other side");
    EXPECT_EQ(HintOver(Named(u"ToolBtnNext")), u"Next patch");
}

TEST_F(Hints, OfASwitchHaveItsState) {
    EXPECT_EQ(HintOver(Named(u"ToolCh1")), u"Channel 1: On");
    EXPECT_EQ(HintOver(Named(u"ToolBtnFx2")), u"Group 2: Off");
    Click(Named(u"ToolBtnFx2"));
    EXPECT_EQ(HintOver(Named(u"ToolBtnFx2")), u"Group 2: On");
    EXPECT_EQ(HintOver(Named(u"ToolCh1")), u"Channel 1: Off") << "of this group";
    Click(Named(u"ToolBtnFxCopy"));
    EXPECT_EQ(HintOver(Named(u"ToolBtnFxCopy")), u"Copy this group to another one: On");
    EXPECT_EQ(HintOver(Named(u"Limiter")), u"Limiter: On");
}

TEST_F(Hints, OfAGroupHaveItsNumberWhateverItsName) {
    Click(Named(u"ToolBtnFx3"), GUI::MouseRight);
    TypeOver(u"Drums");
    EXPECT_EQ(HintOver(Named(u"ToolBtnFx3")), u"Group 3: Off");
}

TEST_F(Hints, OfAValueHaveTheNumberAndItsUnit) {
    EXPECT_EQ(HintOver(Named(u"Threshold")), u"Threshold: 0.0 dB");
    effect->Set(4, 0.5f);
    EXPECT_EQ(HintOver(Named(u"Threshold")), u"Threshold: -15.0 dB");
}

TEST_F(Hints, AreNotGivenToWhatDoesNotReactToThePointer) {
    for (const auto* const name : {u"Size", u"Input Meter 1", u"ToolMeterCh1", u"UpdateLed"})
        EXPECT_FALSE(Named(name).HitTest(MiddleOf(Named(name)).x, MiddleOf(Named(name)).y, false))
            << Utils::ToUtf8(name);
    EXPECT_EQ(HintOver(Named(u"Input Meter 1")), u"");
}
