// What opens over the panel, compared with committed pictures.

#include "gfx/renderers.h"
#include "native/menu_model.h"
#include "native/menu_painter.h"
#include "native/paint.h"
#include "pixels/lettering.h"
#include "tests/panel_pictures/painted_panel.h"
#include "tests/support/golden_picture.h"

using namespace KAV;
using namespace KAV::Tests;
using Native::EMenuKey;

TEST_F(PaintedPanel, TheAboutViewIsTheCommittedPicture) {
    Gui().Screen().SetRenderer(GFX::Software);
    Gui().OpenAbout();
    Settle();
    EXPECT_TRUE(IsTheCommittedPicture(Shown(), "panel/about"));
}

TEST_F(PaintedPanel, TheSettingsMenuIsTheCommittedPicture) {
    for (const auto number : {GFX::Direct3D9, GFX::Direct2D}) table[number].bOnThisSystem = false;
    Gui().Screen().SetRenderer(GFX::Software);
    Settle();
    const auto rest = Shown();
    Click(Named(u"ToolAbout"));
    ASSERT_TRUE(window.menuOpen);
    const auto lettering = Pixels::CLettering::Create();
    const auto metrics = Native::MenuMetrics(96);
    Native::CMenuPainter painter(*lettering, metrics);
    Native::CMenuModel model(window.menus.back(), metrics, {0, 0, rest.width, rest.height},
        [&painter](const GUI::Menu& items) { return painter.WidthOf(items); });
    const auto [x, y] = MiddleOf(Named(u"ToolAbout"));
    model.Open(x, y, false);
    for (const auto key : {EMenuKey::Down, EMenuKey::Down, EMenuKey::Down, EMenuKey::Right}) model.Key(key);
    auto screen = rest;
    for (const auto& level : model.Levels())
        Native::Overlay(screen, painter.Paint(level), level.place.left, level.place.top);
    EXPECT_TRUE(DiffersAsCommitted(screen, rest, "panel/settings_menu"));
}
