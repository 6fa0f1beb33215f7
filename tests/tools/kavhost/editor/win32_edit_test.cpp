#include "panel/layout.h"
#include "platform/interrupt.h"
#include "platform/winapi/windows_header.h"
#include "tests/support/software_renderer.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/editor/transport_strip.h"
#include "tools/kavhost/screen/memory_picture_win32.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::Host;
using namespace KAV::Tests;

namespace fs = std::filesystem;

namespace {

/// kavhost on a thread of its own, and its user on the test's.
class Edit : public testing::Test {
protected:
    static constexpr int Seconds = 40; ///< of the file

    Edit() {
        auto audio = Noise(2, std::size_t{22050} * Seconds, 0.25f);
        audio.format.rateHz = 22050;
        WriteWav(file, audio);
        ChooseSoftwareRenderer();
    }
    ~Edit() override {
        if (run.valid()) Close(); // a test that failed
    }

    std::vector<std::string> With(std::vector<std::string> more) const {
        std::vector<std::string> all{"edit", file.string(), "-p", PluginFile().string()};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    /// Starts kavhost with the file and waits until its editor shows a picture.
    void Open(const std::vector<std::string>& more = {}, const std::string& device = "none") {
        auto all = With({"--device", device});
        all.insert(all.end(), more.begin(), more.end());
        run = std::async(std::launch::async, [all] { return RunHost(all); });
        ASSERT_TRUE(Until([&] { return Top() != nullptr && ShowsAPicture(); }));
    }
    SRun Close() {
        PostMessageW(Top(), WM_CLOSE, 0, 0);
        return run.get();
    }

    static bool Until(const std::function<bool()>& holds) {
        const auto guard = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!holds()) {
            if (std::chrono::steady_clock::now() > guard) return false;
            Sleep(5);
        }
        return true;
    }

    static HWND Top() {
        const HWND window = FindWindowW(L"kavhost", nullptr);
        return window != nullptr && IsWindowVisible(window) ? window : nullptr;
    }
    static HWND Parent() { return GetWindow(Top(), GW_CHILD); }
    static HWND Editor() { return GetWindow(Parent(), GW_CHILD); }
    static SIZE SizeOf(HWND window) {
        RECT rect{};
        GetClientRect(window, &rect);
        return {rect.right, rect.bottom};
    }
    static std::vector<std::uint32_t> PixelsOf(HWND window, const RECT& rect) {
        const auto width = rect.right - rect.left;
        const auto height = rect.bottom - rect.top;
        const CMemoryPicture memory(width, height);
        const HDC context = GetDCEx(window, nullptr, DCX_CACHE);
        BitBlt(memory.Context(), 0, 0, width, height, context, rect.left, rect.top, SRCCOPY);
        ReleaseDC(window, context);
        GdiFlush();
        std::vector<std::uint32_t> pixels(memory.Pixels(), memory.Pixels() + std::ptrdiff_t{width} * height);
        for (auto& pixel : pixels) pixel &= 0xFFFFFF;
        return pixels;
    }
    static bool ShowsAPicture() {
        const HWND editor = Editor();
        if (editor == nullptr) return false;
        auto pixels = PixelsOf(editor, {0, 0, 300, 200});
        std::ranges::sort(pixels);
        return std::unique(pixels.begin(), pixels.end()) - pixels.begin() > 20;
    }

