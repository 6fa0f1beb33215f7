#include "tests/support/loaded_library.h"
#include "tests/support/process_memory.h"

using namespace KAV::Tests;

TEST(LibraryEndurance, ThousandInstancesLeaveTheResidentSizeFlat) {
    const CLoadedLibrary library;
    for (int i = 0; i < 100; ++i) RunSession(library.Entry());
    const std::size_t before = ResidentBytes();
    for (int i = 0; i < 1000; ++i) RunSession(library.Entry());
    const std::size_t after = ResidentBytes();
    // A leak of one kilobyte per instance would be a megabyte.
    EXPECT_LT(after, before + (std::size_t{1} << 20)) << before << " before, " << after << " after";
}

TEST(LibraryEndurance, LoadsAndUnloadsHundredTimes) {
    for (int i = 0; i < 100; ++i) {
        const CLoadedLibrary library;
        RunSession(library.Entry());
    }
}
