#include "platform/system_info.h"
#include "tests/support/display.h"
#include "tests/support/file_text.h"
#include "tests/support/other_process.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace KAV::Platform;
using namespace KAV::Tests;

TEST(MachineIdentifier, HidesTheMachinesOwn) {
    auto raw = ReadText("/etc/machine-id").substr(0, 32);
    if (raw.size() != 32) GTEST_SKIP() << "this machine has none";
    auto identifier = MachineIdentifier();
    EXPECT_EQ(identifier, MachineIdentifier());
    EXPECT_EQ(identifier.size(), 36u);
    std::erase(identifier, '-');
    for (std::size_t i = 0; i + 8 <= raw.size(); ++i)
        EXPECT_EQ(identifier.find(raw.substr(i, 8)), std::string::npos) << "part of it is visible";
}

TEST(MachineIdentifier, IsAnotherForAnotherUser) {
    if (getuid() != 0) GTEST_SKIP() << "only root can become another user";
    const auto mine = MachineIdentifier();
    if (mine.empty()) GTEST_SKIP() << "this machine has none";
    EXPECT_EQ(AsNobody([&] { return MachineIdentifier() != mine ? 0 : 1; }), 0);
}

TEST(SystemName, IsTheDistributionsOwnWithTheKernels) {
    const auto name = SystemName();
    EXPECT_NE(name.find("Linux"), std::string::npos) << name;
    EXPECT_EQ(name.find('"'), std::string::npos) << name;
}

TEST(ProcessorName, IsTheKernels) {
    const auto table = ReadText("/proc/cpuinfo");
    const auto name = ProcessorName();
    EXPECT_NE(table.find(": " + name + "\n"), std::string::npos) << name;
}

TEST(Display, IsMissingWithoutAServer) {
    unsetenv("DISPLAY");
    EXPECT_EQ(Display().monitors, 0);
}

TEST(Display, DescribesTheScreen) {
    const CDisplay server;
    const auto display = Display();
    EXPECT_EQ(display.monitors, 1);
    EXPECT_EQ(display.width, 1280);
    EXPECT_EQ(display.height, 720);
    EXPECT_EQ(display.scalePercent, 100);
}
