#include "gui/frame.h"

#include "tests/gui/recording_root.h"
#include "tests/support/hand_clock.h"
#include "tests/support/own_renderers.h"
#include "utils/exceptions.h"

#include <gtest/gtest.h>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

using Lines = std::vector<std::string>;

/// A window that is there, and keeps the boxes.
struct SShownWindow final : IWindow {
    std::int32_t Create(IWindowClient& itsClient, void*, std::int32_t width, std::int32_t height,
        std::uint32_t rate) noexcept override {
        if (error != 0) return error;
        client = &itsClient;
        size = {0, 0, width, height};
        framesPerSecond = rate;
        return 0;
    }
    void Destroy() noexcept override { client = nullptr; }
    bool Exists() const noexcept override { return client != nullptr; }
    void Show(bool show) noexcept override { isShown = show; }
    void Resize(std::int32_t width, std::int32_t height) noexcept override { size = {0, 0, width, height}; }
    void SetRate(std::uint32_t rate) noexcept override { framesPerSecond = rate; }
    void ShowBox(std::u16string_view title, std::u16string_view text) noexcept override {
        boxes.push_back(Utils::ToUtf8(title) + ": " + Utils::ToUtf8(text));
        isBoxUp = boxesStay;
    }
    bool IsBoxUp() const noexcept override { return isBoxUp; }

    IWindowClient* client = nullptr;
    std::int32_t error = 0;
    SPixelRect size;
    std::uint32_t framesPerSecond = 0;
    bool isShown = false;
    bool boxesStay = false;
    bool isBoxUp = false;
    Lines boxes;
};

/// A widget that says when it ticks and draws, and does what it is told to then.
class CDrawn final : public CWidget {
public:
    CDrawn(CGUI& root, const char16_t* name, Lines& lines) : CWidget(root, Info(name)), _lines(lines) {}

    void Tick(std::uint32_t ms) override {
        _lines.push_back("tick " + Utils::ToUtf8(sName) + " " + std::to_string(ms));
        CWidget::Tick(ms);
    }
    void Draw(std::uint32_t) override {
        _lines.push_back("draw " + Utils::ToUtf8(sName));
        if (duringDraw) duringDraw();
    }

    std::function<void()> duringDraw;

private:
    static SWidgetInfo Info(const char16_t* name) {
        SWidgetInfo info;
        info.sName = name;
        return info;
    }

    Lines& _lines;
};

/// Every picture is a transparent square.
struct SSquares final : IPictures {
    std::unique_ptr<Pixels::SBitmap> LoadImage(
        const std::u16string&, std::int32_t, std::int32_t, std::int32_t) override {
        return std::make_unique<Pixels::SBitmap>(Pixels::TransparentBitmap(8, 8));
    }
};

class CTickedRoot final : public CRecordingRoot {
public:
    using CRecordingRoot::CRecordingRoot;
    void OnFrame(std::uint32_t ms) override {
        frames.push_back(ms);
        if (duringFrame) duringFrame();
    }

    bool OnUserMessage(std::uint32_t message) override {
        messages.push_back(message);
        if (message == 1026) throw Exceptions::Std(u"broken", u"TEST");
        return CRecordingRoot::OnUserMessage(message);
    }

    std::vector<std::uint32_t> frames;
    std::vector<std::uint32_t> messages;
    std::function<void()> duringFrame;
};

class Frame : public testing::Test {
protected:
    CHandClock clock;
    COwnRenderers renderers;
    SShownWindow window;
    Lines lines;
    CTickedRoot root{{&window, nullptr}};
    CDrawn first{root, u"first", lines};
    CDrawn second{root, u"second", lines};

    void SetUp() override {
        root.CreateGUIWindow();
        ASSERT_TRUE(root.Screen().Create());
        root.Show(true);
        lines.clear();
        renderers.Calls().clear();
    }
    Lines Taken() { return std::exchange(lines, {}); }
    Lines Drawn() { return std::exchange(renderers.Calls(), {}); }
    void Tick(std::uint32_t timeMs) { window.client->OnTick(timeMs); }
};

} // namespace

TEST_F(Frame, NothingToDoTicksTheRootAndDrawsNothing) {
    Tick(1000);
    root.frames.clear();
    Taken();
    Drawn();
    Tick(1016);
    Tick(1033);
    EXPECT_EQ(Drawn(), Lines{});
    EXPECT_EQ(root.frames, (std::vector<std::uint32_t>{16, 17}));
    EXPECT_EQ(Taken(), Lines{}) << "without a frame that is due not even animations go on";
}

