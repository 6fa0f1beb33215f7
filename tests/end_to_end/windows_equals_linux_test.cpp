#include "tests/end_to_end/music.h"
#include "tests/support/scratch_home.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace KAV::Tests;

// The two maths libraries differ in the last bits of their exponentials, and so do a few samples in millions.
TEST(Windows, RendersWhatLinuxRenders) {
    const auto folder = ScratchFolder();
    WriteMusic(folder / "in.wav", RealMusic());
    for (const std::string settings :
        {"--set 'Threshold (1)=-12'", "--set 'Threshold (1)=-12' --set 'Auto Release (1)=on'"}) {
        const auto render = [&](const std::string& program, const char* out) {
            std::filesystem::remove(folder / out);
            RunCommand("cd '" + folder.string() + "' && " + program + " render in.wav -o " + out +
                       " --format float " + settings);
            return ReadMusic(folder / out);
        };
        const auto here = render("'" KAVHOST_PROGRAM "'", "linux.wav");
        const auto there = render("'" KAV_WINE_RUN "' '" KAV_WINDOWS_BUILD "/kavhost.exe'", "windows.wav");
        ASSERT_EQ(here.samples.size(), there.samples.size());
        float difference = 0.0f;
        for (std::size_t i = 0; i < here.samples.size(); ++i) {
            difference = std::max(difference, std::fabs(here.samples[i] - there.samples[i]));
        }
        EXPECT_LE(difference, 1e-6f) << settings;
        EXPECT_GT(here.Peak(), 0.99f);
        RecordProperty("difference", std::to_string(difference));
    }
}
