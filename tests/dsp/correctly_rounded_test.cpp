#include "tests/dsp/processor_paths.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace KAV::Tests {
double WideFourthPower(double x);
double WideExponential(double x);
} // namespace KAV::Tests

using namespace KAV;

TEST(CorrectlyRounded, GiveTheLibrarysBits) {
    if (Tests::ProcessorPaths().back() != DSP::EProcessorPath::Wide)
        GTEST_SKIP() << "not used on this processor";
    std::mt19937_64 random(1);
    for (int i = 0; i < 300000; ++i) {
        const double x = static_cast<double>((random() >> 11) + 1) * 0x1p-53; // above 0, at most 1
        ASSERT_EQ(Tests::WideFourthPower(x), std::pow(x, 4.0)) << x;
        ASSERT_EQ(Tests::WideExponential(-x), std::exp(-x)) << x;
    }
}
