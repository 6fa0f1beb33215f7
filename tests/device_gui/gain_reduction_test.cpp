// The curve of the gain reduction against a second account of its law, fed by the device that plays.

#include "device_gui/gain_reduction.h"

#include "device/parameter_table.h"
#include "tests/device_gui/open_panel.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// What is drawn between the curve's clip and its end.
struct SCurve {
    struct SPoint {
        double x = 0;
        double y = 0;
        std::uint32_t colour = 0;
    };
    std::vector<SPoint> fill;
    std::vector<SPoint> line;
    bool isStrip = false;
    std::vector<std::string> settings; ///< the calls that aren't lines, in order
};

std::vector<SCurve::SPoint> PointsOf(const std::string& call) {
    std::vector<SCurve::SPoint> points;
    std::size_t from = call.find(' ', std::string("DrawLines ").size());
    while (from != std::string::npos) {
        SCurve::SPoint point;
        unsigned colour = 0;
        std::sscanf(call.c_str() + from, " %lf,%lf %8X", &point.x, &point.y, &colour);
        point.colour = colour;
        points.push_back(point);
        from = call.find(" | ", from + 1);
        if (from != std::string::npos) from += 2;
    }
    return points;
}

class GainReduction : public OpenPanel {
protected:
    static constexpr std::int32_t Block = 512;

    /// The curve as it should be.
    std::vector<double> samples;
    bool active = false;
    bool shown = false;

    void SetUp() override {
        OpenPanel::SetUp();
        Gui().Screen().SetRenderer(GFX::DefaultRenderer); // which the user's settings keep
        effect->Set(HostIndexOf(33), 0.0f);               // the lowest threshold
        effect->Dispatch(VST::effSetBlockSize, 0, Block);
        Begin();
    }
    /// At the present size.
    void Begin() {
        samples.assign(static_cast<std::size_t>(Curve().PixelRect().nW), 0.0);
        active = shown = false;
    }
    CGR& Curve() { return *Gui().Find<CGR>(); }
    int Group() { return Device().GetCurrentGroup(); }
    double Gain() { return static_cast<double>(static_cast<float>(Device().GetReportedGain(Group()))); }
    void Play(float level) {
        std::vector<std::vector<float>> sound(2, std::vector<float>(Block, level));
        effect->Process(sound);
    }
    void Follow(double gain) {
        const std::size_t last = samples.size() - 1;
        samples[last] = std::clamp(1.0 - gain, 0.0, 1.0);
        shown = active;
        if (!active) {
            active = samples[last] != 0.0;
            return;
        }
        for (std::size_t n = 0; n < last; ++n) samples[n] = samples[n + 1];
        active = std::any_of(samples.begin(), samples.end() - 1, [](double s) { return s != 0.0; });
    }
    /// One tick, whose picture has the curve as of the tick before. Whether there was a picture at all.
    bool Tick() {
        renderers.Calls().clear();
        robot.Tick();
        const auto& calls = renderers.Calls();
        return std::find(calls.begin(), calls.end(), "Present") != calls.end();
    }
    /// The curve in the picture of the last tick.
    std::optional<SCurve> Drawn() {
        const auto rect = Curve().PixelRect();
        const auto clip = "SetClip " + std::to_string(rect.nL) + "," + std::to_string(rect.nT) + " " +
                          std::to_string(rect.nW) + "x" + std::to_string(rect.nH);
        const auto& calls = renderers.Calls();
        const auto begin = std::find(calls.begin(), calls.end(), clip);
        const auto end = std::find(begin, calls.end(), "SetClip none");
        if (end == calls.end()) return std::nullopt;
        SCurve curve;
        for (auto call = begin + 1; call != end; ++call) {
            if (!call->starts_with("DrawLines")) {
                curve.settings.push_back(*call);
            } else if (curve.fill.empty()) {
                curve.fill = PointsOf(*call);
                curve.isStrip = call->starts_with("DrawLines strip");
            } else {
                curve.line = PointsOf(*call);
            }
        }
        return curve;
    }
    /// Whether the picture of the last tick has the curve that `samples` say.
    void ExpectCurve(bool isStrip = true) {
        const auto drawn = Drawn();
        ASSERT_EQ(drawn.has_value(), shown);
        if (!shown) return;
        const auto rect = Curve().PixelRect();
        const std::size_t width = samples.size();
        ASSERT_EQ(drawn->fill.size(), 2 * width);
        ASSERT_EQ(drawn->line.size(), width);
        EXPECT_EQ(drawn->isStrip, isStrip);
        for (std::size_t n = 0; n < width; ++n) {
            const double depth = rect.nH * samples[n];
            const std::size_t lower = isStrip && n % 2 == 1 ? 1 : 0;
            const auto& low = drawn->fill[2 * n + lower];
            const auto& high = drawn->fill[2 * n + 1 - lower];
            EXPECT_NEAR(low.x, rect.nL + static_cast<double>(n), 0.01);
            EXPECT_NEAR(low.y, rect.nT + depth, 0.01);
            EXPECT_EQ(high.x, low.x);
            EXPECT_EQ(high.y, rect.nT);
            EXPECT_EQ(high.colour, 0x00FF3A68u);
            EXPECT_EQ(low.colour & 0xFFFFFFu, 0xFF3968u);
            const double faint = depth / (0.15 * rect.nH);
            EXPECT_NEAR(low.colour >> 24, 0.5 * 255 * (isStrip ? std::min(faint, 1.0) : 1.0), 1.001);
            const auto& along = drawn->line[n];
            EXPECT_NEAR(along.x,
                rect.nL +
                    static_cast<double>(width) * static_cast<double>(n) / static_cast<double>(width - 1),
                0.01);
            EXPECT_NEAR(along.y, rect.nT + depth - 1, 0.01);
            if (testing::Test::HasFailure()) return;
        }
    }
    /// A tick of a device that plays, and its picture.
    void TickAndCompare(bool isStrip = true) {
        const double gain = Gain();
        Gui().Invalidate();
        Tick();
        ExpectCurve(isStrip);
        Follow(gain);
    }
    /// Until the curve is full of reduction.
    void Fill() {
        for (std::size_t n = 0; n < samples.size() + 20; ++n) {
            Play(0.5f);
            const double gain = Gain();
            Tick();
            Follow(gain);
        }
        ASSERT_GT(samples.front(), 0.5);
    }
    /// How many of the next ticks make a picture.
    int Pictures(int ticks) {
        int drawn = 0;
        for (int n = 0; n < ticks; ++n) {
            const double gain = Limiter() ? Gain() : 1.0;
            drawn += Tick() ? 1 : 0;
            Follow(gain);
        }
        return drawn;
    }
    bool Limiter() { return effect->Get(HostIndexOf(34 + 100 * Group())) != 0.0f; }
};

} // namespace

