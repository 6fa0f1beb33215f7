#include "gui/size_drag.h"

#include "gui/settings.h"
#include "tests/gui/recording_root.h"
#include "tests/support/own_renderers.h"
#include "tests/support/own_settings.h"
#include "tests/support/recording_window.h"
#include "tests/support/toolkit_robot.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

using Lines = std::vector<std::string>;

class SizeDrag : public testing::Test {
protected:
    COwnSettings settings;
    CHandClock clock;
    CRecordingWindow window;
    CRecordingRoot root{{&window, nullptr}};
    CToolkitRobot robot{window};
    Lines sizes;

    void SetUp() override {
        root.CreateGUIWindow();
        root.Resize(1000, 500);
        root.SizeDrag().Offer(500, 2.0f, [this](std::int32_t width, std::int32_t height) {
            sizes.push_back(std::to_string(width) + "x" + std::to_string(height));
            EXPECT_TRUE(root.IsResizing());
            root.Resize(width, height);
        });
        StoreNumber(u"Width", 1);
    }
};

} // namespace

TEST_F(SizeDrag, BeginsBeyondTheEdgeAndNotOnIt) {
    robot.Press(980, 100);
    robot.Move(1100, 100);
    EXPECT_EQ(sizes, Lines{}) << "a normal press";
    robot.Release(980, 100);
    robot.Press(981, 100);
    robot.Move(1081, 100);
    EXPECT_EQ(sizes, Lines{"1100x550"});
}

TEST_F(SizeDrag, KeepsShapeAndLeastWidthAndTheDistanceToTheEdge) {
    robot.Press(990, 100);
    robot.Move(1000, 100);
    robot.Move(1003, 900);
    robot.Move(100, 100);
    robot.Move(-5000, 100);
    EXPECT_EQ(sizes, (Lines{"1010x505", "1013x506", "500x250", "500x250"}));
    robot.Release(-5000, 100);
    EXPECT_FALSE(root.IsResizing());
    EXPECT_FALSE(window.captured);
    EXPECT_EQ(StoredNumber(u"Width"), 500u) << "once, at the end";
}

TEST_F(SizeDrag, StoresNothingBeforeTheRelease) {
    robot.Press(990, 100);
    robot.Move(1090, 100);
    EXPECT_EQ(StoredNumber(u"Width"), 1u);
    EXPECT_TRUE(root.IsResizing());
    robot.Release(1090, 100, MouseRight);
    EXPECT_TRUE(root.IsResizing()) << "the left button ends it";
    robot.Release(1090, 100);
    EXPECT_EQ(StoredNumber(u"Width"), 1100u);
}

TEST_F(SizeDrag, LetsPicturesStretchUntilItEnds) {
    const COwnRenderers renderers;
    ASSERT_TRUE(root.Screen().Create());
    EXPECT_FALSE(renderers.Live().isStretching);
    robot.Press(990, 100);
    robot.Move(1090, 100);
    EXPECT_TRUE(renderers.Live().isStretching);
    ASSERT_TRUE(root.Screen().SetRenderer(GFX::OpenGL));
    EXPECT_TRUE(renderers.Live().isStretching) << "so does a renderer that is made in between";
    robot.Release(1090, 100);
    EXPECT_FALSE(renderers.Live().isStretching);
    root.Screen().Release();
}

TEST_F(SizeDrag, IsForTheLeftButton) {
    robot.Press(990, 100, MouseRight);
    robot.Move(1090, 100);
    EXPECT_EQ(sizes, Lines{});
}

TEST_F(SizeDrag, ThePointerTellsWhatCanBeDragged) {
    const auto cursorAt = [this](std::int32_t x, std::int32_t y) {
        robot.Move(x, y);
        return window.cursor;
    };
    EXPECT_EQ(cursorAt(500, 250), ECursor::Arrow);
    EXPECT_EQ(cursorAt(980, 499), ECursor::Arrow);
    EXPECT_EQ(cursorAt(981, 490), ECursor::SizeWidth);
    EXPECT_EQ(cursorAt(981, 491), ECursor::SizeBoth);
    EXPECT_EQ(cursorAt(500, 499), ECursor::Arrow);
}

TEST_F(SizeDrag, WidgetsGetNothingOfIt) {
    SWidgetInfo info;
    info.fW = info.fH = 1.0f;
    info.bInteractive = true;
    CWidget widget(root, info);
    robot.Drag({990, 100}, {1090, 100});
    EXPECT_EQ(root.Pointer().Focus(), nullptr);
    EXPECT_EQ(root.Pointer().Capture(), nullptr);
}

TEST_F(SizeDrag, EndsWhenTheWindowIsHiddenOrTakenAway) {
    robot.Press(990, 100);
    robot.Move(1090, 100);
    root.LoseWindow();
    EXPECT_FALSE(root.IsResizing());
    robot.Move(1190, 100);
    EXPECT_EQ(sizes, Lines{"1100x550"});
    EXPECT_EQ(StoredNumber(u"Width"), 1100u);
}

TEST_F(SizeDrag, IsNotOfferedByItself) {
    CRecordingWindow plain;
    CRecordingRoot fixed({&plain, nullptr});
    fixed.CreateGUIWindow();
    CToolkitRobot(plain).Drag({753, 100}, {800, 100});
    EXPECT_EQ(fixed.Width(), 754);
    EXPECT_EQ(plain.cursor, ECursor::Arrow);
}
