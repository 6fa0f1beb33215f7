#include "device_gui/toolbar_top.h"

#include "tests/device_gui/routing_panel.h"

using namespace KAV;
using namespace KAV::Tests;

using ToolbarTop = RoutingPanel;

TEST_F(ToolbarTop, TakesThePressesBetweenItsWidgets) {
    const auto& bar = Widget<CToolbarTop>();
    EXPECT_FALSE(bar.bInteractive);
    EXPECT_TRUE(bar.HitTest(110, 5, false));
    EXPECT_TRUE(bar.HitTest(110, 5, true));
    EXPECT_FALSE(bar.HitTest(110, 90, false));
    robot.Move(110, 5);
    EXPECT_EQ(Gui().Pointer().Hover(), &bar);
    const auto before = Chunk(false);
    for (const std::uint32_t flags : std::initializer_list<std::uint32_t>{
             GUI::MouseLeft, GUI::MouseRight, GUI::MouseLeft | GUI::MouseShift})
        robot.Click(110, 5, flags);
    robot.Wheel(1.0f);
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(Told(), Lines{});
    EXPECT_TRUE(window.menus.empty());
    robot.Advance(2000);
    EXPECT_FALSE(Gui().Hint().IsVisible()) << "a bar has nothing to say";
}

TEST_F(ToolbarTop, ReachesToTheEdgesOfThePanelAtEverySize) {
    for (const std::int32_t width : {500, 1508}) {
        Gui().ResizeTo(width, static_cast<std::int32_t>(static_cast<float>(width) / CDeviceState::Aspect));
        robot.Tick();
        const auto& bar = Widget<CToolbarTop>();
        EXPECT_TRUE(bar.HitTest(0, 0, false)) << width;
        EXPECT_TRUE(bar.HitTest(width - 1, 0, false)) << width;
        const auto rect = bar.PixelRect();
        EXPECT_TRUE(bar.HitTest(width / 2, rect.nH, false)) << width;
        EXPECT_FALSE(bar.HitTest(width / 2, rect.nH + 1, false)) << width;
    }
}
