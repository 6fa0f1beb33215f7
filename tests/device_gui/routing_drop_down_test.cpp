#include "device_gui/routing_drop_down.h"

#include "tests/device_gui/routing_panel.h"

using namespace KAV;
using namespace KAV::Tests;

using RoutingDropDown = RoutingPanel;

TEST_F(RoutingDropDown, OpensTheMenuOfTheRoutings) {
    WriteRouting("a", 2);
    WriteRouting("b", 2);
    Reopen();
    Click(Display());
    ASSERT_EQ(window.menus.size(), 1u);
    const auto [x, y] = MiddleOf(DropDown());
    robot.Press(x, y);
    EXPECT_EQ(window.menus.size(), 1u) << "at the release";
    robot.Release(x, y);
    ASSERT_EQ(window.menus.size(), 2u);
    EXPECT_EQ(window.menus[1], window.menus[0]);
    EXPECT_TRUE(robot.Choose(u"b"));
    robot.Tick();
    EXPECT_EQ(Display().Text(), u"b");
    EXPECT_EQ(MapOfGroup(0), MapOf(2));
}

TEST_F(RoutingDropDown, ARightPressOpensNothing) {
    Click(DropDown(), GUI::MouseRight);
    Wheel(DropDown(), 1.0f);
    EXPECT_TRUE(window.menus.empty());
    EXPECT_EQ(Told(), Lines{});
}

TEST_F(RoutingDropDown, LooksPressedWhileItIs) {
    EXPECT_EQ(DropDown().GetDrawValue(), 0.0f);
    const auto [x, y] = MiddleOf(DropDown());
    robot.Press(x, y);
    robot.Advance(600);
    EXPECT_EQ(DropDown().GetDrawValue(), 1.0f);
    robot.Release(x, y);
    robot.Advance(600);
    EXPECT_EQ(DropDown().GetDrawValue(), 0.0f);
}
