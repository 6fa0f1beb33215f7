// The buttons of the four groups, and the one that copies a group.

#include "device_gui/fx_button.h"

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "device_gui/channel_button.h"
#include "tests/device_gui/open_panel.h"

#include <algorithm>
#include <array>

using namespace KAV;
using namespace KAV::Tests;

namespace {

constexpr std::uint32_t Left = GUI::MouseLeft;
constexpr std::uint32_t Right = GUI::MouseRight;
constexpr std::uint32_t Shift = GUI::MouseShift;
constexpr std::uint32_t Control = GUI::MouseControl;
constexpr std::uint32_t Double = GUI::MouseDouble;

class FxButton : public OpenPanel {
protected:
    CFxBtn& Button(int group) { return Widget<CFxBtn>(static_cast<std::size_t>(group)); }
    CFxBtnCopy& Copy() { return Widget<CFxBtnCopy>(); }
    bool Solo(int group) { return Device().GetParam(21 + 100 * group, 0) != 0.0f; }
    bool Mute(int group) { return Device().GetParam(22 + 100 * group, 0) != 0.0f; }
    void SetSolo(int group, bool on) { Device().SetParam(21 + 100 * group, on ? 1.0f : 0.0f, 0); }
    void SetMute(int group, bool on) { Device().SetParam(22 + 100 * group, on ? 1.0f : 0.0f, 0); }
    /// A press alone, with exactly these flags.
    void Press(int group, std::uint32_t flags) {
        const auto [x, y] = MiddleOf(Button(group));
        Gui().OnMouseDown(x, y, flags);
        Gui().OnMouseUp(x, y, flags);
    }
    void DoubleClick(const GUI::CWidget& widget, std::uint32_t flags = Left) {
        Click(widget, flags);
        Click(widget, flags);
        robot.Advance(1000); // the next click is none of these
    }
    /// The colours of the button's picture, each with its frame: "off FFF7F3A2".
    Lines ColoursOf(const GUI::CWidget& widget) {
        const auto rect = widget.PixelRect();
        const auto place = " to " + std::to_string(rect.nL) + "," + std::to_string(rect.nT) + " " +
                           std::to_string(rect.nW) + "x" + std::to_string(rect.nH) + " from ";
        Lines colours;
        for (const auto& line : Picture()) {
            if (line.find(place) == std::string::npos) continue;
            const auto colour = line.find(" colour ");
            colours.push_back((line.find(",0..0.5") != std::string::npos ? "off " : "on ") +
                              (colour == std::string::npos ? "FFFFFFFF" : line.substr(colour + 8, 8)));
        }
        return colours;
    }
    bool IsRedrawDue() { return Gui().Frame().IsRedrawDue(); }
    /// Whether anything is drawn in the next second.
    bool IsStill() {
        robot.Advance(1000); // what moves arrives
        renderers.Calls().clear();
        robot.Advance(1000);
        return renderers.Calls().empty();
    }
    static std::string Line(std::int32_t tag, const std::string& rest) {
        return std::to_string(HostIndexOf(tag)) + rest;
    }
    /// As Told(), without the channels that leave a group with its routing.
    Lines ToldButChannels() {
        auto told = Told();
        std::erase_if(told, [](const std::string& line) {
            const auto number = line.find_first_of("0123456789");
            const auto tag = HostParamTable()[static_cast<std::size_t>(std::stoi(line.substr(number)))];
            return tag % 100 >= 1 && tag % 100 <= 16;
        });
        return told;
    }
};

} // namespace

// The press

TEST_F(FxButton, APressShowsItsGroupAndTheHostHearsOfTheOldStateFirst) {
    int shown = 0;
    for (const int group : {2, 1, 3, 0}) {
        Click(Button(group));
        EXPECT_EQ(Device().GetCurrentGroup(), group);
        for (int g = 0; g < 4; ++g) {
            EXPECT_EQ(Button(g).Value(), g == group ? 1.0f : 0.0f) << g;
            EXPECT_EQ(Device().GetParam(17 + g, 0), g == group ? 1.0f : 0.0f) << g;
        }
        const auto before = Line(17 + shown, "");
        const auto now = Line(17 + group, "");
        // What is new of a parameter whose edit has just ended comes after that end, which waits.
        EXPECT_EQ(ToldButChannels(),
            (Lines{"begin " + before, before + " = 1.000000", "begin " + now, now + " = 1.000000",
                "end " + before, before + " = 0.000000", "end " + now}))
            << group;
        shown = group;
    }
    Click(Button(0));
    EXPECT_EQ(Told(), Lines{}) << "it is the present one";
    EXPECT_EQ(Gui().Records(), 0u) << "a view is no step";
}

