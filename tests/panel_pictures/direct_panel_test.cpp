// The panel on Windows, drawn by graphics hardware and read back, next to the committed pictures. Texts don't
// count: their typeface is the system's.

#include "gui/label.h"
#include "gui/settings.h"
#include "gui/value_widget.h"
#include "pixels/png_reader.h"
#include "tests/gfx/direct_window.h"
#include "tests/panel_pictures/painted_panel.h"
#include "tests/support/file_text.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

using namespace KAV;
using namespace KAV::Tests;

namespace {

constexpr std::int32_t Largest = 1508; // of all widths; no panel is higher than wide
constexpr int Most = 8;                // of 255
constexpr double Share = 0.005;        // of the pixels may be off by more

Pixels::SBitmap Committed(const std::string& name) {
    const auto file = ReadText(std::filesystem::path(KAV_PICTURES) / "panel" / (name + ".png"));
    const auto picture = Pixels::ReadPng({reinterpret_cast<const std::uint8_t*>(file.data()), file.size()});
    if (!picture) throw std::runtime_error("no picture " + name);
    return *picture;
}

/// The committed picture of a state, which contains only what differs from the panel at rest.
Pixels::SBitmap Committed(const std::string& name, Pixels::SBitmap rest) {
    const auto part = Committed(name);
    std::istringstream place(ReadText(std::filesystem::path(KAV_PICTURES) / "panel" / (name + ".place")));
    std::int32_t left = 0;
    std::int32_t top = 0;
    place >> left >> top;
    for (std::int32_t y = 0; y < part.height; ++y) {
        for (std::int32_t x = 0; x < part.width; ++x) {
            const auto* const from = &part.bytes[static_cast<std::size_t>(y * part.stride + 4 * x)];
            if (from[3] != 0)
                std::copy_n(
                    from, 4, &rest.bytes[static_cast<std::size_t>((top + y) * rest.stride + 4 * (left + x))]);
        }
    }
    return rest;
}

struct SState {
    std::string name;
    std::function<void(class DirectPanel&)> reach;
};

class DirectPanel : public PaintedPanel, public testing::WithParamInterface<std::uint32_t> {
public:
    using PaintedPanel::Click;
    using PaintedPanel::Device;
    using PaintedPanel::effect;
    using PaintedPanel::Gui;
    using PaintedPanel::Named;
    using PaintedPanel::Play;
    using PaintedPanel::Settle;
    using PaintedPanel::Wheel;
    using PaintedPanel::WithId;

    void Leave() {
        robot.Move(Nowhere.x, Nowhere.y);
        Settle();
    }

protected:
    static constexpr SPixel Nowhere{377, 300};
    CDirectWindow hardware{Largest, Largest};

