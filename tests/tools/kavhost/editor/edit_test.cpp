#include "platform/folders.h"
#include "tests/support/dialog_script.h"
#include "tests/tools/kavhost/editor/kavhost_user.h"
#include "utils/product.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>

using namespace KAV::Tests;

namespace fs = std::filesystem;

using Edit = CKavhostUser;

namespace {

/// kavhost in this process, for command lines that it refuses before it opens a window.
SRun Refused(const std::vector<std::string>& arguments) {
    std::vector<std::string> all{"edit"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunHost(all);
}

/// The value of a parameter in a state, as its text.
std::string MainInputGain(const fs::path& state) {
    const auto text = BytesOf(state);
    const auto begin = text.find("\"Main Input Gain\"");
    EXPECT_NE(begin, std::string::npos);
    return text.substr(begin, text.find('\n', begin) - begin);
}

} // namespace

TEST_F(Edit, OpensTheEditorAboveAStripAndPlays) {
    Open();
    const auto window = windows.Place(Window());
    const auto editor = windows.Place(Editor());
    EXPECT_EQ(editor.width, 754);
    EXPECT_EQ(window.width, editor.width);
    EXPECT_EQ(window.height, editor.height + Strip().height);
    EXPECT_TRUE(Until([&] { return ShowsPlaying(); }));
    const auto before = Played();
    EXPECT_TRUE(Until([&] { return Played() > before + 5; }));
    const auto run = Close();
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out + run.errors, "");
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Edit, LeavesItsSizeToTheEditor) {
    Open();
    const auto hints = windows.Property(Window(), "WM_NORMAL_HINTS");
    ASSERT_EQ(hints.size(), 18u);
    const auto window = windows.Place(Window());
    const auto width = static_cast<std::uint32_t>(window.width);
    const auto height = static_cast<std::uint32_t>(window.height);
    EXPECT_EQ(std::vector(hints.begin() + 5, hints.begin() + 9), (std::vector{width, height, width, height}));
    Close();
}

TEST_F(Edit, PausesAndGoesOnBySpaceOverTheEditor) {
    Open();
    ASSERT_TRUE(Until([&] { return ShowsPlaying(); }));
    MoveTo(300, 20); // the editor hands the key on
    windows.Type(KeySpace);
    ASSERT_TRUE(Until([&] { return !ShowsPlaying(); }));
    EXPECT_TRUE(Until([&] { return StandsStill(); }));
    const auto before = Played();
    windows.Type(KeySpace);
    EXPECT_TRUE(Until([&] { return ShowsPlaying() && Played() > before; }));
    Close();
}

TEST_F(Edit, PausesByItsButton) {
    Open();
    ASSERT_TRUE(Until([&] { return ShowsPlaying(); }));
    Click(Strip().buttonEnd / 2, StripTop() + 10);
    EXPECT_TRUE(Until([&] { return !ShowsPlaying(); }));
    Close();
}

TEST_F(Edit, SeeksWhereTheBarIsPressedAndDragged) {
    Open();
    windows.Type(KeySpace);
    const auto strip = Strip();
    const auto length = strip.barEnd - strip.barBegin;
    const auto played = [&](std::int32_t pixels) { // the handle covers one or two of them
        return Until([&] { return std::abs(Played() - pixels) <= 3; });
    };
    MoveTo(strip.barBegin + length / 2, StripTop() + 10);
    windows.Press(1);
    EXPECT_TRUE(played(length / 2));
    MoveTo(strip.barBegin + length / 4, StripTop() - 50); // a drag goes on outside the strip
    EXPECT_TRUE(played(length / 4));
    windows.Release(1);
    MoveTo(strip.barBegin + length / 3, StripTop() + 10);
    EXPECT_TRUE(StandsStill());
    EXPECT_TRUE(played(length / 4));
    Close();
}

TEST_F(Edit, SeeksByKeys) {
    Open();
    MoveTo(300, 20);
    windows.Type(KeySpace);
    ASSERT_TRUE(Until([&] { return !ShowsPlaying() && StandsStill(); }));
    const auto fiveSeconds = (Strip().barEnd - Strip().barBegin) * 5 / Seconds;
    const auto start = Played();
    const auto isAt = [&](std::int32_t pixels) {
        return Until([&] { return std::abs(Played() - pixels) <= 3; });
    };
    windows.Type(KeyRight);
    windows.Type(KeyRight);
    EXPECT_TRUE(isAt(start + 2 * fiveSeconds));
    windows.Type(KeyLeft);
    EXPECT_TRUE(isAt(start + fiveSeconds));
    windows.Type(KeyHome);
    EXPECT_TRUE(isAt(0));
    windows.Type(KeyLeft);
    EXPECT_TRUE(isAt(0));
    Close();
}

