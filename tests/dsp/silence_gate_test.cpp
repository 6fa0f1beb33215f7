// Silence gates, in the engine and in the plain model. Limits are five seconds of samples.

#include "dsp/silence_gate.h"

#include "tests/dsp/reference/silence_gate.h"
#include "tests/dsp/subject_names.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

using namespace KAV;

namespace {

struct SProduct {
    static constexpr const char* Name = "Engine";
    DSP::SilenceGate gate;
    void SetLimit(int samples) { gate.limit = samples; }
    void Read(const std::vector<float>& block) { gate.Read(block); }
    bool IsSilent() const { return gate.silent; }
};
struct SModel {
    static constexpr const char* Name = "Model";
    Reference::CCoverage coverage;
    Reference::CSilenceGate gate;
    void SetLimit(int samples) { gate.SetRate(static_cast<float>(samples) / 5.0f); }
    void Read(const std::vector<float>& block) {
        gate.Watch(block.data(), static_cast<int>(block.size()), coverage);
    }
    bool IsSilent() const { return gate.IsSilent(); }
};

template<typename TSubject>
class SilenceGate : public testing::Test {
protected:
    void Read(std::size_t samples, float value) { gate.Read(std::vector<float>(samples, value)); }
    TSubject gate;
};
using CSubjects = testing::Types<SProduct, SModel>;
TYPED_TEST_SUITE(SilenceGate, CSubjects, Tests::SSubjectNames);

} // namespace

TYPED_TEST(SilenceGate, ClosesWithTheSampleAfterTheLimit) {
    this->gate.SetLimit(100);
    this->Read(100, 0.0f);
    EXPECT_FALSE(this->gate.IsSilent());
    this->Read(1, 0.0f);
    EXPECT_TRUE(this->gate.IsSilent());
}

TYPED_TEST(SilenceGate, RestartsItsCountAfterASound) {
    this->gate.SetLimit(100);
    this->Read(100, 0.0f);
    this->Read(1, 0.5f);
    this->Read(100, 1.9e-8f);
    EXPECT_FALSE(this->gate.IsSilent());
    this->Read(1, -1.9e-8f);
    EXPECT_TRUE(this->gate.IsSilent());
}

TYPED_TEST(SilenceGate, OpensInTheBlockThatBringsTheSound) {
    this->gate.SetLimit(10);
    this->Read(11, 0.0f);
    ASSERT_TRUE(this->gate.IsSilent());
    std::vector<float> block(8, 0.0f);
    block[5] = 2e-8f;
    this->gate.Read(block);
    EXPECT_FALSE(this->gate.IsSilent());
}

TYPED_TEST(SilenceGate, ThresholdItselfIsSound) {
    this->gate.SetLimit(10);
    this->Read(100, 2e-8f);
    EXPECT_FALSE(this->gate.IsSilent());
    this->Read(100, std::nextafter(2e-8f, 0.0f));
    EXPECT_TRUE(this->gate.IsSilent());
}

TYPED_TEST(SilenceGate, NotANumberAndInfinityAreSound) {
    this->gate.SetLimit(10);
    this->Read(100, std::nanf(""));
    EXPECT_FALSE(this->gate.IsSilent());
    this->Read(100, INFINITY);
    EXPECT_FALSE(this->gate.IsSilent());
}

TYPED_TEST(SilenceGate, PassesALimitThatShrinksBelowItsCount) {
    this->gate.SetLimit(10000);
    this->Read(9000, 0.0f);
    this->gate.SetLimit(5000);
    this->Read(20000, 0.0f);
    EXPECT_FALSE(this->gate.IsSilent());
}
