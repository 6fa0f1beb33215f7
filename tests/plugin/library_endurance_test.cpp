#include "tests/support/loaded_library.h"
#include "tests/support/process_memory.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

using namespace KAV::Tests;

namespace {

// On Linux the library asks to stay, because hosts unload it while one of its threads still ends.
#if defined(_WIN32)
constexpr bool StaysOnceLoaded = false;

bool IsStillLoaded() {
    return GetModuleHandleW(std::filesystem::path(KAV_PLUGIN_PATH).filename().c_str()) != nullptr;
}
#else
constexpr bool StaysOnceLoaded = true;

bool IsStillLoaded() {
    void* library = dlopen(KAV_PLUGIN_PATH, RTLD_LAZY | RTLD_NOLOAD);
    if (library != nullptr) dlclose(library);
    return library != nullptr;
}
#endif

} // namespace

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
        {
            const CLoadedLibrary library;
            RunSession(library.Entry());
        }
        ASSERT_EQ(IsStillLoaded(), StaysOnceLoaded);
    }
}
