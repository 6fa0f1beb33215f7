// The two sides by hand: the button that shows and changes them, and the copy.

#include "device_gui/side_buttons.h"

#include "device_gui/routing_display.h"
#include "tests/device_gui/open_panel.h"

#include <map>
#include <thread>
#include <tuple>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class SideButtons : public OpenPanel {
protected:
    CPatchABInplace& Side() { return Widget<CPatchABInplace>(); }
    CPatchABCopy& Copy() { return Widget<CPatchABCopy>(); }
    float Threshold() { return Device().GetParam(33, 0); }
    void Threshold(float value) {
        effect->Set(4, value);
        robot.Tick();
    }
    void Press(const GUI::CWidget& widget, std::uint32_t flags = GUI::MouseLeft) {
        const auto [x, y] = MiddleOf(widget);
        robot.Move(x, y);
        robot.Press(x, y, flags);
    }
    void Release(std::uint32_t flags = GUI::MouseLeft) { robot.Release(1, 1, flags); }
    int StateSide() {
        const Utils::CTurn turn(Device().State().Turns());
        return Device().State().Panel(turn).side;
    }
    /// Which of its four frames is drawn when it has come to rest.
    int Frame() {
        robot.Advance(300);
        return FrameOf(Side(), 4);
    }
    /// By how many degrees the picture of the copy is turned.
    std::string Turn() {
        const auto draws = DrawsOf(Copy());
        const auto at = draws.empty() ? std::string::npos : draws[0].find("turn ");
        return at == std::string::npos ? "" : draws[0].substr(at + 5);
    }
};

} // namespace

TEST_F(SideButtons, EachSideHasAPictureAtRestAndOneUnderTheFinger) {
    EXPECT_EQ(Frame(), 0);
    Press(Side());
    EXPECT_EQ(Side().ShownSide(), 0);
    EXPECT_EQ(Frame(), 3);
    Release();
    EXPECT_EQ(Frame(), 2);
    Press(Side());
    EXPECT_EQ(Frame(), 1);
    Release();
    EXPECT_EQ(Frame(), 0);
    EXPECT_EQ(Side().StateValue(0), 0.0f);
    EXPECT_EQ(Side().StateValue(2), 0.25f);
    Click(Side());
    EXPECT_EQ(Side().StateValue(0), 0.5f);
    EXPECT_EQ(Side().StateValue(2), 1.0f);
}

TEST_F(SideButtons, ShowsTheOtherSideAtThePressAndChangesAtTheRelease) {
    Threshold(0.25f);
    Click(Side()); // the other side has nothing yet
    EXPECT_EQ(Threshold(), 0.25f);
    Threshold(0.75f);
    Press(Side());
    EXPECT_EQ(Side().ShownSide(), 1);
    EXPECT_EQ(StateSide(), 0);
    EXPECT_EQ(Threshold(), 0.75f);
    Release(); // a release anywhere is a click
    EXPECT_EQ(Side().ShownSide(), 1);
    EXPECT_EQ(StateSide(), 1);
    EXPECT_EQ(Threshold(), 0.25f);
    Click(Side());
    EXPECT_EQ(Threshold(), 0.75f);
}

TEST_F(SideButtons, PressedTwiceBringsTheStateBackWithItsRouting) {
    const auto route = [this](const std::string& name, const std::string& map) {
        Gui().SetRouting("<kav_input_routing>\r\n\t<name>" + name + "</name>\r\n\t<map>" + map +
                             "</map></kav_input_routing>",
            0);
    };
    const auto state = [this] {
        robot.Tick();
        const auto routing = Gui().GetRouting(0);
        return std::tuple(Threshold(), Device().State().PatchName(), Widget<CRouting>().Text(),
            routing.substr(routing.find("<map>")));
    };
    Threshold(0.25f);
    Device().State().SetPatchName(u"First");
    route("Mine", "1,-1");
    const auto first = state();
    Click(Side());
    Threshold(0.75f);
    Device().State().SetPatchName(u"Second");
    route("Yours", "0,-1");
    const auto second = state();
    Click(Side());
    EXPECT_EQ(state(), first);
    Click(Side(), GUI::MouseLeft | GUI::MouseDouble);
    EXPECT_EQ(state(), second);
    Click(Side());
    EXPECT_EQ(state(), first);
}

TEST_F(SideButtons, ReportsEveryValueOfTheSideWithoutAnEdit) {
    Click(Side());
    Threshold(0.75f);
    Told();
    Click(Side());
    std::map<std::string, std::string> last;
    for (const auto& line : Told()) {
        const auto at = line.find(" = ");
        ASSERT_NE(at, std::string::npos) << line;
        last[line.substr(0, at)] = line.substr(at + 3);
    }
    EXPECT_EQ(last.size(), 109u);
    for (const auto& [index, value] : last) EXPECT_EQ(value, std::to_string(effect->Get(std::stoi(index))));
    EXPECT_EQ(last["4"], "1.000000");
}

TEST_F(SideButtons, OnlyTheLeftButtonCounts) {
    Press(Side(), GUI::MouseRight);
    EXPECT_EQ(Side().ShownSide(), 1);
    Release(GUI::MouseRight);
    EXPECT_EQ(Side().ShownSide(), 1);
    EXPECT_EQ(StateSide(), 1);
    Wheel(Side(), 1.0f);
    Click(Copy(), GUI::MouseRight);
    EXPECT_EQ(StateSide(), 1);
    Threshold(0.25f);
    Click(Side());
    EXPECT_EQ(Threshold(), 0.25f) << "nothing was copied";
}

