#pragma once

#include "tests/support/x_test_host.h"
#include "tests/tools/kavhost/child.h"
#include "tools/kavhost/editor/transport_strip.h"

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace KAV::Tests {

/// A display with kavhost's window on it, and its user.
class CKavhostUser : public testing::Test {
protected:
    CKavhostUser();
    ~CKavhostUser() override;

    /// Starts kavhost with the file and waits until its editor shows a picture.
    void Open(std::vector<std::string> more = {}, const std::string& device = "none");
    SRun Close(); ///< as the window's frame does
    SRun End();   ///< waits for the end of kavhost

    static bool Until(const std::function<bool()>& holds); ///< waits for a fact, at most a minute and a half
    xcb_window_t Window();                                 ///< 0: there is none
    xcb_window_t Editor();
    bool ShowsAPicture();

    // In pixels of the window
    Host::SStripLayout Strip();
    std::int32_t StripTop();
    std::vector<std::uint32_t> StripPixels();
    std::int32_t Played(); ///< pixels of the bar that have played
    bool ShowsPlaying();
    bool ShowsLooping();
    /// Waits until the strip shows less than the rate of the screen could change: what stands still.
    bool StandsStill();

    void MoveTo(std::int32_t x, std::int32_t y);
    void Click(std::int32_t x, std::int32_t y);
    /// The middle of a widget of the panel.
    struct SPoint {
        std::int32_t x = 0, y = 0;
    };
    static SPoint MiddleOf(std::string_view widget);

    static constexpr int Seconds = 40; ///< of the file
    CXTestHost windows;
    std::filesystem::path folder = NewFolder();
    std::filesystem::path file = folder / "in.wav";
    std::optional<CChild> kavhost;
};

/// Keys, as X11 numbers them.
inline constexpr std::uint32_t KeySpace = ' ', KeyL = 'l', KeyEscape = 0xFF1B, KeyHome = 0xFF50,
                               KeyLeft = 0xFF51, KeyRight = 0xFF53;

} // namespace KAV::Tests
