#include "tools/kavhost/measure/min_max_series.h"

#include "tools/kavhost/base/random.h"

#include <gtest/gtest.h>
#include <limits>

using namespace KAV::Host;

namespace {

SSpan Only(double value) {
    SSpan span;
    span.Add(value);
    return span;
}

} // namespace

TEST(Span, IsEmptyUntilItHasAValueAndInfinityIsOne) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    SSpan span;
    EXPECT_TRUE(span.IsEmpty());
    span.Add(std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(span.IsEmpty());
    span.Add(-infinity);
    EXPECT_FALSE(span.IsEmpty());
    EXPECT_EQ(span.lowest, -infinity);
    span.Add(3);
    EXPECT_EQ(span, (SSpan{-infinity, 3}));
    EXPECT_EQ(Only(infinity), (SSpan{infinity, infinity}));
}

TEST(MinMaxSeries, KeepsEveryStepWhileThereIsRoom) {
    CMinMaxSeries series(4);
    for (const double value : {1.0, -2.0, 3.0, 4.0}) series.Add(Only(value));
    EXPECT_EQ(series.StepsPerBin(), 1u);
    ASSERT_EQ(series.Bins().size(), 4u);
    EXPECT_EQ(series.Bins()[1], (SSpan{-2, -2}));
}

TEST(MinMaxSeries, MergesNeighboursWhenThereAreTooManyBins) {
    CMinMaxSeries series(4);
    for (const double value : {1.0, -2.0, 3.0, 4.0, 5.0}) series.Add(Only(value));
    EXPECT_EQ(series.StepsPerBin(), 2u);
    ASSERT_EQ(series.Bins().size(), 3u);
    EXPECT_EQ(series.Bins()[0], (SSpan{-2, 1}));
    EXPECT_EQ(series.Bins()[1], (SSpan{3, 4}));
    EXPECT_EQ(series.Bins()[2], (SSpan{5, 5})); // lacks a step
    EXPECT_EQ(series.Steps(), 5u);
}

TEST(MinMaxSeries, OfAnyLengthHoldsWhatBinningItAtOnceWould) {
    CRandom random(7);
    for (const std::size_t steps : {0u, 1u, 7u, 8u, 9u, 64u, 65u, 1000u, 4097u}) {
        CMinMaxSeries series(8);
        std::vector<SSpan> all;
        for (std::size_t i = 0; i < steps; ++i) {
            const bool isEmpty = random.Unit() < 0.3;
            all.push_back(isEmpty ? SSpan{} : Only(random.Bipolar()));
            series.Add(all.back());
        }
        const auto perBin = static_cast<std::size_t>(series.StepsPerBin());
        std::vector<SSpan> expected((steps + perBin - 1) / perBin);
        for (std::size_t i = 0; i < steps; ++i) expected[i / perBin].Add(all[i]);
        EXPECT_EQ(std::vector<SSpan>(series.Bins().begin(), series.Bins().end()), expected) << steps;
        EXPECT_LE(expected.size(), 8u);
        EXPECT_TRUE(perBin == 1 || expected.size() > 4) << steps; // no coarser than necessary
        EXPECT_EQ(series.Steps(), steps);
    }
}

TEST(MinMaxSeries, OfNothingHasNoBins) {
    EXPECT_TRUE(CMinMaxSeries().Bins().empty());
}