TEST_F(Edit, LoopsByKeyAndByItsMark) {
    Open();
    MoveTo(300, 20);
    ASSERT_TRUE(Until([&] { return ShowsPlaying() && !ShowsLooping(); }));
    windows.Type(KeyL);
    EXPECT_TRUE(Until([&] { return ShowsLooping(); }));
    Click((Strip().timeEnd + Strip().width) / 2, StripTop() + 10);
    EXPECT_TRUE(Until([&] { return !ShowsLooping(); }));
    Close();
}

TEST_F(Edit, PassesTheEndWhenItLoopsAndStopsThereWhenNot) {
    Open();
    const auto strip = Strip();
    const auto almost = strip.barEnd - 8; // half a second before
    windows.Type(KeyL);
    ASSERT_TRUE(Until([&] { return ShowsLooping(); }));
    Click(almost, StripTop() + 10);
    EXPECT_TRUE(Until([&] { return Played() > 3 && Played() < 300; }));
    EXPECT_TRUE(ShowsPlaying());
    windows.Type(KeyL);
    ASSERT_TRUE(Until([&] { return !ShowsLooping(); }));
    Click(almost, StripTop() + 10);
    EXPECT_TRUE(Until([&] { return !ShowsPlaying(); }));
    EXPECT_GT(Played(), strip.barEnd - strip.barBegin - 4);
    windows.Type(KeySpace); // from the beginning
    EXPECT_TRUE(Until([&] { return Played() > 3 && Played() < 300; }));
    Close();
}

TEST_F(Edit, WritesWhatWasSetAndRendersItAsRenderDoes) {
    ASSERT_EQ(RunHost({"info", "-p", PluginFile(), "--save-state", folder / "fresh.state"}).code, 0);
    Open({"--save-state", folder / "out.state", "--render", folder / "out.flac"});
    const auto knob = MiddleOf("Main Input Gain");
    MoveTo(knob.x, knob.y);
    windows.Press(1);
    for (int step = 1; step <= 8; ++step) MoveTo(knob.x, knob.y - 5 * step);
    windows.Release(1);
    const auto run = Close();
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_NE(run.out.find("out.flac"), std::string::npos) << run.out;

    EXPECT_NE(MainInputGain(folder / "out.state"), MainInputGain(folder / "fresh.state"));
    ASSERT_EQ(RunHost({"render", file, "-o", folder / "again.flac", "-p", PluginFile(), "--profile",
                          PluginProfile(), "--state", folder / "out.state"})
                  .code,
        0);
    EXPECT_EQ(BytesOf(folder / "out.flac"), BytesOf(folder / "again.flac"));
}

TEST_F(Edit, BeginsWithTheUsersFirstPatchAsADaw) {
    const auto patches = KAV::Platform::DocumentsFolder() / KAV_VENDOR / KAV_PRODUCT;
    fs::create_directories(patches);
    WriteBytes(patches / "Mine.kvp",
        "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</plugin_id>\r\n"
        "<patch_name>Mine</patch_name>\r\n<multi_fx>true</multi_fx>\r\n"
        "<param tag=\"23\" namew=\"Main Input Gain\" >0.625</param>\r\n");
    Open({"--save-state", folder / "out.state"});
    EXPECT_EQ(Close().code, 0);
    fs::remove_all(patches);
    EXPECT_NE(MainInputGain(folder / "out.state").find("0.625"), std::string::npos);
    EXPECT_NE(BytesOf(folder / "out.state").find("<patch_name>Mine<"), std::string::npos);
}

TEST_F(Edit, BeginsWithTheStateThatItIsGiven) {
    ASSERT_EQ(
        RunHost({"info", "-p", PluginFile(), "--set", "4=0.25", "--save-state", folder / "in.state"}).code,
        0);
    Open({"--state", folder / "in.state", "--save-state", folder / "out.state"});
    EXPECT_EQ(Close().code, 0);
    ASSERT_EQ(RunHost({"info", "-p", PluginFile(), "--state", folder / "in.state", "--save-state",
                          folder / "same.state"})
                  .code,
        0);
    EXPECT_EQ(BytesOf(folder / "out.state"), BytesOf(folder / "same.state"));
}

TEST_F(Edit, EndsByEscapeOverTheEditor) {
    Open({"--save-state", folder / "out.state"});
    MoveTo(300, 20);
    windows.Type(KeyEscape);
    EXPECT_EQ(End().code, 0);
    EXPECT_TRUE(fs::exists(folder / "out.state"));
}

