// The library as it is delivered, loaded the way a host loads it.

#include "platform/library.h"
#include "plugin/vst2.h"
#include "tests/support/process_memory.h"
#include "tests/support/scratch_home.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::VST;

namespace {

std::intptr_t KAV_VST_CALL Host(AEffect*, std::int32_t opcode, std::int32_t, std::intptr_t, void*, float) {
    return opcode == audioMasterVersion ? kVstVersion : 0;
}

std::intptr_t KAV_VST_CALL NoHost(AEffect*, std::int32_t, std::int32_t, std::intptr_t, void*, float) {
    return 0;
}

class CLoaded final {
public:
    explicit CLoaded(const std::filesystem::path& file = KAV_PLUGIN_PATH) {
        std::string reason;
        _library = Platform::OpenLibrary(file, reason);
        EXPECT_NE(_library, nullptr) << reason;
    }
    ~CLoaded() { Platform::CloseLibrary(_library); }
    CLoaded(const CLoaded&) = delete;
    CLoaded& operator=(const CLoaded&) = delete;

    PluginEntry Entry(const char* name = "VSTPluginMain") const {
        return reinterpret_cast<PluginEntry>(Platform::FindSymbol(_library, name));
    }

private:
    void* _library;
};

/// What a host does with an instance in the shortest session.
void RunSession(PluginEntry entry) {
    AEffect* effect = entry(Host);
    ASSERT_NE(effect, nullptr);
    effect->dispatcher(effect, effOpen, 0, 0, nullptr, 0.0f);
    effect->dispatcher(effect, effSetSampleRate, 0, 0, nullptr, 48000.0f);
    effect->dispatcher(effect, effSetBlockSize, 0, 256, nullptr, 0.0f);
    effect->dispatcher(effect, effMainsChanged, 0, 1, nullptr, 0.0f);
    std::vector<float> left(256, 0.5f);
    std::vector<float> right(256, -0.5f);
    float* channels[] = {left.data(), right.data()};
    effect->processReplacing(effect, channels, channels, 256);
    EXPECT_TRUE(std::isfinite(left[255]));
    EXPECT_EQ(effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f), 1);
}

} // namespace

TEST(Library, AllThreeEntriesAreTheSame) {
    const CLoaded library;
    ASSERT_NE(library.Entry(), nullptr);
    for (const char* name : {"VSTPluginMain", "MAIN", "main"}) {
        ASSERT_NE(library.Entry(name), nullptr) << name;
        RunSession(library.Entry(name));
    }
}

TEST(Library, HostWithoutAVersionGetsNoInstance) {
    const CLoaded library;
    EXPECT_EQ(library.Entry()(NoHost), nullptr);
    EXPECT_EQ(library.Entry()(nullptr), nullptr);
}

TEST(Library, ThousandInstancesLeaveTheResidentSizeFlat) {
    const CLoaded library;
    for (int i = 0; i < 100; ++i) RunSession(library.Entry());
    const std::size_t before = Tests::ResidentBytes();
    for (int i = 0; i < 1000; ++i) RunSession(library.Entry());
    const std::size_t after = Tests::ResidentBytes();
    // A leak of one kilobyte per instance would be a megabyte.
    EXPECT_LT(after, before + (std::size_t{1} << 20)) << before << " before, " << after << " after";
}

TEST(Library, TwoCopiesUnderDifferentNamesLiveInOneProcess) {
    const std::filesystem::path original = KAV_PLUGIN_PATH;
    const auto copy = Tests::ScratchFolder() / ("another-name" + original.extension().string());
    std::filesystem::copy_file(original, copy);
    {
        const CLoaded first(original);
        const CLoaded second(copy);
        ASSERT_NE(first.Entry(), second.Entry());
        AEffect* one = first.Entry()(Host);
        AEffect* two = second.Entry()(Host);
        EXPECT_NE(one->dispatcher, two->dispatcher);
        one->setParameter(one, 4, 0.25f);
        EXPECT_EQ(two->getParameter(two, 4), 1.0f);
        one->dispatcher(one, effClose, 0, 0, nullptr, 0.0f);
        EXPECT_EQ(two->getParameter(two, 4), 1.0f);
        two->dispatcher(two, effClose, 0, 0, nullptr, 0.0f);
    }
}

TEST(Library, LoadsAndUnloadsHundredTimes) {
    for (int i = 0; i < 100; ++i) {
        const CLoaded library;
        RunSession(library.Entry());
    }
}
