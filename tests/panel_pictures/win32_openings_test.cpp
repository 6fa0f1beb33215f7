// What an editor on Windows leaves behind.

#include "tests/panel_pictures/painted_panel.h"
#include "tests/support/counted_gdiplus.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// From before the first editor to after the last one.
class CCounting {
protected:
    CCountedGdiplus gdi;
};

class PanelOpenings : private CCounting, public PaintedPanel {
protected:
    using Counts = std::map<std::string, int>;

    using CCounting::gdi;
};

} // namespace

TEST_F(PanelOpenings, LeaveNothingOfGdiplusBehind) {
    Close();
    EXPECT_EQ(gdi.Left(), Counts{});
    const auto before = gdi.Made();
    for (int n = 0; n < 200; ++n) {
        Open();
        robot.Tick();
        Close();
        ASSERT_EQ(gdi.Left(), Counts{}) << "opening " << n;
    }
    const auto after = gdi.Made();
    for (const auto* const kind : {"start", "image", "graphics", "brush", "family", "font", "format"})
        EXPECT_GE(after.at(kind) - before.at(kind), 200) << kind;
}

TEST_F(PanelOpenings, HaveAStateThatMovesAndLeaveNothingOfGdiplusBehind) {
    Play(30, 1.6f);
    Click(Named(u"Macro 1", 1));
    Gui().OpenAbout();
    robot.Advance(500);
    ShowAtWidth(900);
    EXPECT_GT(gdi.Made().at("pen"), 0);
    EXPECT_GT(gdi.Made().at("matrix"), 0);
    Close();
    EXPECT_EQ(gdi.Left(), Counts{});
}

TEST_F(PanelOpenings, CallNothingOfGdiplusWhileNothingMoves) {
    Settle();
    const int before = gdi.Calls("GdipDrawImageRectRect") + gdi.Calls("GdipGraphicsClear");
    EXPECT_GT(before, 0);
    robot.Advance(5000);
    EXPECT_EQ(gdi.Calls("GdipDrawImageRectRect") + gdi.Calls("GdipGraphicsClear"), before);
    EXPECT_FALSE(Gui().Frame().IsRedrawDue());
}
