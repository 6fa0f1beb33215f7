#include "tests/tools/kavhost/editor/kavhost_user.h"

#include "panel/layout.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace {

/// Not leaks of the product: fontconfig keeps some of what it has read of its configuration, and SDL its
/// connection to the message bus.
constexpr const char* KeptByLibraries = "leak:libfontconfig\nleak:libSDL2\nleak:libdbus\n";

} // namespace

/// AddressSanitizer asks for it.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return KeptByLibraries;
}

namespace KAV::Tests {

using namespace KAV::Host;

CKavhostUser::CKavhostUser() {
    const auto kept = NewFolder() / "suppressions";
    WriteBytes(kept, KeptByLibraries);
    setenv("LSAN_OPTIONS", ("print_suppressions=0:suppressions=" + kept.string()).c_str(), 1);
    windows.Show(windows.Top(), false);
    setenv("XDG_CONFIG_HOME", NewFolder().c_str(), 1); // an editor keeps the width that it was dragged to
    auto audio = Noise(2, std::size_t{22050} * Seconds, 0.25f);
    audio.format.rateHz = 22050;
    WriteWav(file, audio);
}

CKavhostUser::~CKavhostUser() {
    if (!kavhost) return; // a test that failed
    kavhost->Signal(SIGKILL);
    kavhost->Wait();
}

void CKavhostUser::Open(std::vector<std::string> more, const std::string& device) {
    std::vector<std::string> arguments{"edit", file, "-p", PluginFile(), "--device", device};
    arguments.insert(arguments.end(), more.begin(), more.end());
    kavhost.emplace(std::move(arguments));
    if (!Until([&] { return Window() != 0 && ShowsAPicture(); }))
        throw std::runtime_error("no editor was opened"); // the test can't go on
}

SRun CKavhostUser::Close() {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = Window();
    event.type = windows.Atom("WM_PROTOCOLS");
    event.data.data32[0] = windows.Atom("WM_DELETE_WINDOW");
    xcb_send_event(windows.Connection(), 0, event.window, 0, reinterpret_cast<const char*>(&event));
    windows.Sync();
    return End();
}

SRun CKavhostUser::End() {
    auto run = kavhost->Wait();
    kavhost.reset();
    return run;
}

bool CKavhostUser::Until(const std::function<bool()>& holds) {
    const auto guard = std::chrono::steady_clock::now() + std::chrono::seconds(90);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > guard) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

xcb_window_t CKavhostUser::Window() {
    for (const auto window : windows.Children(windows.Root())) {
        if (windows.IsViewable(window) && !windows.Children(window).empty()) return window;
    }
    return 0;
}

xcb_window_t CKavhostUser::Editor() {
    const auto parents = windows.Children(Window());
    if (parents.size() != 1) return 0;
    const auto editors = windows.Children(parents[0]);
    return editors.size() == 1 ? editors[0] : 0;
}

bool CKavhostUser::ShowsAPicture() {
    const auto editor = Editor();
    if (editor == 0) return false;
    auto pixels = windows.Pixels(editor, 0, 0, 300, 200);
    std::ranges::sort(pixels);
    return std::unique(pixels.begin(), pixels.end()) - pixels.begin() > 20;
}

SStripLayout CKavhostUser::Strip() {
    const auto width = windows.Place(Window()).width;
    return LayOutStrip(width, StripHeightFor(width));
}

std::int32_t CKavhostUser::StripTop() {
    return windows.Place(Window()).height - Strip().height;
}

std::vector<std::uint32_t> CKavhostUser::StripPixels() {
    const auto strip = Strip();
    auto pixels = windows.Pixels(Window(), 0, StripTop(), strip.width, strip.height);
    for (auto& pixel : pixels) pixel &= 0xFFFFFF;
    return pixels;
}

std::int32_t CKavhostUser::Played() {
    const auto strip = Strip();
    const auto full = CStripPainter().Draw(strip, {false, false, strip.barEnd - strip.barBegin, ""});
    const auto row = static_cast<std::ptrdiff_t>(strip.height / 2) * strip.width;
    const auto colour = full.pixels[static_cast<std::size_t>(row + strip.barBegin + 4)];
    const auto pixels = StripPixels();
    const auto bar = pixels.begin() + row + strip.barBegin;
    return static_cast<std::int32_t>(std::count(bar, bar + strip.barEnd - strip.barBegin, colour));
}

bool CKavhostUser::ShowsPlaying() {
    const auto strip = Strip();
    const auto playing = CStripPainter().Draw(strip, {true, false, 0, ""});
    const auto pixels = StripPixels();
    for (std::int32_t y = 0; y < strip.height; ++y) {
        const auto row = static_cast<std::ptrdiff_t>(y) * strip.width;
        // The bar's handle may reach a little into the button.
        if (!std::equal(pixels.begin() + row, pixels.begin() + row + strip.buttonEnd - 4,
                playing.pixels.begin() + row))
            return false;
    }
    return true;
}

bool CKavhostUser::ShowsLooping() {
    const auto strip = Strip();
    const auto looping = CStripPainter().Draw(strip, {true, true, 0, ""});
    const auto pixels = StripPixels();
    for (std::int32_t y = 0; y < strip.height; ++y) {
        const auto row = static_cast<std::ptrdiff_t>(y) * strip.width;
        if (!std::equal(pixels.begin() + row + strip.timeEnd, pixels.begin() + row + strip.width,
                looping.pixels.begin() + row + strip.timeEnd))
            return false;
    }
    return true;
}

bool CKavhostUser::StandsStill() {
    const auto before = StripPixels();
    std::this_thread::sleep_for(std::chrono::milliseconds(500)); // played, it would go on by six pixels
    return StripPixels() == before;
}

void CKavhostUser::MoveTo(std::int32_t x, std::int32_t y) {
    const auto place = windows.Place(Window());
    windows.MoveTo(place.x + x - 120, place.y + y - 110); // from the parent in the hidden window
}

void CKavhostUser::Click(std::int32_t x, std::int32_t y) {
    MoveTo(x, y);
    windows.Click(1);
}

CKavhostUser::SPoint CKavhostUser::MiddleOf(std::string_view widget) {
    const auto& rect = Panel::RowOf(widget).rect;
    return {static_cast<std::int32_t>(rect.CentreX()), static_cast<std::int32_t>(rect.CentreY())};
}

} // namespace KAV::Tests
