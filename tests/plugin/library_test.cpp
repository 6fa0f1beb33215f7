#include "tests/support/loaded_library.h"
#include "tests/support/scratch_home.h"

using namespace KAV::VST;
using namespace KAV::Tests;

namespace {

std::intptr_t NoHost(AEffect*, std::int32_t, std::int32_t, std::intptr_t, void*, float) {
    return 0;
}

} // namespace

TEST(Library, AllThreeEntriesAreTheSame) {
    const CLoadedLibrary library;
    ASSERT_NE(library.Entry(), nullptr);
    for (const char* name : {"VSTPluginMain", "MAIN", "main"}) {
        ASSERT_NE(library.Entry(name), nullptr) << name;
        RunSession(library.Entry(name));
    }
}

TEST(Library, HostWithoutAVersionGetsNoInstance) {
    const CLoadedLibrary library;
    EXPECT_EQ(library.Entry()(NoHost), nullptr);
    EXPECT_EQ(library.Entry()(nullptr), nullptr);
}

TEST(Library, TwoCopiesUnderDifferentNamesLiveInOneProcess) {
    const std::filesystem::path original = KAV_PLUGIN_PATH;
    const auto copy = ScratchFolder() / ("another-name" + original.extension().string());
    std::filesystem::copy_file(original, copy);
    {
        const CLoadedLibrary first(original);
        const CLoadedLibrary second(copy);
        ASSERT_NE(first.Entry(), second.Entry());
        AEffect* one = first.Entry()(SmallestHost);
        AEffect* two = second.Entry()(SmallestHost);
        EXPECT_NE(one->dispatcher, two->dispatcher);
        one->setParameter(one, 4, 0.25f);
        EXPECT_EQ(two->getParameter(two, 4), 1.0f);
        one->dispatcher(one, effClose, 0, 0, nullptr, 0.0f);
        EXPECT_EQ(two->getParameter(two, 4), 1.0f);
        two->dispatcher(two, effClose, 0, 0, nullptr, 0.0f);
    }
}
