#include "tests/support/display.h"
#include "tests/tools/kavhost/child.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <png.h>
#include <thread>

using namespace KAV::Tests;

namespace fs = std::filesystem;

namespace {

struct SShown {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<unsigned char> colours; ///< red, green, blue
};

SShown ReadPng(const fs::path& file) {
    const auto bytes = BytesOf(file);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()), 0) << file;
    image.format = PNG_FORMAT_RGB;
    SShown shown{image.width, image.height, std::vector<unsigned char>(PNG_IMAGE_SIZE(image))};
    EXPECT_NE(png_image_finish_read(&image, nullptr, shown.colours.data(), 0, nullptr), 0) << file;
    return shown;
}

/// How many different colours a picture has.
std::size_t Colours(const SShown& shown) {
    std::vector<std::uint32_t> all;
    for (std::size_t i = 0; i + 2 < shown.colours.size(); i += 3) {
        all.push_back(static_cast<std::uint32_t>(
            shown.colours[i] << 16 | shown.colours[i + 1] << 8 | shown.colours[i + 2]));
    }
    std::ranges::sort(all);
    return static_cast<std::size_t>(std::unique(all.begin(), all.end()) - all.begin());
}

bool Until(const std::function<bool()>& holds) {
    const auto guard = std::chrono::steady_clock::now() + std::chrono::seconds(90);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > guard) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

/// Without a display unless the test makes one. The server that kavhost starts is noted.
class Shot : public testing::Test {
protected:
    Shot() {
        unsetenv("DISPLAY");
        const auto server = folder / "bin" / "Xvfb";
        fs::create_directory(folder / "bin");
        std::ofstream(server) << "#!/bin/sh\necho $$ >" << noted << "\nexec /usr/bin/Xvfb \"$@\"\n";
        fs::permissions(server, fs::perms::owner_all);
        path = (folder / "bin").string() + ":" + std::getenv("PATH");
        setenv("PATH", path.c_str(), 1);
    }

    std::vector<std::string> ShotTo(const std::string& picture, std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments{"shot", "-p", PluginFile(), "-o", folder / picture};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    SRun Run(const std::string& picture, std::vector<std::string> more = {}) const {
        return CChild(ShotTo(picture, std::move(more))).Wait();
    }
    pid_t Server() const {
        pid_t process = -1;
        std::ifstream(noted) >> process;
        return process;
    }
    bool ServerHasEnded() const { return Server() > 0 && kill(Server(), 0) != 0; }
    fs::path WriteSound() const {
        const auto file = folder / "in.wav";
        WriteWav(file, Noise(2, std::size_t{44100} * 3, 0.5f));
        return file;
    }

    fs::path folder = NewFolder();
    fs::path noted = folder / "server";
    std::string path;
};

} // namespace

TEST_F(Shot, IsTheEditorAtItsUsualSizeOnADisplayOfItsOwn) {
    const auto run = Run("panel.png");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out + run.errors, "");
    const auto shown = ReadPng(folder / "panel.png");
    EXPECT_EQ(shown.width, 754u);
    EXPECT_EQ(shown.height, 553u);
    EXPECT_GT(Colours(shown), 500u);
    EXPECT_TRUE(ServerHasEnded());
}

TEST_F(Shot, IsTheSameEachTimeAtRest) {
    ASSERT_EQ(Run("one.png").code, 0);
    ASSERT_EQ(Run("two.png").code, 0);
    EXPECT_EQ(BytesOf(folder / "one.png"), BytesOf(folder / "two.png"));
}

TEST_F(Shot, HasTheWidthThatIsAskedFor) {
    for (const std::uint32_t width : {500u, 1508u}) {
        ASSERT_EQ(Run("panel.png", {"--width", std::to_string(width)}).code, 0);
        const auto shown = ReadPng(folder / "panel.png");
        EXPECT_EQ(shown.width, width);
        EXPECT_NEAR(shown.height, width / 1.363472, 1);
        EXPECT_GT(Colours(shown), 500u);
    }
}

TEST_F(Shot, ShowsTheSettings) {
    ASSERT_EQ(Run("rest.png").code, 0);
    ASSERT_EQ(Run("set.png", {"--set", "4=0.25"}).code, 0);
    EXPECT_NE(ReadPng(folder / "set.png").colours, ReadPng(folder / "rest.png").colours);
    ASSERT_EQ(
        RunHost({"info", "-p", PluginFile(), "--set", "4=0.25", "--save-state", folder / "a.state"}).code, 0);
    ASSERT_EQ(Run("state.png", {"--state", folder / "a.state"}).code, 0);
    EXPECT_EQ(BytesOf(folder / "state.png"), BytesOf(folder / "set.png"));
}

TEST_F(Shot, ShowsTheEditorAtTheEndOfAStretchOfSound) {
    ASSERT_EQ(Run("rest.png").code, 0);
    ASSERT_EQ(Run("busy.png", {WriteSound(), "--start", "0.5", "--seconds", "1"}).code, 0);
    const auto rest = ReadPng(folder / "rest.png");
    const auto busy = ReadPng(folder / "busy.png");
    ASSERT_EQ(busy.colours.size(), rest.colours.size());
    std::size_t different = 0;
    for (std::size_t i = 0; i < rest.colours.size(); i += 3)
        if (!std::equal(&rest.colours[i], &rest.colours[i] + 3, &busy.colours[i])) ++different;
    EXPECT_GT(different, 1000u); // the lights of the meters
}

