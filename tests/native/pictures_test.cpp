#include "native/menu_painter.h"
#include "native/paint.h"
#include "native/text_box_painter.h"
#include "tests/native/menus.h"
#include "tests/support/golden_picture.h"

#include <gtest/gtest.h>

namespace KAV::Tests {

namespace {

using Native::CLineEditor;
using Native::CMenuModel;
using Native::CMenuPainter;
using Native::CTextBoxPainter;
using Native::EMenuKey;

constexpr std::uint32_t Panel = 0xFF2D3035;

GUI::Menu Settings() {
    return {Bold(Entry(u"New version 1.3 is available...", 1)), Entry(u"What's new in version 1.3...", 2),
        Separator(),
        SubMenu(
            u"AGC Settings", {SubMenu(u"RMS Time", Entries(2, 10)), SubMenu(u"Filter Type", Entries(2, 20)),
                                 Disabled(SubMenu(u"Suspend Comparison", Entries(2, 30)))}),
        SubMenu(u"GUI Rendering",
            {Disabled(Entry(u"Direct3D9", 40)), Entry(u"OpenGL", 41),
                Disabled(Checked(Entry(u"Direct2D", 42))), Checked(Entry(u"CPU", 43)), Separator(),
                Entry(u"30 FPS", 44), Checked(Entry(u"60 FPS", 45)), Entry(u"100 FPS", 46)}),
        Separator(), Disabled(Entry(u"No SIMD optimizations available", 50)), Entry(u"Φωνή, Голос, αβγ", 51),
        Entry(u"About...", 52)};
}

/// All windows of an open menu, as they stand on the panel.
Pixels::SBitmap Shown(const GUI::Menu& menu, std::int32_t dotsPerInch, const Platform::SArea& monitor,
    std::initializer_list<EMenuKey> keys) {
    const auto lettering = Pixels::CLettering::Create();
    const auto metrics = Native::MenuMetrics(dotsPerInch);
    CMenuPainter painter(*lettering, metrics);
    CMenuModel model(
        menu, metrics, monitor, [&painter](const GUI::Menu& items) { return painter.WidthOf(items); });
    model.Open(8, 8, false);
    for (const auto key : keys) model.Key(key);
    auto screen = Pixels::TransparentBitmap(monitor.width, monitor.height);
    Native::Fill(screen, monitor, Panel);
    for (const auto& level : model.Levels())
        Native::Overlay(screen, painter.Paint(level), level.place.left, level.place.top);
    return screen;
}

} // namespace

TEST(MenuPicture, MarksBoldGreyedSeparatorsAndASubMenu) {
    EXPECT_TRUE(IsTheCommittedPicture(Shown(Settings(), 96, {0, 0, 440, 320},
                                          {EMenuKey::Down, EMenuKey::Down, EMenuKey::Down, EMenuKey::Down,
                                              EMenuKey::Right, EMenuKey::Down, EMenuKey::Down}),
        "native/menu"));
}

TEST(MenuPicture, AtTwiceTheDensity) {
    EXPECT_TRUE(IsTheCommittedPicture(Shown(Settings(), 192, {0, 0, 880, 640},
                                          {EMenuKey::Down, EMenuKey::Down, EMenuKey::Down, EMenuKey::Right}),
        "native/menu_192_dpi"));
}

TEST(MenuPicture, LongMenuScrolls) {
    EXPECT_TRUE(IsTheCommittedPicture(
        Shown(Entries(100, 1), 96, {0, 0, 160, 160}, {EMenuKey::PageDown, EMenuKey::PageDown}),
        "native/menu_scrolled"));
}

TEST(MenuPicture, TextThatIsTooWideEndsInAnEllipsis) {
    EXPECT_TRUE(IsTheCommittedPicture(Shown(Settings(), 96, {0, 0, 160, 240}, {}), "native/menu_narrow"));
}

TEST(TextBoxPicture, BoxesOfSeveralKinds) {
    const auto lettering = Pixels::CLettering::Create();
    auto sheet = Pixels::TransparentBitmap(340, 132);
    Native::Fill(sheet, {0, 0, sheet.width, sheet.height}, Panel);
    const auto show = [&](std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height,
                          const CLineEditor& line, bool caret) {
        CTextBoxPainter painter(*lettering, width, height);
        Native::Overlay(sheet, painter.Paint(line, caret), left, top);
    };
    const auto caretAt = [](std::u16string_view text, std::size_t caret, std::size_t end) {
        CLineEditor line(text, false);
        line.MoveTo(caret, false);
        line.MoveTo(end, true);
        return line;
    };
    show(10, 10, 50, 15, CLineEditor(u"-12.5", true), true);
    show(70, 10, 50, 15, caretAt(u"-12.5", 3, 3), true);
    show(130, 10, 50, 15, caretAt(u"-12.5", 3, 3), false);
    show(190, 10, 140, 15, caretAt(u"Left front, surround", 5, 10), true);
    show(10, 35, 90, 15, caretAt(u"A name that is far too long for it", 34, 34), true);
    show(110, 35, 90, 15, caretAt(u"A name that is far too long for it", 0, 4), true);
    show(210, 35, 120, 15, caretAt(u"Φωνή Голос", 4, 4), true);
    show(10, 60, 100, 30, CLineEditor(u"-12.5", true), true);
    show(120, 60, 210, 30, caretAt(u"Left front, surround", 5, 10), true);
    show(10, 100, 100, 22, CLineEditor(u"", false), true);
    show(120, 100, 210, 22, caretAt(u"gjpqy ÄÉÅ |()", 13, 13), true);
    EXPECT_TRUE(IsTheCommittedPicture(sheet, "native/text_boxes"));
}

} // namespace KAV::Tests