TEST_F(FxButton, EachCombinationOfButtonsAndKeysDoesItsOwn) {
    for (int group = 0; group < 4; ++group) {
        Press(group, Left);
        for (std::uint32_t state = 0; state < 4; ++state) {
            for (const auto buttons : {Left, Right, Left | Right}) {
                for (const auto keys : {0u, Shift, Control, Double, Shift | Control, Shift | Double,
                         Control | Double, Shift | Control | Double}) {
                    const bool hadSolo = (state & 1u) != 0;
                    const bool wasMuted = (state & 2u) != 0;
                    SetSolo(group, hadSolo);
                    SetMute(group, wasMuted);
                    Press(group, buttons | keys);
                    const bool hasLeft = (buttons & Left) != 0;
                    const bool mutes = hasLeft && (keys & Shift) != 0;
                    const bool solos = hasLeft && !mutes && (keys & Double) != 0;
                    EXPECT_EQ(Mute(group), mutes ? !wasMuted : !solos && wasMuted) << (buttons | keys);
                    EXPECT_EQ(Solo(group), solos ? !hadSolo : !mutes && hadSolo) << (buttons | keys);
                    EXPECT_EQ(window.textBox.has_value(), !hasLeft) << (buttons | keys);
                }
            }
        }
    }
    EXPECT_EQ(Gui().Records(), 0u);
}

TEST_F(FxButton, ADoubleClickGivesTheGroupSoloAndTakesItFromTheOthers) {
    SetMute(2, true);
    DoubleClick(Button(2));
    EXPECT_TRUE(Solo(2));
    EXPECT_FALSE(Mute(2));
    EXPECT_EQ(Device().GetCurrentGroup(), 2);
    SetMute(0, true);
    DoubleClick(Button(1));
    for (int g = 0; g < 4; ++g) EXPECT_EQ(Solo(g), g == 1) << g;
    EXPECT_TRUE(Mute(0)) << "of the others only the solo goes";
    SetSolo(3, true); // by automation
    DoubleClick(Button(1));
    for (int g = 0; g < 4; ++g) EXPECT_FALSE(Solo(g)) << g;
    Click(Button(1));
    EXPECT_FALSE(Solo(1)) << "one click";
}

TEST_F(FxButton, SeveralGroupsKeepTheirSoloOnlyWhereTheEngineAllowsIt) {
    EXPECT_FALSE(Device().SeveralSolos());
    Device().SeveralSolos() = true;
    for (const int group : {0, 2}) DoubleClick(Button(group));
    for (int g = 0; g < 4; ++g) EXPECT_EQ(Solo(g), g % 2 == 0) << g;
    EXPECT_TRUE(Device().SeveralSolos());
}

TEST_F(FxButton, ShiftMutesTheGroupAndEndsItsSolo) {
    SetSolo(1, true);
    SetSolo(3, true);
    Click(Button(1), Left | Shift);
    EXPECT_TRUE(Mute(1));
    EXPECT_FALSE(Solo(1));
    EXPECT_TRUE(Solo(3)) << "another one";
    EXPECT_EQ(Device().GetCurrentGroup(), 1) << "the group is selected, too";
    robot.Advance(1000);
    DoubleClick(Button(1), Left | Shift);
    EXPECT_TRUE(Mute(1)) << "twice";
    EXPECT_FALSE(Solo(1));
}

TEST_F(FxButton, TheHostHearsNothingOfSoloAndMuteByAPress) {
    Click(Button(0), Left | Shift);
    robot.Advance(1000);
    DoubleClick(Button(0));
    EXPECT_TRUE(Solo(0));
    EXPECT_EQ(Told(), Lines{});
}

