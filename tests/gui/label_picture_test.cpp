// Labels with real letters: what shadows and slides look like.

#include "gui/label.h"
#include "pixels/lettering.h"
#include "tests/gui/recording_root.h"
#include "tests/support/golden_picture.h"
#include "tests/support/recording_window.h"

#include <array>
#include <cmath>
#include <map>
#include <string>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

/// Draws textures pixel for pixel, with their alpha and that of the colour, over a dark ground.
class CPlainPainter final : public GFX::GPU {
public:
    static constexpr std::int32_t Width = 240;
    static constexpr std::int32_t Height = 110;

    Pixels::SBitmap frame = Pixels::TransparentBitmap(Width, Height);

    bool AnySizeTextures() const override { return true; }
    bool IsReady() const override { return true; }
    bool IsCurrent() const override { return true; }
    void Clear() override {
        for (std::size_t n = 0; n < frame.bytes.size(); ++n) frame.bytes[n] = n % 4 == 3 ? 255 : 72;
    }
    void CreateTexture(
        const Pixels::SBitmap& bitmap, GFX::STexture& texture, std::int32_t, std::int32_t) override {
        texture.piGDIP = ++_made;
        _pictures[_made] = bitmap;
    }
    void FreeTexture(GFX::STexture& texture) override {
        _pictures.erase(texture.piGDIP);
        texture = GFX::FreedTexture();
    }
    void DrawTexture(const GFX::STexture& texture, const GFX::SDraw& draw) override {
        const auto& from = _pictures.at(texture.piGDIP);
        EXPECT_EQ(draw.sTo.fW, static_cast<float>(from.width)) << "pixel for pixel";
        const unsigned alpha = draw.nColor >> 24U;
        const auto left = static_cast<std::int32_t>(draw.sTo.fL);
        const auto top = static_cast<std::int32_t>(draw.sTo.fT);
        for (std::int32_t y = 0; y < from.height; ++y) {
            for (std::int32_t x = 0; x < from.width; ++x) {
                if (x + left < 0 || x + left >= Width || y + top < 0 || y + top >= Height) continue;
                const auto* const source = &from.bytes[static_cast<std::size_t>(y * from.stride + 4 * x)];
                auto* const to =
                    &frame.bytes[static_cast<std::size_t>((y + top) * frame.stride + 4 * (x + left))];
                const unsigned rest = 255 - (source[3] * alpha + 127) / 255;
                for (std::size_t n = 0; n < 4; ++n)
                    to[n] = static_cast<std::uint8_t>(
                        std::min((source[n] * alpha + 127) / 255 + (to[n] * rest + 127) / 255, 255U));
            }
        }
    }

private:
    std::map<std::uint64_t, Pixels::SBitmap> _pictures;
    std::uint64_t _made = 0;
};

CPlainPainter* painter = nullptr;

std::unique_ptr<GFX::GPU> MakePainter(const GFX::SRendererTarget&, GFX::EReason) {
    auto made = std::make_unique<CPlainPainter>();
    painter = made.get();
    return made;
}

constexpr GFX::RendererTable Painters{{{u"Software", MakePainter, true}, {u"OpenGL", MakePainter, true},
    {u"Direct3D9", MakePainter, true}, {u"Direct2D", MakePainter, true}}};

struct SLetteredPictures final : IPictures {
    Pixels::SBitmap Letter(const SLettering& lettering, std::int32_t width, std::int32_t height) override {
        auto picture = Pixels::TransparentBitmap(width, height);
        Pixels::STextLine line;
        line.text = lettering.sText;
        line.pixels = lettering.fPixels;
        line.bold = lettering.bBold;
        line.italic = lettering.bItalic;
        line.ellipsis = lettering.bEllipsis;
        line.align = lettering.nAlign;
        line.colour = lettering.nColor;
        line.left = lettering.nL;
        line.top = lettering.nT;
        line.width = lettering.nW;
        line.height = lettering.nH;
        letters->Draw(line, picture);
        return picture;
    }

    std::unique_ptr<Pixels::CLettering> letters = Pixels::CLettering::Create();
};

class LabelPicture : public testing::Test {
protected:
    LabelPicture() { GFX::UseRenderers(&Painters); }
    ~LabelPicture() override { GFX::UseRenderers(nullptr); }

    void SetUp() override {
        ASSERT_NE(pictures.letters, nullptr);
        root.CreateGUIWindow();
        root.Resize(CPlainPainter::Width, CPlainPainter::Height);
        ASSERT_TRUE(root.Screen().Create());
        painter->Clear();
    }
    void TearDown() override { root.Screen().Release(); }

    static SWidgetInfo Info(float left, float top, std::u16string_view text) {
        SWidgetInfo info;
        info.fX = left;
        info.fY = top;
        info.fW = 112;
        info.fH = 22;
        info.fFontSize = 10.0f;
        info.sText = text;
        return info;
    }
    void Draw(const SWidgetInfo& info) { CLabel(root, info).Draw(0); }

    CRecordingWindow window;
    SLetteredPictures pictures;
    CRecordingRoot root{{&window, &pictures}};
};

} // namespace

TEST_F(LabelPicture, Shadows) {
    auto info = Info(4, 2, u"Without 12.5");
    info.bTextShadow = false;
    Draw(info);
    info = Info(4, 28, u"Beside it 12.5");
    info.bTextShadow = true;
    info.fTextShadowX = info.fTextShadowY = 1.0f;
    Draw(info);
    info.fX = 120;
    info.sText = u"Soft 12.5";
    info.nTextShadowBlur = 2;
    Draw(info);
    info = Info(4, 54, u"Bright around it");
    info.bTextShadow = info.bBold = true;
    info.nTextColor = 0xFF000000;
    info.nTextShadowColor = 0xFFFFD040;
    info.nTextShadowBlur = 3;
    Draw(info);
    info.fX = 120;
    info.bUpper = true;
    info.nTextColor = 0x80FFFFFF;
    info.sText = u"through it";
    Draw(info);
    info = Info(4, 80, u"Down to the right");
    info.bTextShadow = info.bItalic = true;
    info.nTextAlign = 2;
    info.fTextShadowX = 4.0f;
    info.fTextShadowY = 3.0f;
    info.nTextShadowColor = 0xC0202080;
    Draw(info);
    EXPECT_TRUE(IsTheCommittedPicture(painter->frame, "label_shadows"));
}

// From top to bottom, the text of a label that goes and the one that comes, in both directions.
TEST_F(LabelPicture, Slides) {
    constexpr std::array<float, 5> phases{0.0f, 0.25f, 0.5f, 0.75f, 1.0f};
    for (const std::int32_t direction : {-1, 1}) {
        for (std::size_t n = 0; n < phases.size(); ++n) {
            auto info = Info(direction < 0 ? 4.0f : 124.0f, 2.0f + 21.0f * static_cast<float>(n), u"Stereo");
            CLabel label(root, info);
            const auto frame = painter->frame;
            label.Draw(0);
            painter->frame = frame; // without the first text alone
            label.SetText(u"5.1 Film");
            label.nTextSlideDir = 2 * direction;
            label.sTextSlide.fValue = phases[n];
            label.Draw(0);
        }
    }
    EXPECT_TRUE(IsTheCommittedPicture(painter->frame, "label_slides"));
}
