#include "gui/pointer.h"

#include "tests/gui/recording_root.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

using Lines = std::vector<std::string>;

/// A widget that notes what reaches it.
class CNoting final : public CWidget, public ICaptured {
public:
    CNoting(CGUI& root, const SWidgetInfo& info, Lines& lines) : CWidget(root, info), _lines(lines) {}

    void OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t flags) override {
        Note("down", x, y, flags);
    }
    void OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t flags) override {
        Note("up", x, y, flags);
        if (duringUp) duringUp();
    }
    void OnMouseMove(std::int32_t x, std::int32_t y, std::uint32_t flags) override {
        Note("move", x, y, flags);
    }
    void OnMouseWheel(float notches, std::uint32_t flags) override {
        _lines.push_back(
            Who() + " wheel " + std::to_string(static_cast<int>(notches)) + " " + std::to_string(flags));
    }
    void OnMouseEnter() override {
        _lines.push_back(Who() + " enter");
        CWidget::OnMouseEnter();
    }
    void OnMouseLeave() override {
        _lines.push_back(Who() + " leave");
        CWidget::OnMouseLeave();
    }
    void OnCaptureLost() override { _lines.push_back(Who() + " lost"); }

    std::function<void()> duringUp;

private:
    std::string Who() const { return Utils::ToUtf8(sName); }
    void Note(const char* what, std::int32_t x, std::int32_t y, std::uint32_t flags) {
        _lines.push_back(Who() + " " + what + " " + std::to_string(x) + "," + std::to_string(y) + " " +
                         std::to_string(flags));
    }

    Lines& _lines;
};

struct SCapturingWindow final : IWindow {
    void Capture(bool capture) noexcept override { captures.push_back(capture); }
    std::uint32_t DoubleClickMs() const noexcept override { return 400; }
    std::int32_t DoubleClickWidth() const noexcept override { return 4; }
    std::int32_t DoubleClickHeight() const noexcept override { return 6; }

    std::vector<bool> captures;
};

class CFocusRoot final : public CRecordingRoot {
public:
    CFocusRoot(IWindow& window, Lines& lines) : CRecordingRoot({&window, nullptr}), _lines(lines) {}
    void OnFocus(CWidget* widget) override {
        _lines.push_back("focus " + (widget == nullptr ? "nothing" : Utils::ToUtf8(widget->sName)));
    }

private:
    Lines& _lines;
};

class Pointer : public testing::Test {
protected:
    Lines lines;
    SCapturingWindow window;
    CFocusRoot root{window, lines};
    CNoting back{root, Info(u"back", 0, 0, 100, 100), lines};
    CNoting front{root, Info(u"front", 50, 50, 100, 100), lines};

    static SWidgetInfo Info(const char16_t* name, float x, float y, float w, float h) {
        SWidgetInfo info;
        info.sName = name;
        info.fX = x;
        info.fY = y;
        info.fW = w;
        info.fH = h;
        info.bInteractive = true;
        return info;
    }
    Lines Taken() { return std::exchange(lines, {}); }
    CPointer& At() { return root.Pointer(); }
};

} // namespace

TEST_F(Pointer, APressGoesToTheFrontmostWidgetThatIsHit) {
    root.OnMouseDown(60, 60, MouseLeft);
    EXPECT_EQ(Taken(), (Lines{"front enter", "focus front", "front down 60,60 1"}));
    EXPECT_EQ(At().Hover(), &front);
    EXPECT_EQ(At().Focus(), &front);
    EXPECT_EQ(At().Capture(), &front);
    root.OnMouseUp(60, 60, MouseLeft);
    EXPECT_EQ(Taken(), (Lines{"front up 60,60 1", "front lost"}));
    root.OnMouseDown(10, 10, MouseRight | MouseShift);
    EXPECT_EQ(Taken(), (Lines{"front leave", "back enter", "focus back", "back down 10,10 6"}));
}

