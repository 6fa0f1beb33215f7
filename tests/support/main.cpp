#include "tests/support/scratch_home.h"

#include <gtest/gtest.h>

#if defined(__SANITIZE_THREAD__)
/// Not a race of the product: the X server's library frees the name of its file when the process ends, while
/// an abandoned thread may still hold it, and a copied process ends together with its parent's threads.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
    return "race:libXau.so\nthread:ErrorReport_IsSentByOneOfManyProcesses_Test\n";
}
#endif

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const KAV::Tests::CScratchHome home;
    return RUN_ALL_TESTS();
}
