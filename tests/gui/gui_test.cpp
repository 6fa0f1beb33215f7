#include "gui/gui.h"

#include "gui/button.h"
#include "gui/value_display.h"
#include "tests/gui/recording_root.h"
#include "tests/support/virtual_slots.h"

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
        EXPECT_EQ(root.AllWidgets().back(), &display);
        EXPECT_EQ(root.FindAll<GUI::CLabel>().size(), 5u) << "the hint is one, too";
    }
    const std::vector<GUI::CWidget*> others(root.AllWidgets().end() - 3, root.AllWidgets().end());
    EXPECT_EQ(others, (std::vector<GUI::CWidget*>{&label, &button, &second}));
    EXPECT_EQ(root.Find<GUI::CButton>(), &button);
    EXPECT_EQ(root.FindAll<GUI::CButton>(), (std::vector<GUI::CButton*>{&button, &second}));
    EXPECT_EQ(root.Find<GUI::CValueDisplay>(), nullptr);
}

TEST(Root, KeepsItsOperationsInTheirSlots) {
    using GUI::CGUI;
    ExpectSlotsFrom(
        0, {SlotOf(&CGUI::Render), SlotOf(&CGUI::CreateGUIWindow), SlotOf(&CGUI::DestroyGUIWindow)});
    ExpectSlotsFrom(5, // after the destructor
        {SlotOf(&CGUI::OnMouseDown), SlotOf(&CGUI::OnMouseUp), SlotOf(&CGUI::OnMouseMove),
            SlotOf(&CGUI::OnMouseLeave), SlotOf(&CGUI::OnMouseWheel), SlotOf(&CGUI::OnFocus),
            SlotOf(&CGUI::OnUserMessage), SlotOf(&CGUI::OnCommand), SlotOf(&CGUI::OnKeyDown),
            SlotOf(&CGUI::OnKeyUp), SlotOf(&CGUI::OnResized), SlotOf(&CGUI::OnFrame),
            SlotOf(&CGUI::SetParameter), SlotOf(&CGUI::Resize), SlotOf(&CGUI::SetBackground),
            SlotOf(&CGUI::BeginEdit), SlotOf(&CGUI::EndEdit)});
}

TEST(Root, TakesItsSizeFromItsBackgroundWhichLiesAtTheBack) {
    CRecordingRoot root;
    auto info = WidgetInfo(1);
    info.sName = u"Bkgnd";
    info.fX = 10;
    info.fY = 20;
    info.fW = 600.4f;
    info.fH = 300;
    GUI::CWidget back(root, info);
    root.SetBackground(back);
    EXPECT_EQ(root.Width(), 600);
    EXPECT_EQ(root.Height(), 300);
    EXPECT_EQ(back.PixelRect(), (GUI::SPixelRect{0, 0, 600, 300}));
    EXPECT_EQ(back.sName + back.sClass + back.sHint, u"BackgroundBackgroundBackground");
    EXPECT_EQ(root.AllWidgets().front(), &back);
}

TEST(Root, EndsTheWidgetsThatAreLeftInIt) {
    int ended = 0;
    struct SCounted final : GUI::CWidget {
        SCounted(GUI::CGUI& gui, int& itsEnded) : CWidget(gui, {}), count(itsEnded) {}
        ~SCounted() override { ++count; }
        int& count;
    };
    {
        CRecordingRoot root;
        auto* const taken = new SCounted(root, ended);
        new SCounted(root, ended);
        auto* const removed = new SCounted(root, ended);
        EXPECT_TRUE(root.RemoveWidget(*removed, false));
        EXPECT_EQ(ended, 1);
        EXPECT_TRUE(root.RemoveWidget(*taken, true));
        EXPECT_FALSE(root.RemoveWidget(*taken, true)) << "it is none of the root's any more";
        EXPECT_EQ(ended, 1);
        delete taken;
    }
    EXPECT_EQ(ended, 3);
}

TEST(Root, ScalesByTheDisplaysDensity) {
    struct SDense final : GUI::IWindow {
        std::int32_t DotsPerInch() const noexcept override { return dots; }
        std::int32_t dots = 96;
    } window;
    const CRecordingRoot root({&window, nullptr});
    EXPECT_EQ(root.ScaleByDPI(50), 50);
    window.dots = 144;
    EXPECT_EQ(root.ScaleByDPI(50), 75);
    EXPECT_EQ(root.ScaleByDPI(15), 23) << "half a pixel goes up";
    window.dots = 0;
    EXPECT_EQ(root.ScaleByDPI(50), 50) << "a display that doesn't say";
}

TEST(Root, HandsAChoiceToTheFirstDisplayOfThatId) {
    CRecordingRoot root;
    auto info = WidgetInfo(5);
    info.sList = u"a||b||c";
    GUI::CButton button(root, info);
    GUI::CValueDisplay first(root, info);
    GUI::CValueDisplay second(root, info);
    root.OnCommand(5 * 1100 + 2, 0);
    EXPECT_EQ(first.Item(), 2);
    EXPECT_EQ(second.Item(), 0);
    root.OnCommand(5 * 1100 + 1, 1);
    root.OnCommand(0x10000 + 5 * 1100 + 1, 0);
    root.OnCommand(6 * 1100 + 1, 0);
    EXPECT_EQ(first.Item(), 2) << "of another source, with a notification, of no display";
}

TEST(Root, ClosesTheMenuOfAWidgetThatGoes) {
    struct SMenus final : GUI::IWindow {
        void ShowMenu(const GUI::Menu&) noexcept override { isOpen = true; }
        void CloseMenu() noexcept override { isOpen = false; }
        bool isOpen = false;
    } window;
    CRecordingRoot root({&window, nullptr});
    auto info = WidgetInfo(5);
    info.sList = u"a||b";
    GUI::CValueDisplay other(root, info);
    {
        GUI::CValueDisplay display(root, info);
        display.ShowMenu();
        const GUI::CWidget passing(root, {});
        EXPECT_TRUE(window.isOpen);
    }
    EXPECT_FALSE(window.isOpen);
    other.ShowMenu();
    { const GUI::CValueDisplay display(root, info); }
    EXPECT_TRUE(window.isOpen) << "another widget's";
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
    shown.SetVisible(false, 0);
    EXPECT_FALSE(shown.IsVisible());
    shown.SetText(u"");
    EXPECT_EQ(shown.Text(), u"");
}
