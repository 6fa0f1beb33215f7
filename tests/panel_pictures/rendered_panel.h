#pragma once

#include "tests/gfx/ogl_window.h"
#include "tests/gfx/scene_comparison.h"
#include "tests/panel_pictures/painted_panel.h"
#include "tests/support/golden_picture.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace KAV::Tests {

/// As PaintedPanel, by the renderer that the parameter numbers. The committed pictures are those of the
/// software renderer; the others may be off by more than 8 of 255 in 0.5 % of the pixels.
class RenderedPanel : public PaintedPanel, public testing::WithParamInterface<std::uint32_t> {
protected:
    RenderedPanel() {
        if (IsSoftware()) return;
        glWindow.emplace(Largest, Largest);
        window.handle = glWindow->Handle();
        table.fill(GFX::OpenGLRenderer());
    }

    static bool IsSoftware() { return GetParam() == GFX::Software; }
    const Pixels::SBitmap& Shown() {
        if (IsSoftware()) return PaintedPanel::Shown();
        auto& gui = Gui();
        gui.Invalidate();
        gui.Frame().RenderUnseen();
        readBack = Pixels::TransparentBitmap(gui.Width(), gui.Height());
        const auto frame = Tests::FrameOf(gui.GPU(), gui.Width(), gui.Height());
        std::memcpy(readBack.bytes.data(), frame.data(), readBack.bytes.size());
        return readBack;
    }
    testing::AssertionResult IsExpected(const Pixels::SBitmap& picture, const std::string& name) {
        if (IsSoftware()) return IsTheCommittedPicture(picture, name);
        return IsCloseTo(picture, CommittedPicture(name));
    }
    testing::AssertionResult DiffersAsExpected(const Pixels::SBitmap& picture, const Pixels::SBitmap& rest,
        const std::string& name, bool hasCurve = false) {
        if (IsSoftware()) return DiffersAsCommitted(picture, rest, name);
        auto expected = rest;
        const auto part = CommittedPicture(name);
        std::istringstream place(CommittedPlace(name));
        std::int32_t left = 0;
        std::int32_t top = 0;
        place >> left >> top;
        for (std::int32_t y = 0; y < part.height; ++y) {
            for (std::int32_t x = 0; x < part.width; ++x) {
                const auto* const from = &part.bytes[static_cast<std::size_t>(y * part.stride + 4 * x)];
                if (from[3] == 0) continue; // as at rest
                std::copy_n(from, 4,
                    &expected.bytes[static_cast<std::size_t>((top + y) * expected.stride + 4 * (left + x))]);
            }
        }
        auto result = IsCloseTo(picture, expected);
        if (!result || hasCurve) return result;
        // And of the part that shows the state alone, which may be a small one; unless it is mostly lines.
        const auto actualFrame = FrameFrom(picture);
        const auto expectedFrame = FrameFrom(expected);
        Frame actualPart;
        Frame expectedPart;
        for (std::int32_t y = 0; y < part.height; ++y) {
            for (std::int32_t x = 0; x < part.width; ++x) {
                if (part.bytes[static_cast<std::size_t>(y * part.stride + 4 * x + 3)] == 0) continue;
                const auto at = static_cast<std::size_t>((top + y) * picture.width + left + x);
                actualPart.push_back(actualFrame[at]);
                expectedPart.push_back(expectedFrame[at]);
            }
        }
        const auto difference = CompareFrames(actualPart, expectedPart, nullptr);
        if (difference.share <= ShareElsewhere) return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << 100.0 * difference.share << " % of what differs from the panel at rest";
    }

private:
    static constexpr std::int32_t Largest = 1508; // of all widths; no panel is higher than wide

    static Frame FrameFrom(const Pixels::SBitmap& picture) {
        Frame frame(picture.bytes.size() / 4);
        std::memcpy(frame.data(), picture.bytes.data(), picture.bytes.size());
        return frame;
    }
    static testing::AssertionResult IsCloseTo(
        const Pixels::SBitmap& picture, const Pixels::SBitmap& expected) {
        if (picture.width != expected.width || picture.height != expected.height)
            return testing::AssertionFailure() << picture.width << " x " << picture.height;
        const auto difference = CompareFrames(FrameFrom(picture), FrameFrom(expected), nullptr);
        if (difference.share <= ShareElsewhere) return testing::AssertionSuccess();
        const auto width = static_cast<std::size_t>(picture.width);
        return testing::AssertionFailure()
               << 100.0 * difference.share << " % of the pixels differ, the most (" << difference.most
               << ") at " << difference.pixel % width << ", " << difference.pixel / width;
    }

    std::optional<CGlWindow> glWindow;
    Pixels::SBitmap readBack;
};

inline const auto RendererName = [](const testing::TestParamInfo<std::uint32_t>& info) {
    return std::string(info.param == GFX::Software ? "Software" : "OpenGL");
};

} // namespace KAV::Tests