TEST_F(Frame, ARedrawDrawsAllFromTheBackToTheFront) {
    Tick(1000);
    Taken();
    root.Invalidate();
    Tick(1016);
    EXPECT_EQ(Taken(), (Lines{"tick first 16", "draw first", "tick second 16", "draw second"}));
    EXPECT_EQ(Drawn(), (Lines{"BeginFrame", "Clear", "EndFrame", "Present"}));
    Tick(1032);
    EXPECT_EQ(Drawn(), Lines{});
}

TEST_F(Frame, WhatIsHiddenTicksAndIsNotDrawn) {
    second.sVisible.Jump(0.0f);
    root.Invalidate();
    Tick(1000);
    EXPECT_EQ(Taken(), (Lines{"tick first 1000", "draw first", "tick second 1000"}));
}

TEST_F(Frame, AnAnimationAsksForTheNextFrame) {
    first.sVisible.nFallMs = 100;
    first.SetVisible(false, 0);
    Tick(1000);
    Taken();
    first.sVisible.Jump(1.0f);
    first.sVisible.pfnEase = nullptr;
    first.SetVisible(false, 0);
    Tick(1050);
    EXPECT_FLOAT_EQ(first.sVisible.fValue, 0.5f);
    Tick(1075);
    EXPECT_FLOAT_EQ(first.sVisible.fValue, 0.25f);
    Tick(1100);
    EXPECT_EQ(first.sVisible.fValue, 0.0f);
    Taken();
    Tick(1116); // asked for by the last step
    Taken();
    Tick(1132);
    EXPECT_EQ(Taken(), Lines{});
}

TEST_F(Frame, AHiddenWindowIsNeitherClearedNorShown) {
    root.Show(false);
    window.client->OnPaint();
    EXPECT_TRUE(root.Frame().IsRedrawDue());
    Tick(1000);
    EXPECT_EQ(Drawn(), (Lines{"BeginFrame", "EndFrame"}));
    EXPECT_EQ(Taken(), (Lines{"tick first 1000", "tick second 1000"}));
}

TEST_F(Frame, ARendererThatIsNotReadyLeavesTheRedrawForLater) {
    root.Invalidate();
    renderers.Live().ready = false;
    Tick(1000);
    EXPECT_TRUE(root.Frame().IsRedrawDue());
    EXPECT_EQ(Drawn(), Lines{});
    EXPECT_EQ(root.frames, std::vector<std::uint32_t>{1000}) << "the exchange goes on";
    renderers.Live().ready = true;
    root.Render(16);
    EXPECT_FALSE(root.Frame().IsRedrawDue());
}

TEST_F(Frame, AnErrorInADrawShowsOneBoxAndDropsTheFrameAndTheNextIsWhole) {
    first.duringDraw = [] { throw Exceptions::Std(u"broken", u"TEST"); };
    root.Invalidate();
    Tick(1000);
    EXPECT_EQ(Taken(), (Lines{"tick first 1000", "draw first"}));
    EXPECT_EQ(Drawn(), (Lines{"BeginFrame", "Clear"}));
    EXPECT_EQ(window.boxes, Lines{"KAV Sorrel Limiter 1.0.1.0:  TEST ERROR:\r\n\r\nbroken"});
    EXPECT_FALSE(root.Frame().IsRedrawDue()) << "the error isn't repeated by itself";
    first.duringDraw = nullptr;
    root.Invalidate();
    Tick(1016);
    EXPECT_EQ(Taken(), (Lines{"tick first 16", "draw first", "tick second 16", "draw second"}));
    EXPECT_EQ(Drawn(), (Lines{"BeginFrame", "Clear", "EndFrame", "Present"}));
}

TEST_F(Frame, TheSameErrorIsShownOncePerOpening) {
    first.duringDraw = [] { throw Exceptions::Std(u"broken", u"TEST"); };
    for (std::uint32_t time = 1000; time < 1100; time += 16) {
        root.Invalidate();
        Tick(time);
    }
    EXPECT_EQ(window.boxes.size(), 1u);
    first.duringDraw = [] { throw Exceptions::Std(u"otherwise", u"TEST"); };
    root.Invalidate();
    Tick(1200);
    EXPECT_EQ(window.boxes.size(), 2u) << "another text";
    root.Screen().Release();
    root.DestroyGUIWindow();
    root.CreateGUIWindow();
    ASSERT_TRUE(root.Screen().Create());
    root.Show(true);
    EXPECT_EQ(window.boxes.size(), 3u);
}

TEST_F(Frame, NothingIsDrawnAndNoOtherBoxOpensWhileOneIsUp) {
    window.boxesStay = true;
    first.duringDraw = [] { throw Exceptions::Std(u"broken", u"TEST"); };
    root.Invalidate();
    Tick(1000);
    Taken();
    root.frames.clear();
    root.Invalidate();
    root.duringFrame = [] { throw Exceptions::Std(u"another", u"TEST"); };
    Tick(1016);
    EXPECT_EQ(Taken(), Lines{});
    EXPECT_EQ(root.frames, std::vector<std::uint32_t>{16});
    EXPECT_TRUE(root.Frame().IsRedrawDue());
    EXPECT_EQ(window.boxes.size(), 1u);
    root.duringFrame = nullptr;
    first.duringDraw = nullptr;
    window.isBoxUp = false;
    Tick(1032);
    EXPECT_EQ(Drawn(), (Lines{"BeginFrame", "Clear", "BeginFrame", "Clear", "EndFrame", "Present"}));
}