TEST_F(FxButton, ARightPressOpensItsNameAndSelectsNothing) {
    Click(Button(2), Right);
    ASSERT_TRUE(window.textBox);
    EXPECT_EQ(window.textBox->text, u"3");
    EXPECT_FALSE(window.textBox->numbersOnly);
    EXPECT_EQ(window.textBox->place.nL, Button(2).PixelRect().nL);
    EXPECT_EQ(window.textBox->place.nW, Button(2).PixelRect().nW);
    EXPECT_EQ(Device().GetCurrentGroup(), 0);
    TypeOver(u"Drums");
    EXPECT_EQ(Button(2).Text(), u"Drums");
    Click(Button(2), Right);
    robot.Type(u"Bass");
    Click(Button(1)); // elsewhere
    EXPECT_FALSE(window.textBox);
    EXPECT_EQ(Button(2).Text(), u"Drums");
}

TEST_F(FxButton, ItsNameMayBeAnyTextAndComesBackWithThePatch) {
    const std::array<std::u16string, 5> names{
        u"<b>&amp;</name></fx_names>", u"a||b", u"\U0001F3B8\U0001F941", std::u16string(10000, u'x'), u""};
    for (const auto& name : names) {
        Click(Button(1), Right);
        ASSERT_TRUE(window.textBox);
        window.textBox->text = name;
        robot.Enter();
        EXPECT_EQ(Button(1).Text(), name);
        EXPECT_TRUE(IsStill());
        EXPECT_EQ(Button(1).Text(), name) << "after some frames";
        const auto project = Chunk(false);
        Button(1).SetText(u"other");
        ASSERT_TRUE(SetChunk(project, false));
        robot.Advance(100);
        if (name.find(u'<') == std::u16string::npos) {
            EXPECT_EQ(Button(1).Text(), name);
        }
        EXPECT_EQ(Button(0).Text(), u"1");
        EXPECT_EQ(Button(2).Text(), u"3");
    }
}

TEST_F(FxButton, ItsNameMayContainTheMarkBetweenNames) {
    Click(Button(1), Right);
    TypeOver(u"a|*|b");
    EXPECT_TRUE(IsStill());
    EXPECT_EQ(Button(1).Text(), u"a|*|b");
    EXPECT_EQ(Button(2).Text(), u"3");
    const auto project = Chunk(false);
    ASSERT_TRUE(SetChunk(project, false));
    robot.Tick();
    EXPECT_EQ(Button(0).Text(), u"1") << "what comes before it stays in its place";
}

TEST_F(FxButton, APatchsNamesAppearInTheNextFrame) {
    Read("<fx_names>a|*|b|*|c|*|d</fx_names>");
    robot.Tick();
    const std::array<std::u16string_view, 4> names{u"a", u"b", u"c", u"d"};
    for (int g = 0; g < 4; ++g) EXPECT_EQ(Button(g).Text(), names[static_cast<std::size_t>(g)]);
}

// What it looks like

TEST_F(FxButton, TheShownGroupsNameIsBrightAndTheOthersAreDim) {
    const auto colours = [this] {
        std::array<std::uint32_t, 4> all{};
        for (int g = 0; g < 4; ++g) all[static_cast<std::size_t>(g)] = Button(g).nTextColor;
        return all;
    };
    using Colours = std::array<std::uint32_t, 4>;
    constexpr std::uint32_t bright = 0xFFC0C0C0;
    constexpr std::uint32_t dim = 0x64C0C0C0;
    EXPECT_EQ(colours(), (Colours{bright, dim, dim, dim}));
    Click(Button(2));
    EXPECT_EQ(colours(), (Colours{dim, dim, bright, dim}));
    effect->Set(HostIndexOf(20), 1.0f);
    robot.Tick();
    EXPECT_EQ(colours(), (Colours{dim, dim, dim, bright}));
    robot.Advance(1000);
    pictures.lettered.clear();
    Click(Button(0));
    robot.Advance(1000);
    for (const auto& [text, colour] : {std::pair{u"1", bright}, std::pair{u"4", dim}}) {
        EXPECT_TRUE(std::any_of(pictures.lettered.begin(), pictures.lettered.end(),
            [&, name = text, expected = colour](
                const auto& letters) { return letters.sText == name && letters.nColor == expected; }))
            << "drawn anew";
    }
}