    static SStripLayout Strip() {
        const auto width = SizeOf(Top()).cx;
        return LayOutStrip(width, StripHeightFor(width));
    }
    static std::int32_t StripTop() { return SizeOf(Top()).cy - Strip().height; }
    static std::vector<std::uint32_t> StripPixels() {
        const auto strip = Strip();
        return PixelsOf(Top(), {0, StripTop(), strip.width, StripTop() + strip.height});
    }
    /// Whether the columns from `begin` to `end` are those of a strip with that view.
    static bool Shows(const SStripView& view, std::int32_t begin, std::int32_t end) {
        const auto strip = Strip();
        const auto expected = CStripPainter().Draw(strip, view);
        const auto pixels = StripPixels();
        for (std::int32_t y = 0; y < strip.height; ++y) {
            const auto row = std::ptrdiff_t{y} * strip.width;
            if (!std::equal(pixels.begin() + row + begin, pixels.begin() + row + end,
                    expected.pixels.begin() + row + begin))
                return false;
        }
        return true;
    }
    static bool ShowsPlaying(bool plays = true) { // the bar's handle may reach a little into the button
        return Shows({plays, false, 0, ""}, 0, Strip().buttonEnd - 4);
    }
    static bool ShowsLooping(bool loops) {
        return Shows({false, loops, 0, ""}, Strip().timeEnd, Strip().width);
    }
    /// Pixels of the bar that have played.
    static std::int32_t Played() {
        const auto strip = Strip();
        const auto full = CStripPainter().Draw(strip, {false, false, strip.barEnd - strip.barBegin, ""});
        const auto row = std::ptrdiff_t{strip.height / 2} * strip.width;
        const auto colour = full.pixels[static_cast<std::size_t>(row + strip.barBegin + 4)];
        const auto pixels = StripPixels();
        const auto bar = pixels.begin() + row + strip.barBegin;
        return static_cast<std::int32_t>(std::count(bar, bar + strip.barEnd - strip.barBegin, colour));
    }
    static bool IsAt(std::int32_t pixels) { // the handle covers one or two of them
        return Until([&] { return std::abs(Played() - pixels) <= 3; });
    }
    static bool StandsStill() {
        const auto before = StripPixels();
        Sleep(500); // played, it would go on by six pixels
        return StripPixels() == before;
    }

    static void Type(WPARAM key) { // over the editor, which hands it on
        PostMessageW(Editor(), WM_KEYDOWN, key, 1);
        PostMessageW(Editor(), WM_KEYUP, key, 1);
    }
    static LPARAM At(std::int32_t x, std::int32_t y) { return MAKELPARAM(x & 0xFFFF, y & 0xFFFF); }
    static void Press(HWND window, std::int32_t x, std::int32_t y) {
        PostMessageW(window, WM_MOUSEMOVE, 0, At(x, y));
        PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, At(x, y));
    }
    static void Drag(HWND window, std::int32_t x, std::int32_t y) {
        PostMessageW(window, WM_MOUSEMOVE, MK_LBUTTON, At(x, y));
    }
    static void Release(HWND window, std::int32_t x, std::int32_t y) {
        PostMessageW(window, WM_LBUTTONUP, 0, At(x, y));
    }
    static void Click(HWND window, std::int32_t x, std::int32_t y) {
        Press(window, x, y);
        Release(window, x, y);
    }

    fs::path folder = NewFolder();
    fs::path file = folder / "in.wav";
    std::future<SRun> run;
};

SRun Refused(const std::vector<std::string>& arguments) {
    std::vector<std::string> all{"edit"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunHost(all);
}

} // namespace

TEST_F(Edit, OpensTheEditorAboveAStripAndPlays) {
    Open();
    const auto editor = SizeOf(Editor());
    EXPECT_EQ(editor.cx, 754);
    EXPECT_EQ(SizeOf(Top()).cx, editor.cx);
    EXPECT_EQ(SizeOf(Top()).cy, editor.cy + Strip().height);
    EXPECT_TRUE(Until([&] { return ShowsPlaying(); }));
    const auto before = Played();
    EXPECT_TRUE(Until([&] { return Played() > before + 5; }));
    const auto done = Close();
    EXPECT_EQ(done.code, 0);
    EXPECT_EQ(done.out + done.errors, "");
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Edit, NamesTheFileAndTheEffectInItsTitle) {
    Open();
    std::wstring title(200, L'\0');
    title.resize(static_cast<std::size_t>(GetWindowTextW(Top(), title.data(), 200)));
    EXPECT_EQ(title, L"in.wav - KAV Sorrel Limiter");
    Close();
}

TEST_F(Edit, PausesAndGoesOnBySpaceOverTheEditor) {
    Open();
    ASSERT_TRUE(Until([&] { return ShowsPlaying(); }));
    Type(VK_SPACE);
    ASSERT_TRUE(Until([&] { return ShowsPlaying(false); }));
    EXPECT_TRUE(Until([&] { return StandsStill(); }));
    const auto before = Played();
    Type(VK_SPACE);
    EXPECT_TRUE(Until([&] { return ShowsPlaying() && Played() > before; }));
    Close();
}

TEST_F(Edit, PausesByItsButton) {
    Open();
    ASSERT_TRUE(Until([&] { return ShowsPlaying(); }));
    Click(Top(), Strip().buttonEnd / 2, StripTop() + 10);
    EXPECT_TRUE(Until([&] { return ShowsPlaying(false); }));
    Close();
}

