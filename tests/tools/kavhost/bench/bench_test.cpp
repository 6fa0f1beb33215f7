#include "tools/kavhost/bench/bench.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace KAV::Host;

namespace {

double Peak(const SMaterial& material) {
    float peak = 0;
    for (std::size_t c = 0; c < material.audio.Channels(); ++c) {
        for (const float sample : material.audio.Channel(c)) peak = std::max(peak, std::abs(sample));
    }
    return Decibels(static_cast<double>(peak));
}

} // namespace

TEST(Median, IsTheMiddleOfWhatIsSorted) {
    EXPECT_EQ(Median({3}), 3);
    EXPECT_EQ(Median({5, 1, 3}), 3);
    EXPECT_EQ(Median({4, 1, 3, 2}), 2.5);
}

TEST(MedianRatio, IsTakenRunByRun) {
    // The machine was twice as slow in the second run, which doesn't affect each run's own ratio.
    EXPECT_EQ(MedianRatio({{10, 20, 10}, {5, 10, 5}}), 2);
}

TEST(Material, PeaksAtMinus3dBAndIsTheSameEveryTime) {
    for (const int rate : {8000, 48000, 192000}) {
        const SBenchOptions options{.rateHz = rate, .channels = 3, .seconds = 1, .input = {}};
        const auto material = MakeMaterial(options);
        EXPECT_EQ(material.audio.Channels(), 3u);
        EXPECT_EQ(material.audio.Frames(), static_cast<std::size_t>(rate));
        EXPECT_NEAR(Peak(material), -3, 0.2);
        const auto again = MakeMaterial(options);
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_TRUE(std::ranges::equal(material.audio.Channel(c), again.audio.Channel(c)));
        }
        EXPECT_FALSE(std::ranges::equal(material.audio.Channel(0), material.audio.Channel(1)));
    }
}

TEST(Material, IsLouderByTheGain) {
    const auto plain = MakeMaterial({.seconds = 0.5, .input = {}});
    const auto loud = MakeMaterial({.seconds = 0.5, .gainDb = 20, .input = {}});
    for (std::size_t c = 0; c < plain.audio.Channels(); ++c) {
        for (std::size_t i = 0; i < plain.audio.Frames(); ++i)
            ASSERT_EQ(loud.audio.Channel(c)[i], plain.audio.Channel(c)[i] * 10.0f);
    }
}

namespace {

/// A clock that advances in steps; each pass takes the time that it is given.
class CCoarseClock final {
public:
    CCoarseClock(std::int64_t stepNs, std::int64_t passNs) : _stepNs(stepNs), _passNs(passNs) {}

    double TimeOfAPass(int mostPasses = 1000) {
        return KAV::Host::TimeOfAPass(
            [this] {
                ++passes;
                _timeNs += _passNs;
            },
            [this] { return _timeNs / _stepNs * _stepNs; }, _stepNs, mostPasses);
    }

    int passes = 0;

private:
    std::int64_t _stepNs;
    std::int64_t _passNs;
    std::int64_t _timeNs = 12345678; // somewhere between two steps
};

} // namespace

TEST(TimeOfAPass, TakesOnePassWhereTheClockIsFine) {
    CCoarseClock clock(1, 1'000'000);
    EXPECT_EQ(clock.TimeOfAPass(), 1e6);
    EXPECT_EQ(clock.passes, 1);
}

TEST(TimeOfAPass, GoesOnForTwentyStepsOfACoarseClock) {
    CCoarseClock clock(16'000'000, 5'000'000);
    const double ns = clock.TimeOfAPass();
    EXPECT_NEAR(ns, 5e6, 5e6 * 0.05);
    EXPECT_GE(clock.passes * std::int64_t{5'000'000}, 19 * std::int64_t{16'000'000});
    EXPECT_LE(clock.passes * std::int64_t{5'000'000}, 22 * std::int64_t{16'000'000});
}

TEST(TimeOfAPass, FailsWhenTheClockStandsStill) {
    CCoarseClock clock(16'000'000, 0);
    EXPECT_THROW(clock.TimeOfAPass(), CFailure);
    EXPECT_EQ(clock.passes, 1000);
}