TEST_F(FxButton, HasTheColourOfItsSoloOrElseOfItsMute) {
    for (const int group : {0, 1}) { // one that is on, and one that is off
        const std::string frame = group == 0 ? "on " : "off ";
        EXPECT_EQ(ColoursOf(Button(group)), Lines{frame + "FFFFFFFF"});
        SetMute(group, true);
        EXPECT_EQ(ColoursOf(Button(group)), Lines{frame + "FFFF8E7B"});
        SetSolo(group, true);
        EXPECT_EQ(ColoursOf(Button(group)), Lines{frame + "FFF7F3A2"});
        Point(Button(group));
        EXPECT_EQ(ColoursOf(Button(group)), Lines{frame + "FFF7F3A2"}) << "under the pointer";
        SetMute(group, false);
        EXPECT_EQ(ColoursOf(Button(group)), Lines{frame + "FFF7F3A2"});
        SetSolo(group, false);
        EXPECT_EQ(ColoursOf(Button(group)), Lines{frame + "FFFFFFFF"});
    }
}

TEST_F(FxButton, FadesInOneColourWhileItIsSwitched) {
    SetSolo(1, true);
    robot.Advance(1000);
    Click(Button(1));
    robot.Tick();
    const auto colours = ColoursOf(Button(1));
    ASSERT_LE(colours.size(), 2u);
    for (const auto& colour : colours) EXPECT_TRUE(colour.ends_with("F7F3A2")) << colour;
    robot.Advance(1000);
    EXPECT_EQ(ColoursOf(Button(1)), Lines{"on FFF7F3A2"});
}

TEST_F(FxButton, AsksForAPictureWhenItsColourChangesAndForNoOther) {
    EXPECT_TRUE(IsStill());
    Press(0, Left | Shift);
    EXPECT_TRUE(IsRedrawDue()) << "at once";
    EXPECT_TRUE(IsStill());
    effect->Set(HostIndexOf(321), 1.0f); // solo of a group that isn't shown
    robot.Tick();
    EXPECT_TRUE(IsRedrawDue());
    EXPECT_TRUE(IsStill());
    Read("<param tag=\"321\" >0</param>");
    robot.Tick();
    EXPECT_TRUE(IsRedrawDue());
    EXPECT_TRUE(IsStill());
}

// The copy

TEST_F(FxButton, PulsesInCopyMode) {
    EXPECT_EQ(Copy().nPulseMs, 500);
    Click(Copy());
    robot.Advance(500);                         // its own light is steady
    const auto alphaAt = [](std::uint32_t ms) { // a straight line from 255 to 100
        return static_cast<int>(255.0 - 155.0 * ms / 500.0);
    };
    const auto drawnAfter = [this](std::uint32_t ms) {
        renderers.Calls().clear();
        Gui().Invalidate();
        Gui().Render(ms);
        const auto colour = Button(2).nColor;
        EXPECT_EQ(Button(2).nColorHover, colour);
        EXPECT_EQ(Button(2).nColorActive, colour);
        EXPECT_EQ(Button(0).nColor, colour) << "all in step";
        EXPECT_EQ(colour & 0xFFFFFFu, 0xFFFFFFu);
        return static_cast<int>(colour >> 24);
    };
    drawnAfter(100000); // past the end it begins anew
    EXPECT_EQ(drawnAfter(0), 255);
    for (const std::uint32_t ms : {125u, 250u, 375u, 500u}) EXPECT_EQ(drawnAfter(125), alphaAt(ms)) << ms;
    EXPECT_EQ(drawnAfter(1), 255) << "it doesn't swing back";
    EXPECT_EQ(drawnAfter(250), alphaAt(250));
    EXPECT_EQ(drawnAfter(251), 255);
}

TEST_F(FxButton, PulsesByItselfAndBeginsAnewWithEachCopyMode) {
    EXPECT_TRUE(IsStill());
    Click(Copy());
    robot.Advance(1000);
    for (int tick = 0; tick < 100; ++tick) {
        renderers.Calls().clear();
        robot.Tick();
        ASSERT_FALSE(renderers.Calls().empty()) << tick;
    }
    SetSolo(1, true); // the pulse shows neither solo nor mute
    robot.Advance(100);
    EXPECT_EQ(Button(1).nColor & 0xFFFFFFu, 0xFFFFFFu);
    Click(Copy());
    EXPECT_TRUE(IsStill());
    EXPECT_EQ(Button(0).nColor, 0xFFFFFFFFu);
    EXPECT_EQ(Button(1).nColor, 0xFFF7F3A2u);
    Click(Copy());
    Gui().Render(0);
    EXPECT_EQ(Button(0).nColor, 0xFFFFFFFFu);
}