TEST_F(Edit, SeeksWhereTheBarIsPressedAndDragged) {
    Open();
    Type(VK_SPACE);
    const auto strip = Strip();
    const auto length = strip.barEnd - strip.barBegin;
    Press(Top(), strip.barBegin + length / 2, StripTop() + 10);
    EXPECT_TRUE(IsAt(length / 2));
    Drag(Top(), strip.barBegin + length / 4, StripTop() - 50); // a drag goes on outside the strip
    EXPECT_TRUE(IsAt(length / 4));
    Release(Top(), strip.barBegin + length / 4, StripTop() - 50);
    Drag(Top(), strip.barBegin + length / 3, StripTop() + 10); // begun elsewhere
    EXPECT_TRUE(StandsStill());
    EXPECT_TRUE(IsAt(length / 4));
    Close();
}

TEST_F(Edit, SeeksByKeys) {
    Open();
    Type(VK_SPACE);
    ASSERT_TRUE(Until([&] { return ShowsPlaying(false) && StandsStill(); }));
    const auto fiveSeconds = (Strip().barEnd - Strip().barBegin) * 5 / Seconds;
    const auto start = Played();
    Type(VK_RIGHT);
    Type(VK_RIGHT);
    EXPECT_TRUE(IsAt(start + 2 * fiveSeconds));
    Type(VK_LEFT);
    EXPECT_TRUE(IsAt(start + fiveSeconds));
    Type(VK_HOME);
    EXPECT_TRUE(IsAt(0));
    Type(VK_LEFT);
    EXPECT_TRUE(IsAt(0));
    Close();
}

TEST_F(Edit, LoopsByKeyAndByItsMark) {
    Open();
    ASSERT_TRUE(Until([&] { return ShowsLooping(false); }));
    Type('L');
    EXPECT_TRUE(Until([&] { return ShowsLooping(true); }));
    Click(Top(), Strip().timeEnd + 5, StripTop() + 10);
    EXPECT_TRUE(Until([&] { return ShowsLooping(false); }));
    Close();
}

TEST_F(Edit, SavesWhatWasSetAndRendersWithIt) {
    Open({"--save-state", (folder / "out.state").string(), "--render", (folder / "out.wav").string()});
    const auto& knob = Panel::RowOf("Main Input Gain").rect;
    const auto x = static_cast<std::int32_t>(knob.CentreX());
    const auto y = static_cast<std::int32_t>(knob.CentreY());
    const RECT around{x - 20, y - 20, x + 20, y + 20};
    const auto before = PixelsOf(Editor(), around);
    Press(Editor(), x, y);
    for (int step = 1; step <= 8; ++step) Drag(Editor(), x, y - 5 * step);
    Release(Editor(), x, y - 40);
    ASSERT_TRUE(Until([&] { return PixelsOf(Editor(), around) != before; }));
    const auto done = Close();
    EXPECT_EQ(done.code, 0) << done.errors;
    const auto plugin = PluginFile().string();
    ASSERT_EQ(RunHost({"info", "-p", plugin, "--save-state", (folder / "fresh.state").string()}).code, 0);
    EXPECT_NE(BytesOf(folder / "out.state"), BytesOf(folder / "fresh.state"));
    ASSERT_EQ(RunHost({"render", file.string(), "-o", (folder / "same.wav").string(), "-p", plugin, "--state",
                          (folder / "out.state").string()})
                  .code,
        0);
    EXPECT_EQ(BytesOf(folder / "out.wav"), BytesOf(folder / "same.wav"));
}

TEST_F(Edit, EndsByEscapeOverTheEditor) {
    Open({"--save-state", (folder / "out.state").string()});
    Type(VK_ESCAPE);
    EXPECT_EQ(run.get().code, 0);
    EXPECT_TRUE(fs::exists(folder / "out.state"));
}

TEST_F(Edit, FollowsTheEditorsSize) {
    Open();
    const HWND editor = Editor();
    const auto size = SizeOf(editor);
    Press(editor, size.cx - 3, size.cy - 3); // its lower right corner
    for (int step = 1; step <= 10; ++step) Drag(editor, size.cx - 3 + 15 * step, size.cy - 3 + 11 * step);
    Release(editor, size.cx + 147, size.cy + 107);
    EXPECT_TRUE(Until([&] {
        const auto larger = SizeOf(editor);
        const auto window = SizeOf(Top());
        return larger.cx > 850 && window.cx == larger.cx && window.cy == larger.cy + Strip().height;
    }));
    EXPECT_TRUE(Until([&] { return ShowsPlaying(); })); // in the strip's new place
    Close();
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Kavelin\\KAV Sorrel Limiter"); // the width that it keeps
}

