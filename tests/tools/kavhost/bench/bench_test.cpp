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
    // The machine was twice as slow in the second run: each run's own ratio does not see it.
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

TEST(CheckClock, AsksForTwentySteps) {
    EXPECT_NO_THROW(CheckClock(20, 1, 10));
    EXPECT_THROW(CheckClock(19, 1, 10), CFailure);
}

TEST(CheckClock, TellsHowMuchWouldDo) {
    const auto message = [](double measuredNs) -> std::string {
        try {
            CheckClock(measuredNs, 1e7, 10);
        } catch (const CFailure& failure) {
            return failure.what();
        }
        return "no error";
    };
    // 20 steps of 10 ms are 200 ms; a run of 10 s took 50 ms, so that 40 s would do, and a fifth for safety.
    EXPECT_EQ(message(5e7),
        "a run is too short for this system's clock, which ticks in steps of 10 ms; try --seconds 48");
    EXPECT_EQ(message(0),
        "a run is too short for this system's clock, which ticks in steps of 10 ms; try --seconds 240");
}