TEST_F(FxButton, CopyModeIsDrawnAtOnceWithoutAPress) {
    EXPECT_TRUE(IsStill());
    Copy().OnValueChanged(1.0f, 0);
    EXPECT_TRUE(IsRedrawDue());
}

TEST_F(FxButton, SelectingAnotherGroupInCopyModeCopiesToItAndEndsTheMode) {
    Gui().SetRouting("<map>0,-1|*|1,-1|*|2,-1</map>", 2);
    Device().SetParam(203, 1.0f, 0);
    const std::array<int, 4> positions{32, 33, 36, 37};
    for (const int tag : positions) Device().SetParam(tag, 0.25f, RawBase);
    for (const int tag : {34, 22}) Device().SetParam(tag, tag == 22 ? 1.0f : 0.0f, 0);
    for (const int tag : {35, 21}) Device().SetParam(tag, 1.0f, 0);
    const auto routing = Gui().GetRouting(2);
    Click(Copy());
    EXPECT_EQ(Copy().Value(), 1.0f);
    EXPECT_EQ(Told(), Lines{}) << "no parameter";
    Click(Button(2));
    EXPECT_EQ(Copy().Value(), 0.0f);
    EXPECT_EQ(Device().GetCurrentGroup(), 2);
    for (const int tag : positions) EXPECT_EQ(Device().GetParam(200 + tag, BaseValue), 0.25f) << tag;
    EXPECT_EQ(Device().GetParam(234, 0), 0.0f);
    for (const int tag : {35, 21, 22}) EXPECT_EQ(Device().GetParam(200 + tag, 0), 1.0f) << tag;
    EXPECT_EQ(Gui().GetRouting(2), routing);
    for (int n = 1; n <= 16; ++n) EXPECT_EQ(Device().GetParam(200 + n, 0), n == 3 ? 1.0f : 0.0f) << n;
    EXPECT_EQ(Widget<CChannelBtn>(2).Text(), u"");
    Click(Button(3));
    EXPECT_EQ(Device().GetParam(333, BaseValue), 1.0f) << "no copy mode any more";
}

TEST_F(FxButton, ACopyIsUndoneAndRedone) {
    Device().SetParam(33, 0.25f, RawBase);
    Click(Copy());
    Click(Button(1));
    EXPECT_EQ(Gui().Records(), 1u);
    window.leftControl = true;
    robot.Key(GUI::KeyZ);
    EXPECT_EQ(Device().GetParam(133, BaseValue), 1.0f);
    robot.Key(GUI::KeyY);
    EXPECT_EQ(Device().GetParam(133, BaseValue), 0.25f);
    EXPECT_EQ(Copy().Value(), 0.0f);
}

TEST_F(FxButton, PressingTheShownGroupKeepsCopyModeAndPressingCopyAgainEndsItWithoutACopy) {
    Device().SetParam(33, 0.25f, RawBase);
    Click(Copy());
    Click(Button(0));
    EXPECT_EQ(Copy().Value(), 1.0f);
    Click(Copy());
    EXPECT_EQ(Copy().Value(), 0.0f);
    Click(Button(1));
    EXPECT_EQ(Device().GetParam(133, BaseValue), 1.0f);
    EXPECT_EQ(Gui().Records(), 0u);
}

TEST_F(FxButton, CopyModeStaysOnFromFrameToFrame) {
    Click(Copy());
    robot.Advance(2000);
    EXPECT_EQ(Copy().Value(), 1.0f);
    Click(Copy(), Right);
    EXPECT_EQ(Copy().Value(), 1.0f) << "the left button only";
}

// A change of group from outside