TEST_F(Frame, AnErrorOfTheRendererDropsTheFrameInEachOfItsSteps) {
    for (const char* const step : {"BeginFrame", "Clear", "EndFrame", "Present"}) {
        renderers.Live().throwIn = step;
        root.Invalidate();
        Tick(1000);
        EXPECT_EQ(Drawn().back(), step);
        renderers.Live().throwIn.clear();
        Taken();
    }
    EXPECT_EQ(window.boxes.size(), 4u);
    root.Invalidate();
    Tick(2000);
    EXPECT_EQ(Drawn(), (Lines{"BeginFrame", "Clear", "EndFrame", "Present"}));
}

TEST_F(Frame, AnErrorOfTheRendererInADrawDropsTheFrameAndTheNextIsWhole) {
    SSquares pictures;
    for (const char* const step :
        {"IsReady", "AnySizeTextures", "MaxTextureW", "CreateTexture", "DrawTexture"}) {
        SShownWindow ownWindow;
        CTickedRoot own({&ownWindow, &pictures});
        own.CreateGUIWindow();
        ASSERT_TRUE(own.Screen().Create());
        SWidgetInfo info;
        info.sImage = u"Any.png";
        info.fW = info.fH = 10;
        CWidget picture(own, info);
        renderers.Live().throwIn = step;
        own.Show(true);
        EXPECT_EQ(ownWindow.boxes.size(), 1u) << step;
        renderers.Live().throwIn.clear();
        own.Invalidate();
        ownWindow.client->OnTick(1000);
        EXPECT_EQ(Drawn().back(), "Present") << step;
        own.Screen().Release();
    }
}

TEST_F(Frame, ErrorsOfTheRendererAtItsEndEndItAllTheSame) {
    SSquares pictures;
    for (const char* const step : {"FreeTexture", "Shutdown"}) {
        SShownWindow ownWindow;
        CTickedRoot own({&ownWindow, &pictures});
        own.CreateGUIWindow();
        ASSERT_TRUE(own.Screen().Create());
        SWidgetInfo info;
        info.sImage = u"Any.png";
        info.fW = info.fH = 10;
        auto early = std::make_unique<CWidget>(own, info);
        CWidget late(own, info);
        own.Show(true);
        renderers.Live().throwIn = step;
        early.reset();
        own.Screen().Release();
        EXPECT_FALSE(own.GPU().IsReady()) << step;
    }
}

TEST_F(Frame, AnErrorInAPictureDropsTheFrameAndTheNextIsWhole) {
    struct SBroken final : IPictures {
        std::unique_ptr<Pixels::SBitmap> LoadImage(
            const std::u16string& name, std::int32_t, std::int32_t, std::int32_t) override {
            if (broken) throw Exceptions::GDIPImage(name, 8, 8, 3);
            return std::make_unique<Pixels::SBitmap>(Pixels::TransparentBitmap(8, 8));
        }
        bool broken = true;
    } pictures;
    SShownWindow ownWindow;
    CTickedRoot own({&ownWindow, &pictures});
    own.CreateGUIWindow();
    ASSERT_TRUE(own.Screen().Create());
    SWidgetInfo info;
    info.sImage = u"Any.png";
    CWidget picture(own, info);
    own.Show(true);
    ASSERT_EQ(ownWindow.boxes.size(), 1u);
    EXPECT_NE(ownWindow.boxes[0].find("Any.png"), std::string::npos);
    EXPECT_EQ(Drawn().back(), "Clear");
    pictures.broken = false;
    own.Invalidate();
    ownWindow.client->OnTick(1000);
    EXPECT_EQ(Drawn().back(), "Present");
    own.Screen().Release();
}

TEST_F(Frame, OtherErrorsDropTheFrameWithoutABox) {
    first.duringDraw = [] { throw std::bad_alloc(); };
    root.Invalidate();
    Tick(1000);
    first.duringDraw = [] { throw 7; };
    root.Invalidate();
    Tick(1016);
    EXPECT_EQ(window.boxes, Lines{});
    first.duringDraw = nullptr;
    Drawn();
    root.Invalidate();
    Tick(1032);
    EXPECT_EQ(Drawn(), (Lines{"BeginFrame", "Clear", "EndFrame", "Present"}));
}

