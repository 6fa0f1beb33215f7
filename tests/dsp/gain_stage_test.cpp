// Gains, in the engine and, where it has them too, in the plain model.

#include "dsp/gain_stage.h"

#include "tests/dsp/reference/gain_stage.h"
#include "tests/dsp/subject_names.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace KAV;

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();

float Apply(const DSP::GainStage& stage, float x) {
    std::array<float, 1> channel{x};
    stage.Process(channel);
    return channel[0];
}

struct SProduct {
    static constexpr const char* Name = "Engine";
    static float Times(float gain, float x) { return Apply({.gain = gain}, x); }
};
struct SModel {
    static constexpr const char* Name = "Model";
    static float Times(float gain, float x) {
        Reference::CCoverage coverage;
        Reference::CGainStage stage;
        stage.SetGain(gain);
        stage.Apply(&x, 1, coverage);
        return x;
    }
};

template<typename TSubject>
class GainStage : public testing::Test {};
using CSubjects = testing::Types<SProduct, SModel>;
TYPED_TEST_SUITE(GainStage, CSubjects, Tests::SSubjectNames);

} // namespace

TYPED_TEST(GainStage, MultipliesByTheGain) {
    EXPECT_EQ(TypeParam::Times(0.5f, 0.75f), 0.375f);
}

TYPED_TEST(GainStage, TurnsAnInfinityIntoNotANumberThroughTheDryTerm) {
    EXPECT_TRUE(std::isnan(TypeParam::Times(0.5f, Infinity)));
    EXPECT_TRUE(std::isnan(TypeParam::Times(0.5f, -Infinity)));
}

TYPED_TEST(GainStage, KeepsTheSignOfAZeroOnlyWhereBothTermsHaveIt) {
    EXPECT_TRUE(std::signbit(TypeParam::Times(0.5f, -0.0f)));
    EXPECT_FALSE(std::signbit(TypeParam::Times(-0.5f, -0.0f)));
}

TYPED_TEST(GainStage, DoesNothingAtUnity) {
    EXPECT_EQ(TypeParam::Times(1.0f, Infinity), Infinity);
    EXPECT_TRUE(std::signbit(TypeParam::Times(1.0f, -0.0f)));
    EXPECT_TRUE(std::isnan(TypeParam::Times(1.0f, std::nanf(""))));
}

TEST(GainStageMix, MixesTheDrySignalIn) {
    EXPECT_EQ(Apply({.mix = 0.25f, .gain = 3.0f}, 1.0f), 0.25f * 3.0f + 0.75f);
}

TEST(GainStageMix, DoesNothingWithoutMixOrWhenOff) {
    for (const DSP::GainStage& stage :
        {DSP::GainStage{.mix = 0.0f, .gain = 5.0f}, DSP::GainStage{.off = true, .gain = 5.0f}}) {
        EXPECT_EQ(Apply(stage, Infinity), Infinity);
        EXPECT_EQ(Apply(stage, 0.3f), 0.3f);
    }
}
