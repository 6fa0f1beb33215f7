#include "tests/tree/image.h"

#include <gtest/gtest.h>

using namespace KAV::Tests;

TEST(PluginImage, GivesHostsThreeEntriesAndNeedsNothingButTheSystem) {
    EXPECT_EQ(Complaints(ReadImage(std::filesystem::path(KAV_PLUGIN_PATH))), std::vector<std::string>{});
}