TEST_F(Frame, ErrorsOfEventsDoNotLeaveThem) {
    class CBad final : public CWidget {
    public:
        using CWidget::CWidget;
        void OnMouseDown(std::int32_t, std::int32_t, std::uint32_t) override {
            throw Exceptions::Std(u"pressed", u"TEST");
        }
        void OnMouseUp(std::int32_t, std::int32_t, std::uint32_t) override {
            throw std::runtime_error("released");
        }
    };
    SWidgetInfo info;
    info.fW = info.fH = 100;
    info.bInteractive = true;
    CBad bad(root, info);
    window.client->OnPress(10, 10, MouseLeft, 1000);
    window.client->OnRelease(10, 10, MouseLeft);
    EXPECT_EQ(window.boxes.size(), 1u);
    EXPECT_EQ(root.Pointer().Capture(), nullptr);
}

TEST_F(Frame, CancelIsAReleaseWhoseYIsTheX) {
    Lines events;
    class CReleased final : public CWidget {
    public:
        CReleased(CGUI& gui, const SWidgetInfo& itsInfo, Lines& itsEvents)
            : CWidget(gui, itsInfo), _events(itsEvents) {}
        void OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t flags) override {
            _events.push_back(std::to_string(x) + "," + std::to_string(y) + " " + std::to_string(flags));
        }

    private:
        Lines& _events;
    };
    SWidgetInfo info;
    info.fW = info.fH = 100;
    info.bInteractive = true;
    CReleased widget(root, info, events);
    window.client->OnPress(30, 40, MouseLeft, 1000);
    window.client->OnMove(33, 44, MouseLeft);
    window.client->OnCancel();
    EXPECT_EQ(events, Lines{"33,33 1"});
}

TEST_F(Frame, MovesCarryTheButtonsThatTheRootWasToldOf) {
    std::vector<std::uint32_t> flags;
    class CMoved final : public CWidget {
    public:
        CMoved(CGUI& gui, const SWidgetInfo& itsInfo, std::vector<std::uint32_t>& itsFlags)
            : CWidget(gui, itsInfo), _flags(itsFlags) {}
        void OnMouseMove(std::int32_t, std::int32_t, std::uint32_t flag) override { _flags.push_back(flag); }

    private:
        std::vector<std::uint32_t>& _flags;
    };
    SWidgetInfo info;
    info.fW = info.fH = 100;
    info.bInteractive = true;
    CMoved widget(root, info, flags);
    window.client->OnMove(10, 10, MouseLeft | MouseRight | MouseShift);
    window.client->OnPress(10, 10, MouseRight, 1000);
    window.client->OnMove(10, 10, MouseControl);
    EXPECT_EQ(flags, (std::vector<std::uint32_t>{MouseShift, MouseRight | MouseControl}));
}

TEST_F(Frame, AnotherSizeIsDrawnAtOnceWithAllMovesAtTheirEnds) {
    Tick(5000);
    Drawn();
    first.sVisible.nFallMs = 4000;
    first.SetVisible(false, 0);
    Taken();
    root.Resize(800, 600);
    EXPECT_EQ(Taken(), (Lines{"tick first 5000", "tick second 5000", "draw second"}));
    EXPECT_EQ(Drawn(), (Lines{"Resize 800x600", "BeginFrame", "Clear", "EndFrame", "Present"}));
    EXPECT_EQ(window.size, (SPixelRect{0, 0, 800, 600}));
    root.Resize(800, 600);
    EXPECT_EQ(Drawn(), Lines{}) << "the present one";
}

TEST_F(Frame, ShowingDrawsBeforeTheWindowAppears) {
    root.Show(false);
    EXPECT_FALSE(window.isShown);
    Drawn();
    root.Show(true);
    EXPECT_TRUE(window.isShown);
    EXPECT_EQ(Drawn(), (Lines{"BeginFrame", "Clear", "EndFrame", "Present"}));
    root.Show(true);
    EXPECT_EQ(Drawn(), Lines{});
}

TEST_F(Frame, TheWindowsOwnMessagesReachTheRoot) {
    window.client->OnUserMessage(1025);
    window.client->OnUserMessage(1026);
    EXPECT_EQ(root.messages, (std::vector<std::uint32_t>{1025, 1026}));
    EXPECT_EQ(window.boxes.size(), 1u) << "what it throws ends there";
}

TEST_F(Frame, AWindowThatCannotBeMadeIsABoxAndNoWindow) {
    root.DestroyGUIWindow();
    window.error = 8;
    root.CreateGUIWindow();
    EXPECT_FALSE(window.Exists());
    ASSERT_EQ(window.boxes.size(), 1u);
    EXPECT_NE(window.boxes[0].find("Function: CreateWindow(): error = 8"), std::string::npos)
        << window.boxes[0];
    EXPECT_FALSE(root.Screen().Create());
}
