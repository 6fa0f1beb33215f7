#include "tests/support/scratch_home.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const KAV::Tests::CScratchHome home;
    return RUN_ALL_TESTS();
}