TEST_F(Edit, FollowsTheEditorsSize) {
    Open();
    const auto editor = windows.Place(Editor());
    MoveTo(editor.width - 3, editor.height - 3); // its lower right corner
    windows.Press(1);
    for (int step = 1; step <= 10; ++step)
        MoveTo(editor.width - 3 + 15 * step, editor.height - 3 + 11 * step);
    windows.Release(1);
    EXPECT_TRUE(Until([&] {
        const auto window = windows.Place(Window());
        const auto larger = windows.Place(Editor());
        return larger.width > 850 && window.width == larger.width &&
               window.height == larger.height + Strip().height;
    }));
    EXPECT_TRUE(Until([&] { return ShowsPlaying(); })); // in the strip's new place
    Close();
}

TEST_F(Edit, MayBeGivenAnySizeByAWindowManager) {
    Open();
    windows.Resize(Window(), 1000, 700);
    EXPECT_TRUE(Until([&] {
        const auto parent = windows.Place(windows.Children(Window())[0]);
        return parent.x == (1000 - 754) / 2 && parent.y > 0;
    }));
    windows.Resize(Window(), 200, 20);
    windows.Resize(Window(), 754, 581);
    EXPECT_TRUE(Until([&] { return ShowsPlaying(); }));
    EXPECT_EQ(Close().code, 0);
}

TEST_F(Edit, ClosesWithAMenuOpen) {
    Open({"--save-state", folder / "out.state"});
    const auto menu = MiddleOf("Oversampling");
    const auto before = windows.Children(windows.Root()).size();
    Click(menu.x, menu.y);
    ASSERT_TRUE(Until([&] { return windows.Children(windows.Root()).size() > before; }));
    const auto run = Close();
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_TRUE(fs::exists(folder / "out.state"));
}

TEST_F(Edit, ClosesInTheMiddleOfADragAndKeepsItsValue) {
    ASSERT_EQ(RunHost({"info", "-p", PluginFile(), "--save-state", folder / "fresh.state"}).code, 0);
    Open({"--save-state", folder / "out.state"});
    const auto knob = MiddleOf("Main Input Gain");
    MoveTo(knob.x, knob.y);
    windows.Press(1);
    const auto picture = windows.Pixels(Editor(), knob.x - 20, knob.y - 20, 40, 40);
    for (int step = 1; step <= 8; ++step) MoveTo(knob.x, knob.y - 5 * step);
    ASSERT_TRUE(Until([&] { return windows.Pixels(Editor(), knob.x - 20, knob.y - 20, 40, 40) != picture; }));
    EXPECT_EQ(Close().code, 0);
    EXPECT_NE(MainInputGain(folder / "out.state"), MainInputGain(folder / "fresh.state"));
}

TEST_F(Edit, SavesWhatWasSetWhenTheDisplayDies) {
    Open({"--save-state", folder / "out.state", "--render", folder / "out.wav"});
    windows.KillServer();
    const auto run = End();
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kavhost: the connection to the display was lost; " +
                              (folder / "out.state").string() + " contains the settings up to then\n");
    EXPECT_TRUE(fs::exists(folder / "out.state"));
    EXPECT_FALSE(fs::exists(folder / "out.wav"));
}

TEST_F(Edit, WritesNothingWhenItIsInterrupted) {
    Open({"--save-state", folder / "out.state", "--render", folder / "out.wav"});
    kavhost->Signal(SIGINT);
    const auto run = End();
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(run.errors, "kavhost: interrupted\n");
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Edit, SaysThatThereIsNoSoundAndPlaysOn) {
    setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
    Open({}, "default");
    EXPECT_TRUE(Until([&] { return Played() > 5; }));
    const auto run = Close();
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(run.errors.find("kavhost: there is no sound: "), 0u) << run.errors;
}