TEST_F(SideButtons, APressWithoutAClickGoesBackToTheLiveSide) {
    Press(Side());
    window.client->OnCancel();
    EXPECT_EQ(Side().ShownSide(), 1);
    Release();
    EXPECT_EQ(StateSide(), 1);
    EXPECT_EQ(Frame(), 0);
    Press(Side());
    Release(GUI::MouseRight); // which ends the drag
    EXPECT_EQ(Side().ShownSide(), 1);
    Release();
    EXPECT_EQ(Side().ShownSide(), 1);
    EXPECT_EQ(StateSide(), 1);
    Press(Side());
    Press(Side()); // the release was lost
    EXPECT_EQ(Side().ShownSide(), 0);
    Release();
    EXPECT_EQ(StateSide(), 0);
    Press(Side());
    Close();
    Open();
    EXPECT_EQ(Side().ShownSide(), StateSide());
}

TEST_F(SideButtons, AgreesWithTheLiveSideAfterProjectsPatchesAndReopening) {
    const auto project = Chunk(false);
    Click(Side());
    for (const bool isPreset : {false, true}) {
        SetChunk(project, isPreset);
        robot.Tick();
        EXPECT_EQ(Side().ShownSide(), 0);
        EXPECT_EQ(StateSide(), 0);
    }
    Gui().Undo();
    robot.Tick();
    EXPECT_EQ(Side().ShownSide(), StateSide());
    Close();
    Device().State().SwitchAB(1);
    EXPECT_EQ(Side().ShownSide(), 1) << "without a window at once";
    Device().State().SwitchAB(0);
    Open();
    robot.Tick();
    EXPECT_EQ(Side().ShownSide(), 0);
    Reopen();
    EXPECT_EQ(Side().ShownSide(), 1) << "another instance";
    EXPECT_EQ(StateSide(), 1);
}

TEST_F(SideButtons, AProjectThatComesDuringAPressLeavesThePressAlone) {
    const auto project = Chunk(false);
    Press(Side());
    std::thread([&] { SetChunk(project, false); }).join();
    robot.Tick();
    EXPECT_EQ(Side().ShownSide(), 0);
    Release();
    EXPECT_EQ(StateSide(), 0);
    EXPECT_EQ(Side().ShownSide(), 0);
}

TEST_F(SideButtons, TheCopyGivesTheOtherSideTheLiveState) {
    Threshold(0.25f);
    const auto [x, y] = MiddleOf(Copy());
    robot.Press(x, y);
    Threshold(0.5f);
    robot.Release(x, y); // the state of this moment
    Threshold(0.75f);
    Told();
    const auto records = Gui().Records();
    Click(Copy(), GUI::MouseRight);
    EXPECT_EQ(Told(), Lines{});
    EXPECT_EQ(Gui().Records(), records);
    Click(Side());
    EXPECT_EQ(Threshold(), 0.5f);
    Click(Side());
    EXPECT_EQ(Threshold(), 0.75f);
}

TEST_F(SideButtons, TheCopyTurnsByHalfWhileItIsPressedAndBack) {
    EXPECT_EQ(Turn(), "");
    Press(Copy());
    robot.Tick();
    std::vector<float> angles;
    while (angles.size() < 60) {
        const auto turn = Turn(); // a frame further
        angles.push_back(turn.empty() ? 0.0f : std::stof(turn.substr(4)));
    }
    EXPECT_EQ(angles.back(), 180.0f);
    EXPECT_TRUE(std::ranges::is_sorted(angles));
    EXPECT_EQ(Turn(), "0,0,180") << "about the axis that points out of the screen";
    Release();
    robot.Advance(500);
    EXPECT_EQ(Turn(), "");
}

TEST_F(SideButtons, TheTurnTakesAQuarterOfASecondEachWay) {
    const auto turned = [this] { return Copy().asLook[5][0]; };
    Press(Copy());
    robot.Advance(125);
    EXPECT_NEAR(turned(), 90.0f, 15.0f) << "a frame or so is short of it";
    robot.Advance(150);
    EXPECT_EQ(turned(), 180.0f);
    for (const float angle : Copy().asLook[5]) EXPECT_EQ(angle, 180.0f) << "also under the pointer";
    Release();
    robot.Advance(125);
    EXPECT_NEAR(turned(), 90.0f, 15.0f);
    robot.Advance(150);
    EXPECT_EQ(turned(), 0.0f);
    Press(Copy());
    robot.Advance(125);
    window.client->OnCancel();
    robot.Advance(300);
    EXPECT_EQ(turned(), 0.0f) << "a press that was taken away";
}

TEST_F(SideButtons, CostNothingWhileNothingChanges) {
    EXPECT_TRUE(IsStill());
    Press(Copy());
    EXPECT_TRUE(IsStill()) << "while it is held";
    Release();
    Click(Side());
    EXPECT_TRUE(IsStill());
}

TEST_F(SideButtons, WorkAtEveryWidth) {
    for (const std::int32_t width : {500, 754, 1508}) {
        Device().State().ResizeToWidth(width);
        robot.Advance(100);
        const int side = StateSide();
        Click(Side());
        EXPECT_EQ(StateSide(), 1 - side);
    }
}