TEST_F(Edit, OpensAnEditorThatIsLargerThanTheScreen) {
    const auto width = GetSystemMetrics(SM_CXSCREEN) + 120;
    Open({"--width", std::to_string(width)});
    EXPECT_EQ(SizeOf(Editor()).cx, width);
    EXPECT_EQ(SizeOf(Top()).cx, width);
    EXPECT_EQ(SizeOf(Top()).cy, SizeOf(Editor()).cy + Strip().height);
    Close();
}

TEST_F(Edit, ClosesWithAMenuOpen) {
    Open({"--save-state", (folder / "out.state").string()});
    const auto& selector = Panel::RowOf("Oversampling").rect;
    Click(Editor(), static_cast<std::int32_t>(selector.CentreX()),
        static_cast<std::int32_t>(selector.CentreY()));
    ASSERT_TRUE(Until([] { return FindWindowW(L"#32768", nullptr) != nullptr; }));
    const auto done = Close();
    EXPECT_EQ(done.code, 0) << done.errors;
    EXPECT_TRUE(fs::exists(folder / "out.state"));
}

TEST_F(Edit, ClosesInTheMiddleOfADragAndKeepsItsValue) {
    Open({"--save-state", (folder / "out.state").string()});
    const auto& knob = Panel::RowOf("Main Input Gain").rect;
    const auto x = static_cast<std::int32_t>(knob.CentreX());
    const auto y = static_cast<std::int32_t>(knob.CentreY());
    const RECT around{x - 20, y - 20, x + 20, y + 20};
    const auto before = PixelsOf(Editor(), around);
    Press(Editor(), x, y);
    for (int step = 1; step <= 8; ++step) Drag(Editor(), x, y - 5 * step);
    ASSERT_TRUE(Until([&] { return PixelsOf(Editor(), around) != before; }));
    EXPECT_EQ(Close().code, 0);
    const auto fresh = folder / "fresh.state";
    ASSERT_EQ(RunHost({"info", "-p", PluginFile().string(), "--save-state", fresh.string()}).code, 0);
    EXPECT_NE(BytesOf(folder / "out.state"), BytesOf(fresh));
}

TEST_F(Edit, WritesNothingWhenItIsInterrupted) {
    Open({"--save-state", (folder / "out.state").string(), "--render", (folder / "out.wav").string()});
    Platform::Interrupt(Platform::EInterrupt::User);
    const auto done = run.get();
    EXPECT_EQ(done.code, 130);
    EXPECT_EQ(done.errors, "kavhost: interrupted\n");
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Edit, EndsByTheCloseButtonOfItsFrame) {
    Open({"--save-state", (folder / "out.state").string()});
    PostMessageW(Top(), WM_SYSCOMMAND, SC_CLOSE, 0);
    EXPECT_EQ(run.get().code, 0);
    EXPECT_TRUE(fs::exists(folder / "out.state"));
}

TEST_F(Edit, SaysThatThereIsNoSoundAndPlaysOn) {
    Open({}, "default"); // Wine has no device here
    EXPECT_TRUE(Until([&] { return Played() > 5; }));
    const auto done = Close();
    EXPECT_EQ(done.code, 0) << done.errors;
    EXPECT_EQ(done.errors.find("kavhost: there is no sound: "), 0u) << done.errors;
    EXPECT_EQ(std::ranges::count(done.errors, '\n'), 1) << done.errors;
}

TEST_F(Edit, RefusesOutputsBeforeItOpensAWindow) {
    const auto name = file.string();
    EXPECT_EQ(Refused({name, "--device", "loud"}).code, 2);
    EXPECT_EQ(Refused({name, "--render", (folder / "out.xyz").string()}).code, 2);
    EXPECT_EQ(Refused({name, "--render", name}).code, 2);
    EXPECT_EQ(Refused({name, "--save-state", name}).code, 2);
    EXPECT_EQ(Refused({name, "--save-state", (folder / "none" / "out.state").string()}).code, 1);
    EXPECT_EQ(Refused({(folder / "none.wav").string(), "-p", PluginFile().string()}).code, 1);
    EXPECT_EQ(FilesIn(folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Edit, NeedsAnEffectWithAnEditor) {
    const auto refused = Refused({file.string(), "-p", EffectFile("fader").string()});
    EXPECT_EQ(refused.code, 1);
    EXPECT_EQ(refused.errors, "kavhost: Test Fader has no editor\n");
}
