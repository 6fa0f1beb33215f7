#include "pixels/png_reader.h"
#include "platform/settings_store.h"
#include "platform/winapi/windows_header.h"
#include "tests/tools/kavhost/support.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace KAV;
using namespace KAV::Tests;

namespace fs = std::filesystem;

namespace {

Pixels::SBitmap ReadPicture(const fs::path& file) {
    const auto bytes = BytesOf(file);
    auto picture = Pixels::ReadPng({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    EXPECT_TRUE(picture) << file;
    return picture ? *std::move(picture) : Pixels::SBitmap{};
}

std::vector<std::uint32_t> PixelsOf(const Pixels::SBitmap& picture) {
    std::vector<std::uint32_t> pixels;
    for (std::int32_t y = 0; y < picture.height; ++y) {
        for (std::int32_t x = 0; x < picture.width; ++x) {
            const auto* const pixel = picture.bytes.data() + y * picture.stride + 4 * x;
            pixels.push_back(static_cast<std::uint32_t>(pixel[2] << 16 | pixel[1] << 8 | pixel[0]));
        }
    }
    return pixels;
}

std::size_t Colours(const Pixels::SBitmap& picture) {
    auto pixels = PixelsOf(picture);
    std::ranges::sort(pixels);
    return static_cast<std::size_t>(std::unique(pixels.begin(), pixels.end()) - pixels.begin());
}

bool KeyExists(const wchar_t* name) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, name, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

constexpr const wchar_t* Scratch = L"Software\\kavhost";
constexpr const char* Settings = "Software/Kavelin/KAV Sorrel Limiter";

class Shot : public testing::Test {
protected:
    SRun Run(const std::string& picture, std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments{
            "shot", "-p", PluginFile().string(), "-o", (folder / picture).string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunHost(arguments);
    }

    fs::path folder = NewFolder();
};

} // namespace

TEST_F(Shot, IsTheEditorAtItsUsualSize) {
    const auto run = Run("panel.png");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out + run.errors, "");
    const auto shown = ReadPicture(folder / "panel.png");
    EXPECT_EQ(shown.width, 754);
    EXPECT_EQ(shown.height, 553);
    EXPECT_GT(Colours(shown), 500u);
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"panel.png"});
}

TEST_F(Shot, IsTheSameEachTimeAtRest) {
    ASSERT_EQ(Run("one.png").code, 0);
    ASSERT_EQ(Run("two.png").code, 0);
    EXPECT_EQ(BytesOf(folder / "one.png"), BytesOf(folder / "two.png"));
}

TEST_F(Shot, HasTheWidthThatIsAskedFor) {
    for (const int width : {500, 1200}) {
        const auto run = Run("panel.png", {"--width", std::to_string(width)});
        ASSERT_EQ(run.code, 0) << run.errors;
        const auto shown = ReadPicture(folder / "panel.png");
        EXPECT_EQ(shown.width, width);
        EXPECT_NEAR(shown.height, width / 1.363472, 1);
        EXPECT_GT(Colours(shown), 500u);
    }
}

TEST_F(Shot, SaysThatTheScreenIsTooSmall) {
    const auto width = GetSystemMetrics(SM_CXVIRTUALSCREEN) + 100;
    const auto run = Run("panel.png", {"--width", std::to_string(width)});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kavhost: the display does not show the whole editor\n");
    EXPECT_FALSE(fs::exists(folder / "panel.png"));
}

TEST_F(Shot, ShowsTheSettings) {
    ASSERT_EQ(Run("rest.png").code, 0);
    ASSERT_EQ(Run("set.png", {"--set", "4=0.25"}).code, 0);
    EXPECT_NE(BytesOf(folder / "set.png"), BytesOf(folder / "rest.png"));
    const auto state = (folder / "a.state").string();
    ASSERT_EQ(
        RunHost({"info", "-p", PluginFile().string(), "--set", "4=0.25", "--save-state", state}).code, 0);
    ASSERT_EQ(Run("state.png", {"--state", state}).code, 0);
    EXPECT_EQ(BytesOf(folder / "state.png"), BytesOf(folder / "set.png"));
}

TEST_F(Shot, ShowsTheEditorAtTheEndOfAStretchOfSound) {
    const auto sound = folder / "in.wav";
    WriteWav(sound, Noise(2, std::size_t{44100} * 3, 0.5f));
    ASSERT_EQ(Run("rest.png").code, 0);
    ASSERT_EQ(Run("busy.png", {sound.string(), "--start", "0.5", "--seconds", "1"}).code, 0);
    const auto rest = PixelsOf(ReadPicture(folder / "rest.png"));
    const auto busy = PixelsOf(ReadPicture(folder / "busy.png"));
    ASSERT_EQ(busy.size(), rest.size());
    std::size_t different = 0;
    for (std::size_t i = 0; i < rest.size(); ++i)
        if (busy[i] != rest[i]) ++different;
    EXPECT_GT(different, 1000u); // the lights of the meters
}

