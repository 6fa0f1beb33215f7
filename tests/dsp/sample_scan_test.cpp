#include "dsp/sample_scan.h"

#include <cmath>
#include <cstddef>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

using namespace KAV::DSP;

namespace {

constexpr float Limit = 0.5f;
constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

/// For every length up to two unrolled vector steps, and every place in it.
template<typename TCheck>
void AtEveryPlace(TCheck check) {
    for (std::size_t length = 1; length <= 40; ++length) {
        for (std::size_t place = 0; place < length; ++place) check(length, place);
    }
}

} // namespace

TEST(PeakOf, FindsAPeakOfEitherSignAtAnyPlace) {
    AtEveryPlace([](std::size_t length, std::size_t place) {
        std::vector<float> channel(length, 0.1f);
        channel[place] = -0.9f;
        EXPECT_EQ(PeakOf(channel, 0.0f), 0.9f) << length << " " << place;
        EXPECT_EQ(PeakOf(channel, 2.0f), 2.0f);
        channel[place] = NotANumber;
        EXPECT_EQ(PeakOf(channel, 0.0f), length == 1 ? 0.0f : 0.1f) << length << " " << place;
    });
}

TEST(QuietEnd, ReachesBackToTheLastSampleThatIsNotSmaller) {
    AtEveryPlace([](std::size_t length, std::size_t place) {
        for (const float loud : {Limit, -Limit, 1.0f, NotANumber, std::numeric_limits<float>::infinity()}) {
            std::vector<float> channel(length, std::nextafter(-Limit, 0.0f));
            EXPECT_EQ(QuietEnd(channel, Limit), length);
            channel[place] = loud;
            EXPECT_EQ(QuietEnd(channel, Limit), length - 1 - place) << length << " " << place << " " << loud;
            channel[0] = loud; // earlier samples don't matter
            EXPECT_EQ(QuietEnd(channel, Limit), length - 1 - place);
        }
    });
    EXPECT_EQ(QuietEnd({}, Limit), 0u);
}