TEST_F(Pointer, APressOnNothingClearsTheFocusAndStartsNoDrag) {
    root.OnMouseDown(60, 60, MouseLeft);
    root.OnMouseUp(60, 60, MouseLeft);
    Taken();
    root.OnMouseDown(400, 400, MouseLeft);
    EXPECT_EQ(Taken(), Lines{"focus nothing"});
    EXPECT_EQ(At().Focus(), nullptr);
    EXPECT_EQ(At().Capture(), nullptr);
    root.OnMouseUp(400, 400, MouseLeft);
    EXPECT_EQ(window.captures, (std::vector<bool>{true, false, true, false}))
        << "the system's is taken and let go";
}

TEST_F(Pointer, AReleaseLetsGoOfTheSystemsCaptureAlsoWithoutAPress) {
    root.OnMouseUp(1, 1, MouseLeft);
    EXPECT_EQ(window.captures, std::vector<bool>{false});
    EXPECT_EQ(Taken(), Lines{});
}

TEST_F(Pointer, ADragGoesToItsWidgetWhereverThePointerIs) {
    root.OnMouseDown(60, 60, MouseLeft);
    Taken();
    root.OnMouseMove(5, 5, MouseLeft);
    root.OnMouseMove(-50, 900, MouseLeft);
    EXPECT_EQ(Taken(), (Lines{"front move 5,5 1", "front move -50,900 1"}));
    EXPECT_EQ(At().Hover(), &front) << "and the pointer stays on it";
    root.OnMouseUp(5, 5, MouseLeft);
    Taken();
    root.OnMouseMove(5, 5, 0);
    EXPECT_EQ(Taken(), (Lines{"front leave", "back enter", "back move 5,5 0"}));
}

TEST_F(Pointer, AnyButtonThatGoesUpEndsTheDrag) {
    root.OnMouseDown(60, 60, MouseLeft);
    Taken();
    root.OnMouseUp(60, 60, MouseRight);
    EXPECT_EQ(Taken(), (Lines{"front up 60,60 2", "front lost"}));
    EXPECT_EQ(At().Capture(), nullptr);
    EXPECT_EQ(At().Held(), MouseLeft);
    root.OnMouseUp(60, 60, MouseLeft);
    EXPECT_EQ(Taken(), Lines{});
    EXPECT_EQ(At().Held(), 0u);
}

TEST_F(Pointer, AnotherPressTakesTheDragAway) {
    root.OnMouseDown(60, 60, MouseLeft);
    Taken();
    root.OnMouseDown(10, 10, MouseLeft | MouseRight);
    EXPECT_EQ(Taken(), (Lines{"front lost", "front leave", "back enter", "focus back", "back down 10,10 3"}));
    EXPECT_EQ(At().Capture(), &back);
}

TEST_F(Pointer, IsFreeBeforeItsWidgetHearsOfTheRelease) {
    front.duringUp = [this] {
        EXPECT_EQ(At().Capture(), nullptr);
        root.OnMouseMove(10, 10, 0); // as from a menu's own loop
    };
    root.OnMouseDown(60, 60, MouseLeft);
    Taken();
    root.OnMouseUp(60, 60, MouseLeft);
    EXPECT_EQ(
        Taken(), (Lines{"front up 60,60 1", "front leave", "back enter", "back move 10,10 0", "front lost"}));
}

TEST_F(Pointer, AWidgetMayGoInItsOwnRelease) {
    auto* const own = new CNoting(root, Info(u"own", 200, 200, 50, 50), lines);
    own->duringUp = [this, own] { root.RemoveWidget(*own, false); };
    root.OnMouseDown(210, 210, MouseLeft);
    Taken();
    root.OnMouseUp(210, 210, MouseLeft);
    EXPECT_EQ(Taken(), Lines{"own up 210,210 1"});
    EXPECT_EQ(At().Hover(), nullptr);
    EXPECT_EQ(At().Focus(), nullptr);
}

