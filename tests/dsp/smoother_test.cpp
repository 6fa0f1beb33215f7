// Ramps, in the engine and in the plain model.

#include "dsp/smoother.h"

#include "tests/dsp/reference/smoother.h"
#include "tests/dsp/subject_names.h"

#include <gtest/gtest.h>

using namespace KAV;

namespace {

struct SProduct {
    static constexpr const char* Name = "Engine";
    DSP::Smoother smoother;
    SProduct(float riseMs, float fallMs, float rateHz) : smoother(riseMs, fallMs, rateHz) {}
    void SetRate(float rateHz) { smoother.SetRate(rateHz); }
    float Step(float state, float target) { return smoother.Step(state, target); }
};
struct SModel {
    static constexpr const char* Name = "Model";
    Reference::CCoverage coverage;
    Reference::CSmoother smoother;
    SModel(float riseMs, float fallMs, float rateHz) : smoother(riseMs, fallMs) { SetRate(rateHz); }
    void SetRate(float rateHz) { smoother.SetRate(rateHz); }
    float Step(float state, float target) { return smoother.Step(state, target, coverage); }
};

template<typename TSubject>
class Smoother : public testing::Test {};
using CSubjects = testing::Types<SProduct, SModel>;
TYPED_TEST_SUITE(Smoother, CSubjects, Tests::SSubjectNames);

} // namespace

TYPED_TEST(Smoother, CoversNinetyNinePercentWithinItsTime) {
    TypeParam smoother(100.0f, 250.0f, 1000.0f);
    float up = 0.0f;
    float down = 100.0f;
    for (int step = 0; step < 100; ++step) up = smoother.Step(up, 100.0f);
    EXPECT_NEAR(up, 99.0f, 0.01f);
    for (int step = 0; step < 250; ++step) down = smoother.Step(down, 0.0f);
    EXPECT_NEAR(down, 1.0f, 0.01f);
}

TYPED_TEST(Smoother, ArrivesOnceTheDistanceIsAHundredth) {
    TypeParam smoother(100.0f, 100.0f, 1000.0f);
    EXPECT_EQ(smoother.Step(0.5f, 0.5099f), 0.5099f);
    EXPECT_EQ(smoother.Step(0.5f, 0.4901f), 0.4901f);
    EXPECT_LT(smoother.Step(0.5f, 0.52f), 0.52f);
    // In single precision the distance is 1 - 0.99, a little less than 0.01.
    EXPECT_EQ(smoother.Step(0.0f, 1.0f - 0.99f), 1.0f - 0.99f);
    EXPECT_LT(smoother.Step(0.0f, 0.01f), 0.01f);
}

TYPED_TEST(Smoother, TimeOfZeroJumps) {
    TypeParam smoother(0.0f, 500.0f, 100.0f);
    EXPECT_EQ(smoother.Step(0.0f, 1.0f), 1.0f);
    EXPECT_GT(smoother.Step(1.0f, 0.0f), 0.9f);
}

TYPED_TEST(Smoother, TakesAnotherRateForBothHalves) {
    TypeParam smoother(100.0f, 100.0f, 1000.0f);
    const float fine = smoother.Step(0.0f, 1.0f);
    smoother.SetRate(10.0f);
    EXPECT_GT(smoother.Step(0.0f, 1.0f), fine);
    EXPECT_LT(smoother.Step(1.0f, 0.0f), 1.0f - fine);
    smoother.SetRate(1000.0f);
    EXPECT_EQ(smoother.Step(0.0f, 1.0f), fine);
}

TYPED_TEST(Smoother, StateAtTheTargetStays) {
    TypeParam smoother(100.0f, 100.0f, 1000.0f);
    EXPECT_EQ(smoother.Step(0.25f, 0.25f), 0.25f);
}