TEST_F(GainReduction, HangsFromTheEdgeLinearInGainAndMovesOnePixelATick) {
    for (const std::int32_t width : {754, 500, 1508}) {
        Device().State().ResizeToWidth(width);
        Tick();
        Begin();
        double deepest = 0;
        bool isFaint = false;
        for (int n = 0; n < 150 && !HasFailure(); ++n) {
            Play(n % 40 < 10 ? 0.0f : n % 40 < 20 ? 0.033f : 0.5f);
            deepest = std::max(deepest, 1.0 - Gain());
            isFaint = isFaint || (Gain() > 0.9 && Gain() < 0.99);
            TickAndCompare();
        }
        EXPECT_GT(deepest, 0.9) << width;
        EXPECT_TRUE(isFaint) << width;
    }
}

TEST_F(GainReduction, DrawsItsFillThenItsLineAndSetsThePen) {
    Fill();
    Gui().Invalidate();
    Tick();
    const auto drawn = Drawn();
    ASSERT_TRUE(drawn);
    EXPECT_EQ(drawn->settings,
        (std::vector<std::string>{"SetLineWidth 1", "SetLineSmooth off", "SetLineColor 1,0.223529,0.407843,1",
            "SetLineWidth 0.728", "SetLineSmooth on", "SetLineSmooth off"}));
    const auto& calls = renderers.Calls();
    const auto clip = std::find_if(
        calls.begin(), calls.end(), [](const std::string& call) { return call.starts_with("SetClip "); });
    ASSERT_NE(clip, calls.begin());
    EXPECT_EQ(*(clip - 1), "UnbindTexture");
}

TEST_F(GainReduction, IsPairsOfLinesWithoutFadingInDirect2D) {
    Gui().Screen().SetRenderer(GFX::Direct2D);
    Tick();
    Begin();
    for (int n = 0; n < 40 && !HasFailure(); ++n) {
        Play(n < 20 ? 0.033f : 0.5f);
        TickAndCompare(false);
    }
}

TEST_F(GainReduction, TheFirstReductionAfterSilenceIsOverwrittenByTheNext) {
    for (int n = 0; n < 10; ++n) { // below the threshold
        Play(0.01f);
        Tick();
    }
    Play(0.1f);
    const double first = Gain();
    ASSERT_LT(first, 1.0);
    Tick();
    Play(0.5f);
    const double second = Gain();
    ASSERT_NE(first, second);
    Tick();
    Gui().Invalidate();
    Tick();
    const auto drawn = Drawn();
    ASSERT_TRUE(drawn);
    const auto rect = Curve().PixelRect();
    EXPECT_NEAR(drawn->line.back().y, rect.nT + rect.nH * (1 - second) - 1, 0.01);
    EXPECT_NEAR(drawn->line[drawn->line.size() - 2].y, drawn->line.back().y, 0.01);
    EXPECT_NEAR(drawn->line[drawn->line.size() - 3].y, rect.nT - 1, 0.01);
}