TEST_F(Shot, IsTakenWithoutAWindowThatTheUserSees) {
    std::atomic<bool> ends{false};
    std::atomic<int> seen{0};
    std::atomic<int> visible{0};
    std::thread watch([&] {
        while (!ends) {
            if (const HWND window = FindWindowW(L"kavhost", nullptr); window != nullptr) {
                ++seen;
                BYTE alpha = 0xFF;
                GetLayeredWindowAttributes(window, nullptr, &alpha, nullptr);
                if (alpha != 0 && IsWindowVisible(window)) ++visible;
                if (GetForegroundWindow() == window) ++visible;
            }
            Sleep(5);
        }
    });
    EXPECT_EQ(Run("panel.png").code, 0);
    ends = true;
    watch.join();
    EXPECT_GT(seen, 0);
    EXPECT_EQ(visible, 0);
}

TEST_F(Shot, NeitherFollowsNorChangesTheUsersSettings) {
    using namespace Platform;
    const auto width = [] {
        const auto bytes = ReadSetting(ESettingsRoot::CurrentUser, Settings, "Width");
        std::uint32_t value = 0;
        if (bytes.data != nullptr && bytes.size == sizeof(value))
            std::memcpy(&value, bytes.data.get(), sizeof(value));
        return value;
    };
    const std::uint32_t stored = 1000;
    ASSERT_TRUE(WriteSetting(ESettingsRoot::CurrentUser, Settings, "Width", &stored, sizeof(stored)));
    const auto state = (folder / "a.state").string();
    EXPECT_EQ(RunHost({"info", "-p", PluginFile().string(), "--save-state", state}).code, 0);
    EXPECT_NE(BytesOf(state).find("<gui_width>1000<"), std::string::npos); // other hosts do
    EXPECT_EQ(Run("panel.png").code, 0);
    EXPECT_EQ(ReadPicture(folder / "panel.png").width, 754);
    EXPECT_EQ(width(), stored);
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Kavelin\\KAV Sorrel Limiter");
}

TEST_F(Shot, LeavesNoSettingsOfItsOwnNorThoseOfAKilledOne) {
    // No process has that number: they are all multiples of four.
    HKEY key = nullptr;
    const auto abandoned = std::wstring(Scratch) + L"\\4294967291\\Software";
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, abandoned.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                  &key, nullptr),
        ERROR_SUCCESS);
    RegCloseKey(key);
    ASSERT_EQ(Run("panel.png").code, 0);
    EXPECT_FALSE(KeyExists(Scratch));
}

TEST_F(Shot, LeavesTheSettingsOfOneThatRuns) {
    HKEY key = nullptr;
    const auto other = std::wstring(Scratch) + L"\\" + std::to_wstring(GetCurrentProcessId());
    HWND desktop = GetDesktopWindow();
    DWORD running = 0;
    GetWindowThreadProcessId(desktop, &running);
    ASSERT_NE(running, 0u);
    ASSERT_NE(running, GetCurrentProcessId());
    const auto name = std::wstring(Scratch) + L"\\" + std::to_wstring(running);
    ASSERT_EQ(RegCreateKeyExW(
                  HKEY_CURRENT_USER, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
        ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_EQ(Run("panel.png").code, 0);
    EXPECT_TRUE(KeyExists(name.c_str()));
    EXPECT_FALSE(KeyExists(other.c_str()));
    RegDeleteTreeW(HKEY_CURRENT_USER, Scratch);
}

TEST_F(Shot, NeedsAnEditor) {
    const auto run =
        RunHost({"shot", "-p", EffectFile("fader").string(), "-o", (folder / "panel.png").string()});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kavhost: Test Fader has no editor\n");
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{});
}

TEST_F(Shot, RefusesWhatItCannotDo) {
    const auto refused = [&](const std::vector<std::string>& arguments) {
        std::vector<std::string> all{"shot"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return RunHost(all).code;
    };
    const auto picture = (folder / "panel.png").string();
    EXPECT_EQ(refused({}), 2);
    EXPECT_EQ(refused({"-o", (folder / "panel.jpg").string()}), 2);
    EXPECT_EQ(refused({"-o", picture, "--seconds", "3"}), 2); // of which file?
    EXPECT_EQ(refused({"-o", picture, "-p", EffectFile("keeper").string(), "--width", "700"}), 2);
    EXPECT_EQ(refused({(folder / "none.wav").string(), "-o", picture, "-p", PluginFile().string()}), 1);
    EXPECT_EQ(refused({"-o", (folder / "none" / "panel.png").string(), "-p", PluginFile().string()}), 1);
}
