// The minimum of a window, in the engine's tree and in the plain model.

#include "dsp/min_tree.h"

#include "tests/dsp/reference/limiter.h"
#include "tests/dsp/subject_names.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <gtest/gtest.h>

using namespace KAV;

namespace {

struct SProduct {
    static constexpr const char* Name = "Engine";
    DSP::MinTree minimum;
    void Reset(std::size_t length) { minimum.Reset(length); }
    double Push(double value) { return minimum.Push(value); }
};
struct SModel {
    static constexpr const char* Name = "Model";
    Reference::CWindowMinimum minimum;
    void Reset(std::size_t length) { minimum.SetLength(length); }
    double Push(double value) { return minimum.Push(value); }
};

template<typename TSubject>
class WindowMinimum : public testing::Test {};
using CSubjects = testing::Types<SProduct, SModel>;
TYPED_TEST_SUITE(WindowMinimum, CSubjects, Tests::SSubjectNames);

} // namespace

TYPED_TEST(WindowMinimum, ForgetsAValueExactlyLengthPushesLater) {
    TypeParam minimum;
    minimum.Reset(64);
    EXPECT_EQ(minimum.Push(0.25), 0.25);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(minimum.Push(1.0), 0.25);
    EXPECT_EQ(minimum.Push(1.0), 1.0);
}

TYPED_TEST(WindowMinimum, EqualsASearchForEveryLength) {
    for (const std::size_t length :
        {1u, 2u, 7u, 8u, 9u, 63u, 64u, 65u, 128u, 512u, 513u, 576u, 1088u, 2176u, 4096u, 4097u}) {
        TypeParam minimum;
        minimum.Reset(length);
        std::deque<double> window(length, 1.0);
        std::uint32_t noise = static_cast<std::uint32_t>(length);
        for (std::size_t i = 0; i < 3 * length + 50; ++i) {
            noise = noise * 1664525u + 1013904223u;
            const double value = (noise >> 28) == 0 ? static_cast<double>(noise >> 8) / 16777216.0 : 1.0;
            window.pop_front();
            window.push_back(value);
            ASSERT_EQ(minimum.Push(value), *std::min_element(window.begin(), window.end()))
                << length << " at " << i;
        }
    }
}

TYPED_TEST(WindowMinimum, ResetFillsTheWindowWithOnes) {
    TypeParam minimum;
    minimum.Reset(576);
    minimum.Push(0.0);
    minimum.Reset(64);
    for (int i = 0; i < 200; ++i) ASSERT_EQ(minimum.Push(1.5), i < 63 ? 1.0 : 1.5);
}
