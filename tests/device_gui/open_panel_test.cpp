// The panel in the user's hand: its double of a window brings events, and the device and the host get edits.

#include "tests/device_gui/open_panel.h"

using namespace KAV;
using namespace KAV::Tests;

TEST_F(OpenPanel, ADraggedFaderIsOneEditOfItsParameter) {
    auto& fader = Named(u"Threshold");
    const auto [x, y] = MiddleOf(fader);
    robot.Drag({x, y}, {x, y + 60}, 1);
    EXPECT_LT(effect->Get(4), 1.0f);
    EXPECT_EQ(Told(), (Lines{"begin 4", "4 = " + std::to_string(effect->Get(4)), "end 4"}));
}
