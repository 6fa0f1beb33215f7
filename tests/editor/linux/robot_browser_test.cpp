// The mark in the About view, and the desktop's browser.

#include "tests/editor/robot.h"

#include "utils/maker_service.h"
#include "utils/text.h"

namespace KAV::Tests {

namespace fs = std::filesystem;

TEST_F(Robot, PressesTheMarkWhichOpensTheMakersSiteIfThisBuildHasOne) {
    const auto folder = Documents() / "browser";
    const auto said = folder / "said";
    WriteText(folder / "xdg-open", "#!/bin/sh\necho \"$1\" >'" + said.string() + ".new'\nmv '" +
                                       said.string() + ".new' '" + said.string() + "'\n");
    fs::permissions(folder / "xdg-open", fs::perms::owner_all);
    fs::remove(said);
    const std::string before = std::getenv("PATH");
    setenv("PATH", (folder.string() + ":" + before).c_str(), 1);
    OpenAbout();
    const auto mark = [this] { return screen.Pixels(320, 17, 114, 74); };
    MoveTo({377, 54});
    Click();
    if (const auto site = Utils::ToUtf8(Utils::SiteAddress(Utils::ConfiguredService())); !site.empty()) {
        EXPECT_TRUE(Until([&] { return fs::exists(said); }));
        EXPECT_EQ(ReadText(said), site + "\n");
    }
    const auto bright = mark();
    EXPECT_TRUE(Until([&] { return mark() != bright; })) << "the mark pulses on";
    EXPECT_EQ(fs::exists(said), !Utils::SiteAddress(Utils::ConfiguredService()).empty());
    setenv("PATH", before.c_str(), 1);
}

} // namespace KAV::Tests
