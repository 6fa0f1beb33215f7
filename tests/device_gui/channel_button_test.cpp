#include "device_gui/channel_button.h"

#include "tests/device_gui/routing_panel.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class ChannelButton : public RoutingPanel {
protected:
    std::string Index(std::int32_t tag) { return std::to_string(HostIndexOf(tag)); }
    /// All that the host hears, also of two edits, which end one after the other.
    Lines AllTold() {
        auto told = Told();
        for (const auto& line : Told()) told.push_back(line);
        return told;
    }
    /// What the host hears of a press: the old value, then the new one, each in an edit.
    Lines Pressed(std::int32_t tag, bool turnsOn) {
        const auto index = Index(tag);
        const auto value = [&](bool on) { return index + (on ? " = 1.000000" : " = 0.000000"); };
        return {"begin " + index, value(!turnsOn), "end " + index, "begin " + index, value(turnsOn),
            "end " + index};
    }
};

} // namespace

TEST_F(ChannelButton, APressTurnsTheChannelOffAndOnInTheCurrentGroup) {
    Click(Channel(2));
    EXPECT_FALSE(IsMember(2));
    EXPECT_EQ(Channel(2).Value(), 0.0f);
    EXPECT_TRUE(IsMember(1));
    EXPECT_EQ(AllTold(), Pressed(2, false));
    Click(Channel(2));
    EXPECT_TRUE(IsMember(2));
    EXPECT_EQ(AllTold(), Pressed(2, true));
}

TEST_F(ChannelButton, InAnotherGroupItIsThatGroupsChannel) {
    Click(Named(u"ToolBtnFx3"));
    robot.Tick();
    EXPECT_EQ(Channel(1).Value(), 0.0f);
    AllTold();
    Click(Channel(1));
    EXPECT_TRUE(IsMember(1, 2));
    EXPECT_TRUE(IsMember(1, 0)) << "a channel may be in several groups";
    EXPECT_EQ(AllTold(), Pressed(201, true));
}

TEST_F(ChannelButton, KeysAndASecondPressMakeNoDifference) {
    for (const std::uint32_t flags : std::initializer_list<std::uint32_t>{
             GUI::MouseShift, GUI::MouseControl, GUI::MouseShift | GUI::MouseControl}) {
        Click(Channel(1), GUI::MouseLeft | flags);
        EXPECT_FALSE(IsMember(1)) << flags;
        EXPECT_TRUE(IsMember(2)) << flags;
        Click(Channel(1), GUI::MouseLeft | flags);
        EXPECT_TRUE(IsMember(1)) << flags;
        robot.Advance(600); // or the next one is a second press
    }
    Click(Channel(1));
    Click(Channel(1)); // of a double click
    EXPECT_TRUE(IsMember(1));
    EXPECT_EQ(window.Count("OpenTextBox"), 0u);
}

TEST_F(ChannelButton, ARightPressAWheelAndADragDoNothingMore) {
    Click(Channel(1), GUI::MouseRight);
    Wheel(Channel(1), 1.0f);
    Wheel(Channel(1), -3.0f);
    EXPECT_TRUE(IsMember(1));
    EXPECT_EQ(Told(), Lines{});
    EXPECT_EQ(window.Count("OpenTextBox"), 0u);
    const auto [x, y] = MiddleOf(Channel(1));
    robot.Drag({x, y}, {x + 300, y + 200});
    EXPECT_FALSE(IsMember(1)) << "at the press";
    EXPECT_EQ(AllTold(), Pressed(1, false));
}

TEST_F(ChannelButton, IsNoStepOfHistory) {
    Click(Channel(1));
    Click(Channel(2));
    EXPECT_FALSE(Gui().CanUndo());
}

TEST_F(ChannelButton, FollowsTheHostWithinAFrame) {
    effect->Set(HostIndexOf(1), 0.0f);
    effect->Set(HostIndexOf(101), 1.0f);
    robot.Tick();
    EXPECT_EQ(Channel(1).Value(), 0.0f);
    EXPECT_EQ(Told(), Lines{}) << "it is the host who said so";
    effect->Set(HostIndexOf(1), 1.0f);
    robot.Tick();
    EXPECT_EQ(Channel(1).Value(), 1.0f);
}

TEST_F(ChannelButton, ItsTextIsDimWhileTheChannelIsOff) {
    EXPECT_EQ(Channel(1).nTextColor, 0xFFC0C0C0u);
    EXPECT_EQ(Channel(3).nTextColor, 0x64C0C0C0u);
    pictures.lettered.clear();
    effect->Set(HostIndexOf(1), 0.0f);
    robot.Advance(50);
    EXPECT_EQ(Channel(1).nTextColor, 0x64C0C0C0u);
    ASSERT_EQ(pictures.lettered.size(), 1u) << "rendered anew, and nothing else";
    EXPECT_EQ(pictures.lettered[0].sText, u"L");
    EXPECT_EQ(pictures.lettered[0].nColor, 0x64C0C0C0u);
    Click(Channel(1));
    EXPECT_EQ(Channel(1).nTextColor, 0xFFC0C0C0u);
}

TEST_F(ChannelButton, ShowsTheLabelsAndEntriesOfItsGroupsRouting) {
    Gui().SetRouting(Document("three", MapOf(3), "A|*||*|\xF0\x9F\x8E\xB5"), 1);
    EXPECT_EQ(Channel(1).Text(), u"L");
    Click(Named(u"ToolBtnFx2"));
    robot.Tick();
    EXPECT_EQ(Channel(1).Text(), u"A");
    EXPECT_EQ(Channel(2).Text(), u"");
    EXPECT_EQ(Channel(3).Text(), u"\U0001F3B5");
    EXPECT_EQ(VisibleChannels(), 3u);
    Click(Named(u"ToolBtnFx1"));
    robot.Tick();
    EXPECT_EQ(Channel(1).Text(), u"L");
    EXPECT_EQ(VisibleChannels(), 2u);
}

TEST_F(ChannelButton, AHiddenOneIsNotPressed) {
    Click(Channel(3));
    EXPECT_FALSE(IsMember(3));
    EXPECT_EQ(Told(), Lines{});
}

TEST_F(ChannelButton, StaysTheSameWidgetAtEverySizeOfThePanel) {
    for (const std::int32_t width : {500, 1508, 754}) {
        Gui().ResizeTo(width, static_cast<std::int32_t>(static_cast<float>(width) / CDeviceState::Aspect));
        robot.Tick();
        ASSERT_EQ(Gui().Width(), width);
        Click(Channel(2));
        EXPECT_FALSE(IsMember(2)) << width;
        Click(Channel(2));
        EXPECT_TRUE(IsMember(2)) << width;
    }
}

TEST_F(ChannelButton, AStillPanelDrawsNothing) {
    robot.Advance(500);
    renderers.Calls().clear();
    robot.Advance(500);
    EXPECT_EQ(renderers.Calls(), Lines{});
}