TEST_F(GainReduction, AsksForANewMinimumAtEachTick) {
    Fill();
    for (int n = 0; n < 400; ++n) { // the release is over
        Play(0.0f);
        Tick();
    }
    EXPECT_EQ(Gain(), 1.0);
}

TEST_F(GainReduction, StandsStillWhileNothingIsReduced) {
    for (int n = 0; n < 50; ++n) {
        Play(0.0f);
        Tick();
    }
    EXPECT_EQ(Pictures(100), 0);
}

TEST_F(GainReduction, StandsStillWhileTheReductionDoes) {
    Fill();
    Pictures(100); // the host stops; the last gain stays
    EXPECT_EQ(Pictures(50), 0);
    Gui().Invalidate();
    Tick();
    ExpectCurve();
    ASSERT_TRUE(shown);
}

TEST_F(GainReduction, ScrollsOutOfALimiterThatIsSwitchedOffAndThenStops) {
    Fill();
    Pictures(100);
    effect->Set(HostIndexOf(34), 0.0f);
    Pictures(2); // the button's light has begun
    const int width = static_cast<int>(samples.size());
    EXPECT_GE(Pictures(width - 4), width - 4) << "every step of it is seen";
    Pictures(10);
    EXPECT_EQ(Pictures(50), 0);
    Gui().Invalidate();
    Tick();
    EXPECT_FALSE(Drawn());
}

TEST_F(GainReduction, SaysNothingOfALimiterThatIsOff) {
    Fill();
    effect->Set(HostIndexOf(34), 0.0f);
    ASSERT_LT(Gain(), 0.5) << "it keeps its last gain";
    Pictures(200);
    Play(0.5f);
    for (int n = 0; n < 10; ++n) {
        Gui().Invalidate();
        Tick();
        EXPECT_FALSE(Drawn()) << n;
    }
}

TEST_F(GainReduction, GoesOnWithTheGroupThatIsShown) {
    Fill();
    const auto before = samples;
    Device().SetCurrentGroup(1); // which has no channels, and so reduces nothing
    Gui().Invalidate();
    Tick();
    Follow(Gain());
    ASSERT_EQ(Gain(), 1.0);
    Gui().Invalidate();
    Tick();
    ASSERT_TRUE(shown);
    ExpectCurve();
    EXPECT_GT(samples[samples.size() - 3], 0.5) << "the history stays";
    EXPECT_EQ(samples.back(), 0.0);
}

TEST_F(GainReduction, LooksAtTheLimiterSwitchOfTheGroupThatIsShown) {
    Device().SetCurrentGroup(1);
    for (const std::int32_t channel : {101, 102}) Device().SetParam(channel, 1.0f, 0);
    Device().SetParam(133, 0.0f, 0);
    Device().SetParam(34, 0.0f, 0); // of the first group
    Fill();
    Gui().Invalidate();
    Tick();
    ASSERT_TRUE(shown);
    ExpectCurve();
    Device().SetParam(34, 1.0f, 0);
    Device().SetParam(134, 0.0f, 0);
    for (int n = 0; n < 3; ++n) {
        Gui().Invalidate();
        Tick();
    }
    ASSERT_TRUE(Drawn());
    EXPECT_EQ(Drawn()->line.back().y, Curve().PixelRect().nT - 1);
}

TEST_F(GainReduction, AnotherWidthEmptiesIt) {
    Fill();
    Device().State().ResizeToWidth(900);
    Tick(); // which finds the new size, and draws it
    EXPECT_FALSE(Drawn());
    Begin();
    for (int n = 0; n < 5 && !HasFailure(); ++n) {
        Play(0.5f);
        TickAndCompare();
    }
}

TEST_F(GainReduction, DrawsNothingWhenItIsNarrowerThanTwoPixels) {
    for (const float width : {1.2f, 0.0f}) {
        Curve().SetWidth(width);
        for (int n = 0; n < 10; ++n) {
            Play(0.5f);
            Gui().Invalidate();
            Tick();
            EXPECT_FALSE(Drawn());
        }
    }
    Curve().SetWidth(2.0f);
    for (int n = 0; n < 5; ++n) {
        Play(0.5f);
        Gui().Invalidate();
        Tick();
    }
    ASSERT_TRUE(Drawn());
    EXPECT_EQ(Drawn()->line.size(), 2u);
}

TEST_F(GainReduction, LeavesNoClipBehindWhenADrawFails) {
    Fill();
    renderers.Live().throwIn = "DrawLines";
    Gui().Invalidate();
    Tick();
    const auto& calls = renderers.Calls();
    const auto last = std::find_if(
        calls.rbegin(), calls.rend(), [](const std::string& call) { return call.starts_with("SetClip"); });
    ASSERT_NE(last, calls.rend());
    EXPECT_EQ(*last, "SetClip none");
}

TEST_F(GainReduction, CanNotBePressed) {
    Click(Curve());
    Wheel(Curve(), 1.0f);
    EXPECT_EQ(Told(), std::vector<std::string>{});
}