TEST_F(Pointer, LeavesWhatItHoveredOver) {
    root.OnMouseMove(60, 60, 0);
    EXPECT_EQ(Taken(), (Lines{"front enter", "front move 60,60 0"}));
    root.OnMouseMove(61, 61, 0);
    EXPECT_EQ(Taken(), Lines{"front move 61,61 0"});
    root.OnMouseMove(300, 300, 0);
    EXPECT_EQ(Taken(), Lines{"front leave"});
    root.OnMouseMove(60, 60, 0);
    Taken();
    root.OnMouseLeave();
    EXPECT_EQ(Taken(), Lines{"front leave"});
    EXPECT_EQ(At().Hover(), nullptr);
}

TEST_F(Pointer, TheWheelGoesToWhatIsUnderItAndTakesTheFocus) {
    root.OnMouseDown(10, 10, MouseLeft);
    root.OnMouseUp(10, 10, MouseLeft);
    root.OnMouseMove(60, 60, 0);
    Taken();
    root.OnMouseWheel(-2.0f, MouseShift);
    EXPECT_EQ(Taken(), (Lines{"focus front", "front wheel -2 4"}));
    root.OnMouseWheel(1.0f, 0);
    EXPECT_EQ(Taken(), Lines{"front wheel 1 0"});
    root.OnMouseLeave();
    Taken();
    root.OnMouseWheel(1.0f, 0);
    EXPECT_EQ(Taken(), Lines{"focus nothing"});
}

TEST_F(Pointer, ASecondPressInTimeAndPlaceIsADoubleClickAndAThirdIsNot) {
    const auto press = [this](std::uint32_t timeMs, std::int32_t x, std::int32_t y,
                           std::uint32_t flags = MouseLeft) {
        const bool isDouble = At().IsDoubleClick(x, y, timeMs);
        At().SetTime(timeMs);
        root.OnMouseDown(x, y, flags | (isDouble ? MouseDouble : 0u));
        root.OnMouseUp(x, y, flags);
        return isDouble;
    };
    EXPECT_FALSE(press(1000, 60, 60));
    EXPECT_TRUE(press(1400, 64, 66)) << "just in time and place";
    EXPECT_FALSE(press(1500, 64, 66)) << "the third";
    EXPECT_TRUE(press(1600, 64, 66)) << "a new pair";
    EXPECT_FALSE(press(5000, 60, 60));
    EXPECT_FALSE(press(5401, 60, 60)) << "too late";
    EXPECT_FALSE(press(5500, 65, 60)) << "too far across";
    EXPECT_FALSE(press(5600, 65, 67)) << "too far down";
    EXPECT_TRUE(press(5700, 65, 67, MouseRight)) << "of either button";
    EXPECT_TRUE(press(5800, 65, 67, MouseRight)) << "whose own presses keep no time";
}

TEST_F(Pointer, ForgetsAWidgetThatGoes) {
    {
        CNoting own(root, Info(u"own", 200, 200, 50, 50), lines);
        root.OnMouseDown(210, 210, MouseLeft);
        EXPECT_EQ(At().Capture(), &own);
    }
    EXPECT_EQ(At().Hover(), nullptr);
    EXPECT_EQ(At().Focus(), nullptr);
    EXPECT_EQ(At().Capture(), nullptr);
    root.OnMouseMove(210, 210, MouseLeft);
    root.OnMouseUp(210, 210, MouseLeft);
}

TEST_F(Pointer, AHiddenWindowEndsTheDrag) {
    root.Show(true);
    root.OnMouseDown(60, 60, MouseLeft);
    Taken();
    root.Show(false);
    EXPECT_EQ(Taken(), (Lines{"front lost", "front leave"}));
    EXPECT_EQ(At().Capture(), nullptr);
}

TEST_F(Pointer, AWindowThatWasTakenAwayEndsTheDrag) {
    root.OnMouseDown(60, 60, MouseLeft);
    Taken();
    root.LoseWindow();
    EXPECT_EQ(Taken(), (Lines{"front lost", "front leave"}));
}