    DirectPanel() {
        window.handle = hardware.Handle();
        table = {{{u"Software", &MakeDouble, true}, GFX::OpenGLRenderer(), GFX::Direct3DRenderer(),
            GFX::Direct2DRenderer()}};
        GUI::StoreNumber(u"GFX", GFX::Software);
    }
    /// Hardware draws only the pictures that are compared: this machine may have none, and all the frames on
    /// the way there would take minutes.
    static std::unique_ptr<GFX::GPU> MakeDouble(const GFX::SRendererTarget&, GFX::EReason) {
        return std::make_unique<CRecordingGpu>();
    }
    Pixels::SBitmap Drawn() {
        auto& gui = Gui();
        EXPECT_TRUE(gui.Screen().SetRenderer(GetParam()));
        EXPECT_EQ(gui.Screen().Renderer(), GetParam());
        gui.Invalidate();
        gui.Frame().RenderUnseen();
        auto picture = Pixels::TransparentBitmap(gui.Width(), gui.Height());
        gui.GPU().ReadBack(
            reinterpret_cast<std::uint32_t*>(picture.bytes.data()), picture.width, picture.height);
        EXPECT_TRUE(gui.Screen().SetRenderer(GFX::Software));
        return picture;
    }
    /// Where texts are now.
    std::vector<GUI::SPixelRect> Texts() {
        std::vector<GUI::SPixelRect> texts;
        for (auto* const widget : Gui().AllWidgets()) {
            const auto* const label = dynamic_cast<const GUI::CLabel*>(widget);
            if (label != nullptr && !label->Text().empty()) texts.push_back(label->PixelRect());
        }
        texts.push_back(Gui().Hint().PixelRect());
        return texts;
    }
    testing::AssertionResult IsCloseTo(const Pixels::SBitmap& expected) {
        const auto drawn = Drawn();
        if (drawn.width != expected.width || drawn.height != expected.height)
            return testing::AssertionFailure() << drawn.width << " x " << drawn.height;
        const auto texts = Texts();
        std::size_t counted = 0;
        std::size_t off = 0;
        for (std::int32_t y = 0; y < drawn.height; ++y) {
            for (std::int32_t x = 0; x < drawn.width; ++x) {
                const bool isText = std::any_of(texts.begin(), texts.end(), [&](const auto& text) {
                    return x >= text.nL && y >= text.nT && x < text.nL + text.nW && y < text.nT + text.nH;
                });
                if (isText) continue;
                ++counted;
                const auto at = static_cast<std::size_t>(y * drawn.stride + 4 * x);
                int most = 0;
                for (std::size_t n = 0; n < 3; ++n)
                    most = std::max(most, std::abs(drawn.bytes[at + n] - expected.bytes[at + n]));
                if (most > Most) ++off;
            }
        }
        const double share = static_cast<double>(off) / static_cast<double>(counted);
        const double part = static_cast<double>(counted) / (static_cast<double>(drawn.width) * drawn.height);
        if (part < 0.7) return testing::AssertionFailure() << "too little but texts: " << part;
        if (share <= Share) return testing::AssertionSuccess() << share;
        return testing::AssertionFailure() << 100.0 * share << " % of the pixels differ";
    }
};

const std::vector<SState>& States() {
    static const std::vector<SState> states{
        {"faders",
            [](DirectPanel& panel) {
                panel.effect->Set(0, 0.5f);
                panel.effect->Set(4, 1.0f / 3.0f);
                panel.effect->Set(16, 0.2f);
                panel.effect->Set(20, 0.0f);
                panel.Settle();
            }},
        {"knobs",
            [](DirectPanel& panel) {
                dynamic_cast<GUI::CValueWidget&>(panel.Named(u"Main Input Gain")).SetValue(0.0f, false);
                dynamic_cast<GUI::CValueWidget&>(panel.Named(u"Main Output Gain")).SetValue(1.0f, false);
                for (int n = 0; n < 5; ++n)
                    dynamic_cast<GUI::CValueWidget&>(panel.WithId(24 + n))
                        .SetValue(0.25f * static_cast<float>(n), false);
                panel.Settle();
            }},
        {"limiter_off",
            [](DirectPanel& panel) {
                panel.Click(panel.Named(u"Limiter"));
                panel.Leave();
            }},
        {"auto_release",
            [](DirectPanel& panel) {
                panel.Click(panel.Named(u"Auto Release"));
                panel.Leave();
            }},
        {"oversampling",
            [](DirectPanel& panel) {
                panel.Click(panel.Named(u"ToolBtnNextOS"));
                panel.Click(panel.Named(u"ToolBtnNextOS"));
                panel.Click(panel.Named(u"Hiqh Quality"));
                panel.Leave();
            }},
        {"group_2",
            [](DirectPanel& panel) {
                panel.effect->Set(5, 0.4f);
                panel.Click(panel.Named(u"ToolBtnFx2"));
                panel.Leave();
            }},
        {"solo_and_mute",
            [](DirectPanel& panel) {
                panel.Click(panel.Named(u"ToolBtnFx3"), GUI::MouseLeft | GUI::MouseShift);
                panel.Click(panel.Named(u"ToolBtnFx1"), GUI::MouseLeft | GUI::MouseDouble);
                panel.Leave();
            }},
        {"side_b",
            [](DirectPanel& panel) {
                panel.Click(panel.Named(u"ToolBtnA"));
                panel.Leave();
            }},
        {"undo",
            [](DirectPanel& panel) {
                panel.Wheel(panel.Named(u"Threshold"), -3.0f);
                panel.Leave();
            }},
        {"macro_open",
            [](DirectPanel& panel) {
                panel.Click(panel.Named(u"Macro 1", 1));
                panel.Leave();
            }},
        {"macro_sensitivities",
            [](DirectPanel& panel) {
                panel.Device().State().AssignMacro(1, 33, 0.9f);
                panel.Device().State().AssignMacro(1, 133, 0.2f);
                panel.Device().State().AssignMacro(1, 232, 1.0f);
                panel.Device().State().AssignMacro(1, 37, 0.0f);
                panel.Click(panel.Named(u"Macro 2", 1));
                panel.Leave();
            }},
    };
    return states;
}

} // namespace

TEST_P(DirectPanel, AtRestLooksLikeTheCommittedPictures) {
    for (const std::int32_t width : {500, 754, 1508}) {
        ShowAtWidth(width);
        EXPECT_TRUE(IsCloseTo(Committed("rest_" + std::to_string(width)))) << width;
    }
}

TEST_P(DirectPanel, AtWorkLooksLikeTheCommittedPictures) {
    for (const std::int32_t width : {500, 754, 1508}) {
        ShowAtWidth(width);
        const auto name = std::to_string(width);
        effect->Set(4, 0.7f);
        effect->Set(24, 0.8f);
        Play(250, 1.6f);
        EXPECT_TRUE(IsCloseTo(Committed("busy_" + name, Committed("rest_" + name)))) << width;
        Renew(); // without a history of the curve
    }
}

TEST_P(DirectPanel, InItsStatesLooksLikeTheCommittedPictures) {
    for (const auto& state : States()) {
        Renew();
        Leave();
        state.reach(*this);
        EXPECT_TRUE(IsCloseTo(Committed(state.name, Committed("rest_754")))) << state.name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, DirectPanel, testing::Values(GFX::OpenGL, GFX::Direct3D9, GFX::Direct2D), [](const auto& one) {
        return one.param == GFX::OpenGL ? "OpenGL" : one.param == GFX::Direct3D9 ? "Direct3D" : "Direct2D";
    });
