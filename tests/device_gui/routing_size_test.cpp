#include "tests/device_gui/routing_panel.h"

using namespace KAV;
using namespace KAV::Tests;

using RoutingSize = RoutingPanel;

TEST_F(RoutingSize, OfFiveThousandFilesOnlyThoseAreReadThatTheMenuShows) {
    for (int n = 0; n < 5000; ++n) WriteRouting("r" + std::to_string(10000 + n), 2);
    Reopen();
    ASSERT_EQ(Display().ItemCount(), 5001);
    Click(Display());
    EXPECT_EQ(window.menus.back().size(), 200u);
    for (const char* const name : {"r10199", "r10200"}) WriteRouting(name, 3);
    EXPECT_TRUE(Display().IsItemEnabled(199, {})) << "its entries are known by now";
    EXPECT_FALSE(Display().IsItemEnabled(200, {})) << "asked for the first time";
    EXPECT_TRUE(robot.Choose(u"r10150"));
    robot.Tick();
    EXPECT_EQ(Display().Text(), u"r10150");
    EXPECT_EQ(Display().Item(), 150);
    for (int n = 0; n < 100; ++n) Wheel(Display(), -1.0f);
    robot.Tick();
    EXPECT_EQ(Display().Text(), u"r10251") << "past the one that doesn't fit";
}
