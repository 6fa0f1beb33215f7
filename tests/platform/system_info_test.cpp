#include "platform/system_info.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace KAV::Platform;

TEST(SystemInfo, NamesTheMachineInText) {
    EXPECT_FALSE(SystemName().empty());
    EXPECT_FALSE(MachineName().empty());
    const auto memory = PhysicalMemory();
    EXPECT_GT(memory.totalBytes, 64u << 20);
    EXPECT_GT(memory.freeBytes, 0u);
    EXPECT_LE(memory.freeBytes, memory.totalBytes);
}

TEST(SystemInfo, CountsTicksUpwards) {
    const auto before = TickMs();
    EXPECT_LT(TickMs() - before, 60000u);
}
