#include "dsp/silence_gate.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

using KAV::DSP::SilenceGate;

namespace {

void Read(SilenceGate& gate, std::size_t samples, float value) {
    gate.Read(std::vector<float>(samples, value));
}

} // namespace

TEST(SilenceGate, ClosesWithTheSampleBehindTheLimit) {
    SilenceGate gate{.limit = 100};
    Read(gate, 100, 0.0f);
    EXPECT_FALSE(gate.silent);
    Read(gate, 1, 0.0f);
    EXPECT_TRUE(gate.silent);
}

TEST(SilenceGate, CountsAnewAfterASound) {
    SilenceGate gate{.limit = 100};
    Read(gate, 100, 0.0f);
    Read(gate, 1, 0.5f);
    Read(gate, 100, 1.9e-8f);
    EXPECT_FALSE(gate.silent);
    Read(gate, 1, -1.9e-8f);
    EXPECT_TRUE(gate.silent);
}

TEST(SilenceGate, OpensInTheBlockThatBringsTheSound) {
    SilenceGate gate{.limit = 10};
    Read(gate, 11, 0.0f);
    ASSERT_TRUE(gate.silent);
    std::vector<float> block(64, 0.0f);
    block[5] = 2e-8f;
    gate.Read(std::span(block).first(8));
    EXPECT_FALSE(gate.silent);
}

TEST(SilenceGate, ThresholdItselfIsSound) {
    SilenceGate gate{.limit = 10};
    Read(gate, 100, 2e-8f);
    EXPECT_FALSE(gate.silent);
    Read(gate, 100, std::nextafter(2e-8f, 0.0f));
    EXPECT_TRUE(gate.silent);
}

TEST(SilenceGate, NotANumberAndInfinityAreSound) {
    SilenceGate gate{.limit = 10};
    Read(gate, 100, std::nanf(""));
    EXPECT_FALSE(gate.silent);
    Read(gate, 100, INFINITY);
    EXPECT_FALSE(gate.silent);
}
