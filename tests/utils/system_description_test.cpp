#include "utils/system_description.h"

#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::Utils;

namespace {

constexpr std::uint64_t Gigabyte = std::uint64_t{1} << 30;

} // namespace

TEST(DescribeMemory, CountsWholeGigabytes) {
    EXPECT_EQ(DescribeMemory({3 * Gigabyte, 16 * Gigabyte}), u"3/16GB");
    EXPECT_EQ(DescribeMemory({3 * Gigabyte - 1, 16 * Gigabyte - 1}), u"2/15GB");
    EXPECT_EQ(DescribeMemory({Gigabyte - 1, Gigabyte}), u"0/1GB");
    EXPECT_EQ(DescribeMemory({1023 * Gigabyte, 4096 * Gigabyte}), u"1023/4096GB");
    EXPECT_EQ(DescribeMemory({}), u"0/0GB");
}

TEST(DescribeMemory, OfThisMachineHasTheFreePartFirst) {
    const auto memory = Platform::PhysicalMemory();
    ASSERT_GT(memory.totalBytes, memory.freeBytes);
    const auto total = DescribeMemory({0, memory.totalBytes}).substr(1); // including the slash before it
    EXPECT_TRUE(DescribeMemory().ends_with(total));
}

TEST(DescribeDisplay, NamesMonitorsSizeRateAndScaleAsWholeNumbers) {
    EXPECT_EQ(DescribeDisplay({2, 1920, 1080, 60, 125}), u"2, 1:1920x1080@60, dpi=125%");
    EXPECT_EQ(DescribeDisplay({1, 3840, 2160, 144, 100}), u"1, 1:3840x2160@144, dpi=100%");
    EXPECT_EQ(DescribeDisplay({}), u"");
}
