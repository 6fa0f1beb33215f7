#include "dsp/box_average.h"

#include <cmath>
#include <cstdint>
#include <deque>
#include <gtest/gtest.h>
#include <numeric>

using KAV::DSP::BoxAverage;

TEST(BoxAverage, IsTheMeanOfTheLastValues) {
    BoxAverage average;
    average.Reset(33);
    std::deque<double> window(33, 1.0);
    std::uint32_t noise = 1;
    for (int i = 0; i < 1000; ++i) {
        noise = noise * 1664525u + 1013904223u;
        const double value = static_cast<double>(noise >> 8) / 16777216.0;
        window.pop_front();
        window.push_back(value);
        const double mean = std::accumulate(window.begin(), window.end(), 0.0) / 33.0;
        ASSERT_NEAR(average.Push(value), mean, 1e-13);
    }
}

TEST(BoxAverage, BeginsAtOneAndStaysThereExactly) {
    BoxAverage average;
    average.Reset(1089);
    for (int i = 0; i < 5000; ++i) ASSERT_EQ(average.Push(1.0), 1.0);
}

TEST(BoxAverage, TakesTheOldestValueOutBeforeItAddsTheNewest) {
    BoxAverage average;
    average.Reset(33);
    std::deque<double> window(33, 1.0);
    double sum = 33.0;
    std::uint32_t noise = 1;
    for (int i = 0; i < 1000; ++i) {
        noise = noise * 1664525u + 1013904223u;
        const double value = std::sqrt(static_cast<double>(noise) / 4294967296.0); // all digits in use
        sum = sum - window.front() + value;
        window.pop_front();
        window.push_back(value);
        ASSERT_EQ(average.Push(value), sum / 33.0) << i;
    }
}
