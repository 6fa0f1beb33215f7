#include "tests/support/loaded_library.h"
#include "tests/support/process_memory.h"

#include <cstdlib>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

using namespace KAV::Tests;

namespace {

// On Linux the library stays loaded, because hosts unload it while one of its threads is still ending.
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

/// A state that differs from that of the previous instance in each of its parts.
std::string ChunkOf(int number) {
    const auto n = std::to_string(number);
    return "<patch_format>textual</patch_format>\r\n<patch_name>state " + n + "</patch_name>\r\n<fx_names>a" +
           n + "|*|b|*|c</fx_names>\r\n<param tag=\"33\" >0." + n + "</param>\r\n<param tag=\"30\" >" +
           std::to_string(number % 4) + "</param>\r\n<kav_input_routing><fx>" + std::to_string(number % 4) +
           "</fx><map>0,-1|*|1,-1</map><name>r" + n +
           "</name></kav_input_routing>\r\n<macro group=\"0\">33;0." + n + "</macro>";
}

} // namespace

TEST(LibraryEndurance, ThousandInstancesLeaveTheResidentSizeFlat) {
    // Under Wine an instance takes a tenth of a second.
    const int instances = StaysOnceLoaded || std::getenv("KAV_LONG") != nullptr ? 1000 : 200;
    const CLoadedLibrary library;
    for (int i = 0; i < instances / 10; ++i) RunSession(library.Entry(), ChunkOf(i));
    const std::size_t before = ResidentBytes();
    for (int i = 0; i < instances; ++i) RunSession(library.Entry(), ChunkOf(i));
    const std::size_t after = ResidentBytes();
    // A leak of one kilobyte per instance would be a megabyte for a thousand.
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
