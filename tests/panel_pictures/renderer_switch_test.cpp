// A user who changes the renderer while the editor is open.

#include "gui/label.h"
#include "gui/value_widget.h"
#include "tests/gfx/ogl_functions.h"
#include "tests/panel_pictures/rendered_panel.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// With both renderers on one window. What is shown is read back from whichever is in use.
class SwitchedPanel : public PaintedPanel {
protected:
    SwitchedPanel() {
        window.handle = glWindow.Handle();
        table[GFX::OpenGL] = GFX::OpenGLRenderer();
    }
    Frame ShownNow() {
        auto& gui = Gui();
        gui.Invalidate();
        gui.Frame().RenderUnseen();
        return Tests::FrameOf(gui.GPU(), gui.Width(), gui.Height());
    }
    bool SwitchTo(std::uint32_t number) { return Gui().Screen().SetRenderer(number); }
    std::u16string RendererInUse() { return Gui().GPU().GetName(); }

    CGlWindow glWindow{1508, 1508};
};

} // namespace

TEST_F(SwitchedPanel, KeepsPictureSizeHintAndMacroPanel) {
    ASSERT_TRUE(SwitchTo(GFX::Software));
    ShowAtWidth(900);
    Click(Named(u"Macro 1", 1));
    Point(Named(u"Threshold"));
    Settle();
    const auto before = ShownNow();
    for (const std::uint32_t number : {GFX::OpenGL, GFX::Software, GFX::OpenGL}) {
        ASSERT_TRUE(SwitchTo(number));
        Play(3, 0.0f); // audio runs on
        EXPECT_EQ(RendererInUse(), number == GFX::OpenGL ? u"OpenGL" : u"Software");
        EXPECT_EQ(Gui().Width(), 900);
        const auto after = ShownNow();
        ASSERT_EQ(after.size(), before.size());
        EXPECT_LE(CompareFrames(after, before, nullptr).share, ShareElsewhere) << number;
    }
}

TEST_F(SwitchedPanel, GoesOnWithADrag) {
    ASSERT_TRUE(SwitchTo(GFX::Software));
    const auto& fader = Named(u"Threshold");
    const auto [x, y] = MiddleOf(fader);
    robot.Move(x, y);
    robot.Press(x, y);
    robot.Move(x, y + 5);
    const auto value = dynamic_cast<const GUI::CValueWidget&>(fader).Value();
    ASSERT_TRUE(SwitchTo(GFX::OpenGL));
    robot.Move(x, y + 20);
    EXPECT_NE(dynamic_cast<const GUI::CValueWidget&>(fader).Value(), value);
    robot.Release(x, y + 20);
    Settle();
    ASSERT_TRUE(SwitchTo(GFX::Software));
    const auto shown = ShownNow();
    ASSERT_TRUE(SwitchTo(GFX::OpenGL));
    EXPECT_LE(CompareFrames(ShownNow(), shown, nullptr).share, ShareElsewhere);
}

TEST_F(SwitchedPanel, GoesOnWithATextThatIsBeingTyped) {
    ASSERT_TRUE(SwitchTo(GFX::Software));
    Click(Named(u"ToolBtnFx1"), GUI::MouseRight);
    ASSERT_TRUE(window.textBox);
    ASSERT_TRUE(SwitchTo(GFX::OpenGL));
    Settle();
    ASSERT_TRUE(window.textBox);
    robot.Type(u"Bus");
    robot.Enter();
    EXPECT_FALSE(window.textBox);
    EXPECT_EQ(dynamic_cast<const GUI::CLabel&>(Named(u"ToolBtnFx1")).Text(), u"Bus");
    Settle();
    const auto shown = ShownNow();
    ASSERT_TRUE(SwitchTo(GFX::Software));
    Settle();
    EXPECT_LE(CompareFrames(ShownNow(), shown, nullptr).share, ShareElsewhere);
}

TEST_F(SwitchedPanel, GoesOnWithAMenuThatIsOpen) {
    ASSERT_TRUE(SwitchTo(GFX::Software));
    Click(Named(u"Oversampling"));
    ASSERT_TRUE(window.menuOpen);
    ASSERT_TRUE(SwitchTo(GFX::OpenGL));
    Settle();
    ASSERT_TRUE(window.menuOpen);
    const auto& selector = Named(u"Oversampling");
    const auto before = Chunk(false);
    Command(selector.Id(), 2);
    Settle();
    EXPECT_NE(Chunk(false), before);
}

TEST_F(SwitchedPanel, AgainAndAgainLeavesNoObjectOfTheOtherRenderer) {
    const CGlFunctions functions;
#if defined(KAV_SANITIZED)
    constexpr int rounds = 4; // they take five seconds each
#else
    constexpr int rounds = 20;
#endif
    for (int n = 0; n < rounds; ++n) {
        ASSERT_TRUE(SwitchTo(GFX::OpenGL));
        Gui().Invalidate();
        Gui().Frame().RenderUnseen();
        ASSERT_FALSE(CGlFunctions::IsLevel()) << "it has pictures";
        ASSERT_TRUE(SwitchTo(GFX::Software));
        ASSERT_TRUE(CGlFunctions::IsLevel()) << n;
    }
}

TEST_F(SwitchedPanel, ByTheAboutViewKeepsItsBackdrop) {
    ASSERT_TRUE(SwitchTo(GFX::Software));
    Gui().OpenAbout();
    Settle();
    const auto before = ShownNow();
    dynamic_cast<GUI::CValueWidget&>(Named(u"GUI Rendering")).SetValue(0.5f, false);
    ASSERT_EQ(RendererInUse(), u"OpenGL");
    Settle();
    // The switch stands elsewhere, and the logo pulses.
    EXPECT_LE(CompareFrames(ShownNow(), before, nullptr).share, 0.03);
}
