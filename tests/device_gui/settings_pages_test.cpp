// The entries of the settings menu that open pages, and those that depend on what the server says.

#include "device_gui/settings.h"
#include "tests/device_gui/open_panel.h"
#include "tests/support/local_server.h"

#include <chrono>
#include <cstdlib>
#include <thread>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class SettingsPages : public OpenPanel {
protected:
    /// The instance of a user whose server answers so, once it knows the answer.
    void AskServer(const std::string& answer) {
        effect.reset();
        server = std::make_unique<CLocalServer>(
            [=](CConnection& connection, const std::string&) { connection.Answer(200, answer); });
        service = {server->Origin(), server->Origin(), u"0123abcd", u"vst24_test", {}};
        Reopen();
        for (int n = 0; n < 6000 && Gui().Version().LatestVersion().empty(); ++n)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ASSERT_FALSE(Gui().Version().LatestVersion().empty());
        for (int n = 0; n < 50 && !Gui().Version().IsNewerKnown(); ++n) // which is known a moment later
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    const GUI::Menu& OpenMenu() {
        Click(Named(u"ToolAbout"));
        return window.menus.back();
    }
    void TearDown() override {
        OpenPanel::TearDown();
        server.reset();
    }

    std::unique_ptr<CLocalServer> server;
};

} // namespace

TEST_F(SettingsPages, ANewerVersionComesFirstAndInBold) {
    AskServer("1.0.2.0||http://host/file||x");
    const auto& menu = OpenMenu();
    ASSERT_EQ(menu.size(), 11u);
    EXPECT_EQ(menu[0].sText, u"New version 1.0.2.0 is available...");
    EXPECT_EQ(menu[0].nCommand, 659u);
    EXPECT_TRUE(menu[0].bBold);
    EXPECT_EQ(menu[1].sText, u"What's new in version 1.0.2.0...");
    EXPECT_EQ(menu[1].nCommand, 660u);
    EXPECT_FALSE(menu[1].bBold);
    EXPECT_TRUE(menu[2].bSeparator);
    EXPECT_EQ(menu[3].sText, u"AGC Settings");
}

TEST_F(SettingsPages, TheSameVersionHasTheEntryOfItsNewsAlone) {
    AskServer("1.0.1.0||http://host/file||x");
    const auto& menu = OpenMenu();
    ASSERT_EQ(menu.size(), 10u);
    EXPECT_EQ(menu[0].sText, u"What's new in version 1.0.1.0...");
    EXPECT_TRUE(menu[1].bSeparator);
}

TEST_F(SettingsPages, WithoutAnAnswerTheMenuBeginsWithTheSettings) {
    const auto& menu = OpenMenu();
    ASSERT_EQ(menu.size(), 8u);
    EXPECT_EQ(menu[0].sText, u"AGC Settings");
    for (const std::int32_t item : {56, 59, 60}) Command(-3, item); // there is no such page
    EXPECT_TRUE(window.boxes.empty());
    EXPECT_TRUE(dialogs.errors.empty());
}

#if !defined(_WIN32) // where the pages would open
TEST_F(SettingsPages, OpenInTheUsersBrowser) {
    const auto folder = ScratchFolder() / "browser";
    const auto said = folder / "said";
    WriteText(folder / "xdg-open", "#!/bin/sh\necho \"$1\" >'" + said.string() + ".new'\nmv '" +
                                       said.string() + ".new' '" + said.string() + "'\n");
    std::filesystem::permissions(folder / "xdg-open", std::filesystem::perms::owner_all);
    const std::string before = std::getenv("PATH");
    setenv("PATH", (folder.string() + ":" + before).c_str(), 1);
    AskServer("1.0.2.0||https://host/file||x");
    const auto page = [&] {
        for (int n = 0; n < 1000 && !std::filesystem::exists(said); ++n)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const auto text = ReadText(said);
        std::filesystem::remove(said);
        return text;
    };
    const auto opened = [&](std::u16string_view entry) {
        OpenMenu();
        EXPECT_TRUE(robot.Choose(entry));
        return page();
    };
    const auto origin = "http://127.0.0.1:" + std::to_string(server->Port());
    EXPECT_EQ(opened(u"New version 1.0.2.0 is available..."), "https://host/file\n");
    EXPECT_EQ(opened(u"What's new in version 1.0.2.0..."),
        origin + "/service/whatsnew.php?platform=win&product_id=0123abcd\n");
    EXPECT_EQ(opened(u"User Manual..."), origin + "/service/help.php?product_id=0123abcd\n");
    robot.Key(GUI::KeyF1); // there is no guide as a file
    EXPECT_EQ(page(), origin + "/service/help.php?product_id=0123abcd\n");
    setenv("PATH", before.c_str(), 1);
}
#endif
