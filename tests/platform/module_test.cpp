#include "platform/module.h"

#include <gtest/gtest.h>

using namespace KAV::Platform;

TEST(Module, IsTheSameFromEverywhereInTheProgram) {
    EXPECT_NE(ThisModule(), nullptr);
    EXPECT_EQ(ThisModule(), ThisModule());
}