TEST_F(Shot, UsesTheUsersDisplayIfThereIsOne) {
    const CDisplay display;
    fs::remove(noted); // it is an Xvfb, too
    EXPECT_EQ(Run("panel.png").code, 0);
    EXPECT_FALSE(fs::exists(noted));
    EXPECT_EQ(ReadPng(folder / "panel.png").width, 754u);
}

TEST_F(Shot, NeitherFollowsNorChangesTheUsersSettings) {
    const auto settings =
        folder / "settings" / "kavelin" / "settings" / "HKEY_CURRENT_USER" / "Software" / "Kavelin";
    fs::create_directories(settings);
    const std::string stored = "{\n \"Width\": \"e8030000\"\n}\n"; // 1000 pixels
    WriteBytes(settings / "KAV Sorrel Limiter.json", stored);
    setenv("XDG_CONFIG_HOME", (folder / "settings").c_str(), 1);
    ASSERT_EQ(RunHost({"info", "-p", PluginFile(), "--save-state", folder / "a.state"}).code, 0);
    ASSERT_NE(BytesOf(folder / "a.state").find("<gui_width>1000<"), std::string::npos); // other hosts do
    ASSERT_EQ(Run("panel.png").code, 0);
    EXPECT_EQ(ReadPng(folder / "panel.png").width, 754u);
    EXPECT_EQ(BytesOf(settings / "KAV Sorrel Limiter.json"), stored);
    EXPECT_EQ(FilesIn(settings), std::vector<std::string>{"KAV Sorrel Limiter.json"});
}

TEST_F(Shot, LeavesNothingInTheTemporaryFolder) {
    const auto temporary = folder / "tmp";
    fs::create_directory(temporary);
    setenv("TMPDIR", temporary.c_str(), 1);
    ASSERT_EQ(Run("panel.png").code, 0);
    for (const auto& name : FilesIn(temporary)) EXPECT_FALSE(name.starts_with("kavhost-")) << name;
}

TEST_F(Shot, SaysThatThereIsNoDisplayAndNoneCanBeStarted) {
    setenv("PATH", folder.c_str(), 1);
    const auto run = Run("panel.png");
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kavhost: there is no display: DISPLAY is not set, and Xvfb is not installed\n");
    EXPECT_FALSE(fs::exists(folder / "panel.png"));
}

TEST_F(Shot, SaysThatTheServerDoesNotStart) {
    std::ofstream(folder / "bin" / "Xvfb") << "#!/bin/sh\nexit 1\n";
    const auto run = Run("panel.png");
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kavhost: Xvfb does not start\n");
}

TEST_F(Shot, EndsItsServerWhenItFails) {
    const auto run = CChild({"shot", "-p", EffectFile("fader"), "-o", folder / "panel.png"}).Wait();
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kavhost: Test Fader has no editor\n");
    EXPECT_TRUE(ServerHasEnded());
}

TEST_F(Shot, EndsItsServerHoweverItEnds) {
    for (const int signal : {SIGINT, SIGTERM, SIGKILL}) {
        fs::remove(noted);
        CChild child(ShotTo("panel.png", {WriteSound(), "--seconds", "600"}));
        // The picture is begun once the editor has opened.
        ASSERT_TRUE(Until([&] {
            const auto files = FilesIn(folder);
            return std::ranges::any_of(files, [](const auto& name) { return name.starts_with(".kavhost-"); });
        }));
        child.Signal(signal);
        const auto run = child.Wait();
        EXPECT_EQ(run.code, 128 + signal);
        EXPECT_TRUE(Until([&] { return ServerHasEnded(); })) << signal;
        EXPECT_FALSE(fs::exists(folder / "panel.png"));
        for (const auto& name : FilesIn(folder)) { // what a killed process could not remove
            if (name.starts_with(".kavhost-")) fs::remove(folder / name);
        }
    }
}

TEST_F(Shot, EndsWithAMessageWhenTheDisplayDies) {
    CChild child(ShotTo("panel.png", {WriteSound(), "--seconds", "600"}));
    ASSERT_TRUE(Until([&] { return Server() > 0; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(700)); // before or after the editor has opened
    kill(Server(), SIGKILL);
    const auto run = child.Wait();
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors.find("kavhost: "), 0u) << run.errors;
    EXPECT_FALSE(fs::exists(folder / "panel.png"));
}

TEST_F(Shot, RefusesWhatItCannotDo) {
    const auto refused = [&](const std::vector<std::string>& arguments) {
        std::vector<std::string> all{"shot"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return RunHost(all).code;
    };
    EXPECT_EQ(refused({}), 2);
    EXPECT_EQ(refused({"-o", folder / "panel.jpg"}), 2);
    EXPECT_EQ(refused({"-o", folder / "panel.png", "--seconds", "3"}), 2); // of which file?
    EXPECT_EQ(refused({"-o", folder / "panel.png", "--start", "3"}), 2);
    EXPECT_EQ(refused({"-o", folder / "panel.png", "--width", "0"}), 2);
    EXPECT_EQ(refused({"-o", folder / "panel.png", "-p", EffectFile("keeper"), "--width", "700"}), 2);
    EXPECT_EQ(refused({folder / "none.wav", "-o", folder / "panel.png", "-p", PluginFile()}), 1);
    EXPECT_EQ(refused({"-o", folder / "none" / "panel.png", "-p", PluginFile()}), 1);
}