TEST_F(Edit, SendsTheEffectsSoundToTheDevice) {
    setenv("SDL_AUDIODRIVER", "disk", 1);
    setenv("SDL_DISKAUDIOFILE", (folder / "sound").c_str(), 1);
    Open({}, "default");
    EXPECT_TRUE(Until([&] { return Played() > 10; }));
    Close();
    ASSERT_EQ(RunHost({"render", file, "-o", folder / "out.wav", "-p", PluginFile(), "--no-align"}).code, 0);
    const auto expected = ReadWav(folder / "out.wav").samples;
    const auto bytes = BytesOf(folder / "sound");
    std::vector<float> sound(bytes.size() / sizeof(float));
    std::memcpy(sound.data(), bytes.data(), sound.size() * sizeof(float));
    const auto isSound = [](float sample) { return sample != 0; };
    const auto heard = std::ranges::find_if(sound, isSound);
    const auto wanted = std::ranges::find_if(expected, isSound);
    const auto count = std::min(sound.end() - heard, 20'000L);
    ASSERT_GT(count, 5000);
    for (std::ptrdiff_t i = 0; i < count; ++i) ASSERT_FLOAT_EQ(heard[i], wanted[i]) << i;
}

TEST_F(Edit, NeedsADisplay) {
    setenv("DISPLAY", "", 1);
    const auto without = Refused({file, "-p", PluginFile()});
    EXPECT_EQ(without.code, 1);
    EXPECT_EQ(without.errors, "kavhost: there is no display: DISPLAY is not set\n");
    setenv("DISPLAY", ":987", 1);
    const auto wrong = Refused({file, "-p", PluginFile()});
    EXPECT_EQ(wrong.code, 1);
    EXPECT_EQ(wrong.errors, "kavhost: the display :987 cannot be reached\n");
}

TEST_F(Edit, AsksForTheFileThatIsNotNamed) {
    const CDialogScripts desktop;
    desktop.Put("zenity", "echo '" + file.string() + "'");
    kavhost.emplace(std::vector<std::string>{"edit", "-p", PluginFile(), "--device", "none"});
    EXPECT_TRUE(Until([&] { return Window() != 0 && ShowsAPicture(); }));
    const auto run = Close();
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_NE(desktop.Arguments("zenity").find("--file-selection"), std::string::npos);
}

TEST_F(Edit, DoesNothingIfTheUserNamesNoFile) {
    const CDialogScripts desktop;
    desktop.Put("zenity", "exit 1");
    const auto run = Refused({"-p", PluginFile(), "--save-state", folder / "out.state"});
    EXPECT_TRUE(desktop.WasRun("zenity"));
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out + run.errors, "");
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Edit, EndsWhileItAsksForAFile) {
    const CDialogScripts desktop;
    desktop.Put("zenity", "exec /bin/sleep 600");
    kavhost.emplace(std::vector<std::string>{"edit", "-p", PluginFile()});
    const auto dialog = desktop.Process("zenity");
    kavhost->Signal(SIGINT);
    EXPECT_EQ(End().code, 130);
    EXPECT_TRUE(Eventually([&] { return kill(dialog, 0) != 0; }));
}

TEST_F(Edit, NeedsAFileWhereNothingCanAskForOne) {
    const CDialogScripts desktop;
    const auto noDialog = Refused({});
    EXPECT_EQ(noDialog.code, 2);
    EXPECT_EQ(noDialog.errors,
        "kavhost: edit: name an audio file; there is no dialog for files to choose one in\n");
    setenv("DISPLAY", "", 1);
    const auto noDisplay = Refused({});
    EXPECT_EQ(noDisplay.code, 2);
    EXPECT_EQ(noDisplay.errors, "kavhost: edit: name an audio file; there is no display to choose one in\n");
}

TEST_F(Edit, ShowsAnErrorInABoxIfItIsStartedFromAMenu) {
    const CDialogScripts desktop;
    desktop.Put("zenity", "");
    const auto none = (folder / "none.wav").string();
    const auto plain = Refused({none, "-p", PluginFile()});
    EXPECT_EQ(plain.code, 1);
    EXPECT_FALSE(desktop.WasRun("zenity"));
    const auto run = Refused({none, "-p", PluginFile(), "--error-box"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, plain.errors);
    EXPECT_TRUE(Eventually([&] { return desktop.WasRun("zenity"); }));
    EXPECT_TRUE(Eventually([&] { return desktop.Arguments("zenity").find(none) != std::string::npos; }));
}

TEST_F(Edit, RefusesOutputsBeforeItOpensAWindow) {
    EXPECT_EQ(Refused({file, "--device", "loud"}).code, 2);
    EXPECT_EQ(Refused({file, "--render", folder / "out.xyz"}).code, 2);
    EXPECT_EQ(Refused({file, "--render", folder}).code, 2);
    EXPECT_EQ(Refused({file, "--render", (folder / "new").string() + "/"}).code, 2);
    EXPECT_EQ(Refused({file, "--render", file}).code, 2);
    EXPECT_EQ(Refused({file, "--save-state", file}).code, 2);
    EXPECT_EQ(Refused({file, "--save-state", folder / "x.wav", "--render", folder / "x.wav"}).code, 2);
    EXPECT_EQ(Refused({file, "--save-state", folder / "none" / "out.state"}).code, 1);
    EXPECT_EQ(Refused({file, "--render", folder / "none" / "out.wav"}).code, 1);
    EXPECT_EQ(Refused({folder / "none.wav", "-p", PluginFile()}).code, 1);
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Edit, NeedsAnEffectWithAnEditor) {
    const auto run = Refused({file, "-p", EffectFile("fader")});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kavhost: Test Fader has no editor\n");
}
