#include "dsp/sample_history.h"

#include <cstdint>
#include <deque>
#include <gtest/gtest.h>

using KAV::DSP::CSampleHistory;

namespace {

/// Pushes counting numbers in runs and checks all held values before each run.
void ExpectTheLast(std::size_t length, std::size_t run, std::size_t runs) {
    CSampleHistory<float> history;
    history.Reset(length, -1.0f);
    std::deque<float> held(length, -1.0f);
    float next = 0.0f;
    for (std::size_t i = 0; i < runs; ++i) {
        float* place = history.Next(run);
        for (std::size_t back = 1; back <= length; ++back) {
            ASSERT_EQ(*(place - back), held[length - back]) << "run " << i << ", " << back << " back";
        }
        for (std::size_t k = 0; k < run; ++k) {
            place[k] = next;
            held.push_back(next++);
            held.pop_front();
        }
        for (std::size_t k = 0; k < CSampleHistory<float>::Overhang; ++k) place[run + k] = -2.0f;
        history.Advance(run);
    }
}

} // namespace

TEST(SampleHistory, HoldsTheLastValuesInOrderWhateverTheRuns) {
    for (const std::size_t length : {1u, 33u, 64u, 576u, 2000u}) {
        for (const std::size_t run : {1u, 7u, 16u, 512u}) {
            ASSERT_NO_FATAL_FAILURE(ExpectTheLast(length, run, 3000 / run + 3));
        }
    }
}

TEST(SampleHistory, RestartsEvenWhenItShrinks) {
    CSampleHistory<double> history;
    history.Reset(8, 1.0);
    for (int i = 0; i < 300; ++i) {
        *history.Next(1) = 5.0;
        history.Advance(1);
    }
    history.Reset(3, 2.0);
    const double* place = history.Next(1);
    for (int back = 1; back <= 3; ++back) EXPECT_EQ(*(place - back), 2.0);
}

TEST(SampleHistory, ReserveKeepsWhatIsHeld) {
    CSampleHistory<double> history;
    history.Reset(3, 0.0);
    for (int i = 1; i <= 3; ++i) {
        *history.Next(1) = i;
        history.Advance(1);
    }
    history.Reserve(1000);
    const double* place = history.Next(1);
    for (int back = 1; back <= 3; ++back) EXPECT_EQ(*(place - back), 4.0 - back);
}

TEST(SampleHistory, RunsOfWholeLinesBeginOnALine) {
    CSampleHistory<double> history;
    history.Reset(33, 0.0);
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(history.Next(48)) % 64, 0u);
        history.Advance(48);
    }
}