TEST_F(FxButton, AnAutomatedGroupEndsADragFirstInTheGroupWhereItBegan) {
    auto& fader = Named(u"Threshold");
    const auto [x, y] = MiddleOf(fader);
    robot.Press(x, y);
    robot.Move(x, y + 60);
    const float dragged = Device().GetParam(33, BaseValue);
    ASSERT_LT(dragged, 1.0f);
    effect->Set(HostIndexOf(19), 1.0f);
    robot.Tick();
    EXPECT_EQ(Device().GetCurrentGroup(), 2);
    robot.Move(x, y + 120);
    robot.Move(x, y - 120);
    EXPECT_EQ(Device().GetParam(33, BaseValue), dragged);
    EXPECT_EQ(Device().GetParam(233, BaseValue), 1.0f);
    robot.Release(x, y);
    auto told = ToldButChannels();
    std::erase(told, Line(17, " = 0.000000")); // the button that goes off
    EXPECT_EQ(told,
        (Lines{"begin " + Line(33, ""), Line(33, " = " + std::to_string(dragged)), "end " + Line(33, "")}));
    robot.Tick();
    EXPECT_EQ(dynamic_cast<GUI::CKnob&>(fader).Value(), 1.0f) << "of the group that is shown";
}

TEST_F(FxButton, TheShownGroupBeingAutomatedAgainLeavesADragAlone) {
    const auto [x, y] = MiddleOf(Named(u"Threshold"));
    robot.Press(x, y);
    effect->Set(HostIndexOf(17), 1.0f);
    effect->Set(HostIndexOf(19), 0.0f);
    robot.Tick();
    effect->Set(HostIndexOf(17), 0.0f); // its light goes, its view stays
    robot.Tick();
    effect->Set(HostIndexOf(17), 1.0f);
    robot.Tick();
    robot.Move(x, y + 60);
    EXPECT_LT(Device().GetParam(33, BaseValue), 1.0f);
    robot.Release(x, y + 60);
}

TEST_F(FxButton, UndoOfASelectionEndsADragToo) {
    Button(2).SetValue(1.0f, true);
    const auto [x, y] = MiddleOf(Named(u"Threshold"));
    Told();
    robot.Press(x, y);
    window.leftControl = true;
    robot.Key(GUI::KeyZ);
    EXPECT_EQ(Device().GetCurrentGroup(), 0);
    robot.Move(x, y + 60);
    robot.Release(x, y + 60);
    const auto told = Told();
    EXPECT_EQ(told.front(), "begin " + Line(233, ""));
    EXPECT_NE(std::find(told.begin(), told.end(), "end " + Line(233, "")), told.end());
    for (const int tag : {33, 233}) EXPECT_EQ(Device().GetParam(tag, BaseValue), 1.0f) << tag;
}

// Its neighbours

TEST_F(FxButton, TheHoldersOfSoloAndMuteAreNeverPressed) {
    for (const auto* const name : {u"ToolFxSolo", u"ToolFxMute"}) {
        auto& holder = Named(name);
        const auto rect = holder.PixelRect();
        for (const std::int32_t x : {rect.nL, rect.nL + rect.nW / 2, rect.nL + rect.nW}) {
            for (const std::int32_t y : {rect.nT, rect.nT + rect.nH / 2, rect.nT + rect.nH}) {
                EXPECT_FALSE(holder.HitTest(x, y, true));
                robot.Click(x, y);
                robot.Click(x, y, Right);
            }
        }
    }
    EXPECT_FALSE(Solo(0));
    EXPECT_FALSE(Mute(0));
    EXPECT_EQ(Told(), Lines{});
    SetMute(0, true);
    robot.Tick();
    EXPECT_EQ(dynamic_cast<GUI::CButton&>(Named(u"ToolFxMute")).Value(), 1.0f);
    EXPECT_FALSE(Named(u"ToolFxMute").IsVisible());
}

TEST_F(FxButton, MetersOfChannelsWithoutAButtonStay) {
    ASSERT_FALSE(Named(u"ToolCh3").IsVisible());
    for (int n = 1; n <= 16; ++n) EXPECT_TRUE(WithId(-3 - n).IsVisible()) << n;
    Gui().SetRouting("<map>0,-1</map>", 0);
    robot.Tick();
    ASSERT_FALSE(Named(u"ToolCh2").IsVisible());
    for (int n = 1; n <= 16; ++n) EXPECT_TRUE(WithId(-3 - n).IsVisible()) << n;
}
