#include "gui/gui.h"

#include "gui/button.h"
#include "gui/value_display.h"
#include "tests/gui/recording_root.h"

#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::Tests;

TEST(Root, ListsItsWidgetsInTheOrderInWhichTheyWereMade) {
    CRecordingRoot root;
    EXPECT_EQ(root.Find<GUI::CButton>(), nullptr);
    GUI::CLabel label(root, WidgetInfo(1));
    GUI::CButton button(root, WidgetInfo(2));
    GUI::CButton second(root, WidgetInfo(3));
    {
        const GUI::CValueDisplay display(root, WidgetInfo(4));
        EXPECT_EQ(root.Widgets().back(), &display);
        EXPECT_EQ(root.FindAll<GUI::CLabel>().size(), 4u);
    }
    EXPECT_EQ(root.Widgets(), (std::vector<GUI::CWidget*>{&label, &button, &second}));
    EXPECT_EQ(root.Find<GUI::CButton>(), &button);
    EXPECT_EQ(root.FindAll<GUI::CButton>(), (std::vector<GUI::CButton*>{&button, &second}));
    EXPECT_EQ(root.Find<GUI::CValueDisplay>(), nullptr);
}

TEST(Root, IsOfThePanelsSizeAndRemembersNothingAtFirst) {
    const CRecordingRoot root;
    EXPECT_EQ(root.Width(), 754);
    EXPECT_EQ(root.Height(), 553);
    EXPECT_FALSE(root.IsHistoryEnabled());
    EXPECT_FALSE(root.CanUndo());
    EXPECT_FALSE(root.CanRedo());
}

TEST(WidgetOfARoot, HasWhatItIsMadeFrom) {
    CRecordingRoot root;
    auto info = WidgetInfo(-57);
    info.sName = u"Any";
    info.sText = u"Text";
    GUI::CLabel shown(root, info);
    info.bVisible = false;
    const GUI::CLabel hidden(root, info);
    EXPECT_EQ(shown.Id(), -57);
    EXPECT_EQ(shown.Name(), u"Any");
    EXPECT_EQ(shown.Text(), u"Text");
    EXPECT_TRUE(shown.IsVisible());
    EXPECT_FALSE(hidden.IsVisible());
    shown.SetVisible(false);
    EXPECT_FALSE(shown.IsVisible());
    shown.SetText(u"");
    EXPECT_EQ(shown.Text(), u"");
}
