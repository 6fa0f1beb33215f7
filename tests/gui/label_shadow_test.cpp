// A text's shadow and the layers that a text is put together from.

#include "gui/label.h"
#include "gui/text_layers.h"
#include "pixels/blur.h"
#include "tests/gui/doubled_editor.h"
#include "utils/exceptions.h"

#include <functional>
#include <new>

using namespace KAV;
using namespace KAV::GUI;
using namespace KAV::Tests;

namespace {

/// Letters one pixel, in the colour of the text, at a place in the picture. Layers are told apart by that
/// colour.
struct SDotPictures final : IPictures {
    Pixels::SBitmap Letter(const SLettering& lettering, std::int32_t width, std::int32_t height) override {
        ++asked;
        if (before) before(lettering);
        auto bitmap = EmptyLayer(width + wrongBy, height, u"");
        for (std::size_t n = 0; n < 4; ++n)
            bitmap.bytes[4 * (dotY * static_cast<std::size_t>(width + wrongBy) + dotX) + n] =
                static_cast<std::uint8_t>(lettering.nColor >> (8 * n));
        return bitmap;
    }

    int asked = 0;
    std::int32_t wrongBy = 0;
    std::size_t dotX = 1;
    std::size_t dotY = 1;
    std::function<void(const SLettering&)> before;
};

class LabelShadow : public testing::Test {
protected:
    static constexpr std::size_t Width = 6;
    static constexpr std::size_t Height = 4;

    SDotPictures pictures;
    CRecordingRoot root{{nullptr, &pictures}};

    SWidgetInfo Info() const {
        SWidgetInfo info;
        info.fW = Width;
        info.fH = Height;
        info.sText = u"x";
        info.nTextColor = 0xFFFFFFFF;
        info.bTextShadow = true;
        info.nTextShadowColor = 0xFF000080;
        info.fTextShadowX = 2.0f;
        info.fTextShadowY = 1.0f;
        return info;
    }
    static std::uint32_t Pixel(const Pixels::SBitmap& bitmap, std::size_t x, std::size_t y) {
        const auto* const bytes = &bitmap.bytes[y * static_cast<std::size_t>(bitmap.stride) + 4 * x];
        return bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8 |
               static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
    }
    Pixels::SBitmap Rendered(const SWidgetInfo& info) {
        CLabel label(root, info);
        Pixels::SBitmap bitmap;
        label.RenderText(bitmap);
        return bitmap;
    }
    /// How the failure of a layer reads.
    static std::u16string Message(std::u16string_view name, std::int32_t status) {
        return Exceptions::GDIPImage(name, Width, Height, status).message;
    }
    std::u16string FailureOf(const SWidgetInfo& info) {
        try {
            Rendered(info);
        } catch (const Exceptions::GDIPImage& error) {
            return error.message;
        }
        return {};
    }
};

} // namespace

TEST_F(LabelShadow, LiesBelowTheTextAtItsOffset) {
    const auto bitmap = Rendered(Info());
    ASSERT_EQ(bitmap.width, static_cast<std::int32_t>(Width));
    ASSERT_EQ(bitmap.alpha, Pixels::EAlpha::Premultiplied);
    for (std::size_t y = 0; y < Height; ++y) {
        for (std::size_t x = 0; x < Width; ++x) {
            const std::uint32_t expected = x == 1 && y == 1 ? 0xFFFFFFFF : x == 3 && y == 2 ? 0xFF000080 : 0;
            EXPECT_EQ(Pixel(bitmap, x, y), expected) << x << ", " << y;
        }
    }
}

TEST_F(LabelShadow, IsCutAtTheEdgesOfTheWidget) {
    auto info = Info();
    for (const auto& [x, y] : std::initializer_list<std::pair<float, float>>{{100.0f, 0.0f}, {-100.0f, 0.0f},
             {0.0f, 100.0f}, {0.0f, -100.0f}, {-2.0f, -2.0f}, {5.0f, 3.0f}}) {
        info.fTextShadowX = x;
        info.fTextShadowY = y;
        const auto bitmap = Rendered(info);
        EXPECT_EQ(Pixel(bitmap, 1, 1), 0xFFFFFFFFu);
        EXPECT_EQ(std::count(bitmap.bytes.begin(), bitmap.bytes.end(), std::uint8_t{0x80}), 0)
            << x << ", " << y;
    }
    info.fTextShadowX = -1.0f;
    info.fTextShadowY = -1.0f;
    EXPECT_EQ(Pixel(Rendered(info), 0, 0), 0xFF000080u);
}

TEST_F(LabelShadow, IsBlurredWithItsAlpha) {
    auto info = Info();
    info.fTextShadowX = info.fTextShadowY = 0.0f;
    info.nTextShadowBlur = 1;
    info.nTextColor = 0;
    auto expected = EmptyLayer(Width, Height, u"");
    for (std::size_t n = 0; n < 4; ++n)
        expected.bytes[4 * (Width + 1) + n] = static_cast<std::uint8_t>(info.nTextShadowColor >> (8 * n));
    Pixels::Blur(expected.bytes, Width, Height, 1, 4 * Width, true);
    EXPECT_EQ(Rendered(info).bytes, expected.bytes);
    EXPECT_NE(std::count(expected.bytes.begin(), expected.bytes.end(), std::uint8_t{0}),
        static_cast<std::ptrdiff_t>(expected.bytes.size()));
}

TEST_F(LabelShadow, ShinesThroughATranslucentText) {
    auto info = Info();
    info.fTextShadowX = info.fTextShadowY = 0.0f;
    info.nTextColor = 0x80400000; // premultiplied
    EXPECT_EQ(Pixel(Rendered(info), 1, 1), 0xFF40003Fu);
}

TEST_F(LabelShadow, IsNotRenderedWithoutAColorOrOnRequest) {
    auto info = Info();
    info.nTextShadowColor = 0x00FFFFFF;
    EXPECT_EQ(Pixel(Rendered(info), 3, 2), 0u);
    info = Info();
    info.bTextShadow = false;
    EXPECT_EQ(Pixel(Rendered(info), 3, 2), 0u);
    EXPECT_EQ(pictures.asked, 2);
}

TEST_F(LabelShadow, AFailureNamesTheLayer) {
    constexpr std::int32_t OutOfMemory = 3;
    pictures.before = [](const SLettering& lettering) {
        if (lettering.nColor == 0xFFFFFFFF) throw std::bad_alloc();
    };
    EXPECT_EQ(FailureOf(Info()), Message(u"LabelImageTop", OutOfMemory));
    pictures.before = [](const SLettering& lettering) {
        if (lettering.nColor != 0xFFFFFFFF) throw std::bad_alloc();
    };
    EXPECT_EQ(FailureOf(Info()), Message(u"LabelImageShadow", OutOfMemory));
    pictures.before = nullptr;
    pictures.wrongBy = 1;
    constexpr std::int32_t WrongState = 8;
    EXPECT_EQ(FailureOf(Info()), Message(u"LabelImageTop", WrongState));
}
