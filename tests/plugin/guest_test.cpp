// Effects of the library on a host's process, apart from audio.

#include "tests/support/file_text.h"
#include "tests/support/loaded_library.h"
#include "tests/support/scratch_home.h"
#include "tests/support/silent_display.h"
#include "utils/path.h"
#include "utils/session_log.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::Tests;

TEST(Guest, AnInstanceThatIsClosedByAnExitHandlerWritesOnlyIntoItsOwnLog) {
    const auto folder = ScratchFolder().string();
    EXPECT_EQ(std::system((std::string(KAV_LATE_HOST " " KAV_PLUGIN_PATH " ") + folder).c_str()), 0);
    const auto log = ReadText(Utils::ToSystemPath(Utils::LogPath()));
    EXPECT_NE(log.find("SessionEnd="), std::string::npos) << log;
}

TEST(Guest, ASilentDisplayDelaysTheFirstInstanceForAMomentAndNoOther) {
    const CSilentDisplay silent;
    const CLoadedLibrary library;
    for (int i = 0; i < 20; ++i) RunSession(library.Entry());
    EXPECT_FALSE(silent.HasHungUp());
    EXPECT_EQ(silent.Clients(), 1);
}
