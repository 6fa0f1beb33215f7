#include "gui/animation.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace KAV::GUI;

namespace {

SAnimValue Moving(std::uint32_t riseMs, std::uint32_t fallMs, Ease ease = nullptr) {
    SAnimValue value;
    value.nRiseMs = riseMs;
    value.nFallMs = fallMs;
    value.pfnEase = ease;
    return value;
}

float Straight(float a, float b, float phase) {
    return a + (b - a) * phase;
}

/// The curve again, in double precision and by its two halves.
double PlainOvershoot(double a, double b, double phase) {
    if (phase >= 1.0) return b;
    double swing = phase / 0.7;
    if (phase > 0.7) swing = (1.0 - phase) / 0.3;
    return a + (b - a) * (phase + 0.5 * swing);
}

} // namespace

TEST(Animation, JumpsWhereNoDurationIsSet) {
    auto value = Moving(0, 100);
    value.Retarget(0.5f);
    EXPECT_EQ(value.fValue, 0.5f);
    EXPECT_EQ(value.fFrom, 0.0f);
    value.Retarget(0.25f);
    EXPECT_EQ(value.fValue, 0.5f) << "the way down takes time";
    EXPECT_EQ(value.fTarget, 0.25f);
    EXPECT_EQ(value.fFrom, 0.5f);
}

TEST(Animation, RetargetingToThePresentTargetDoesNotRestartAMove) {
    auto value = Moving(100, 100, Straight);
    value.Retarget(1.0f);
    value.Step(40);
    value.Retarget(1.0f);
    EXPECT_EQ(value.nElapsedMs, 40u);
    EXPECT_EQ(value.fFrom, 0.0f);
    value.Retarget(0.0f);
    EXPECT_EQ(value.nElapsedMs, 0u);
    EXPECT_EQ(value.fFrom, value.fValue);
}

TEST(Animation, TakesTheDurationOfItsDirection) {
    auto value = Moving(100, 200);
    value.Retarget(1.0f);
    EXPECT_TRUE(value.Step(50));
    EXPECT_FLOAT_EQ(value.fValue, 0.5f);
    EXPECT_TRUE(value.Step(50));
    EXPECT_EQ(value.fValue, 1.0f);
    EXPECT_FALSE(value.Step(50)) << "it is there";
    value.Retarget(0.0f);
    EXPECT_TRUE(value.Step(50));
    EXPECT_FLOAT_EQ(value.fValue, 0.75f);
}

TEST(Animation, StopsAtItsTarget) {
    auto value = Moving(100, 100);
    value.Retarget(1.0f);
    value.Step(5000);
    EXPECT_EQ(value.fValue, 1.0f);
    value.Retarget(-1.0f);
    value.Step(5000);
    EXPECT_EQ(value.fValue, -1.0f);
}

TEST(Animation, AMoveThatTurnsBackGoesByTheWayThatIsLeft) {
    auto value = Moving(100, 100);
    value.Retarget(1.0f);
    value.Step(50);
    value.Retarget(0.0f);
    value.Step(50);
    EXPECT_FLOAT_EQ(value.fValue, 0.25f) << "half of the half, in half the time";
}

TEST(Animation, WithoutADurationAStepArrives) {
    auto value = Moving(100, 0);
    value.Retarget(1.0f);
    value.nRiseMs = 0;
    EXPECT_TRUE(value.Step(0));
    EXPECT_EQ(value.fValue, 1.0f);
}

TEST(Animation, FollowsItsCurve) {
    auto value = Moving(100, 100, Overshoot);
    value.Retarget(1.0f);
    value.Step(70);
    EXPECT_FLOAT_EQ(value.fValue, 1.2f) << "half the way beyond, less what is left";
    value.Step(29);
    EXPECT_GT(value.fValue, 1.0f);
    value.Step(1);
    EXPECT_EQ(value.fValue, 1.0f);
    EXPECT_FALSE(value.Step(1));
}

TEST(Animation, AWholeTimeStampAsTheElapsedTimeArrives) {
    auto value = Moving(100, 100, Overshoot);
    value.Retarget(1.0f);
    value.Step(50);
    value.Step(std::numeric_limits<std::uint32_t>::max() - 20);
    EXPECT_EQ(value.fValue, 1.0f) << "the sum doesn't wrap around";
}

TEST(Animation, JumpsAreNoMove) {
    auto value = Moving(100, 100);
    value.Jump(0.5f);
    EXPECT_EQ(value.fFrom, 0.5f);
    EXPECT_EQ(value.fValue, 0.5f);
    EXPECT_EQ(value.fTarget, 0.5f);
    EXPECT_FALSE(value.Step(10));
}

TEST(Animation, TheCurvesAreThoseOfTheFormula) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> place(-2.0f, 2.0f);
    std::uniform_real_distribution<float> phase(0.0f, 1.2f);
    for (int n = 0; n < 10000; ++n) {
        const float a = place(random);
        const float b = place(random);
        const float t = phase(random);
        const double plain =
            PlainOvershoot(static_cast<double>(a), static_cast<double>(b), static_cast<double>(t));
        EXPECT_NEAR(static_cast<double>(Overshoot(a, b, t)), plain, 1e-5);
        const double held = std::fmin(std::fmax(plain, 0.0), 1.0);
        EXPECT_NEAR(static_cast<double>(OvershootHeld(a, b, t)), held, 1e-5);
    }
}
