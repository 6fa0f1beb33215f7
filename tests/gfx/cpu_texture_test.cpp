#include "gfx/pixel_format.h"
#include "pixels/blur.h"
#include "tests/gfx/cpu_fixture.h"
#include "tests/support/added_log.h"
#include "utils/exceptions.h"

#include <array>
#include <memory>
#include <new>

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

namespace {

/// A stored picture that counts how often it has to be decoded, and what is kept of it.
class CCountedSheet final : public Pixels::ISheet {
public:
    explicit CCountedSheet(Pixels::SImageGrid grid = {}) : _grid(grid) {}
    std::int32_t Width() const noexcept override { return 8 * _grid.columns; }
    std::int32_t Height() const noexcept override { return 8 * _grid.rows; }
    const Pixels::SImageGrid& Grid() const noexcept override { return _grid; }
    std::shared_ptr<const Pixels::SBitmap> Cells(std::int32_t width, std::int32_t height) const override {
        ++made;
        if (fails == EFailure::Picture) throw Exceptions::GDIPImage(u"Dial", 8, 8, 2);
        if (fails == EFailure::Memory) throw std::bad_alloc();
        // The size is in the colour.
        auto cells = std::make_shared<const Pixels::SBitmap>(Plain(width * _grid.columns, height * _grid.rows,
            Black | static_cast<std::uint32_t>(width) << 8 | static_cast<std::uint32_t>(height)));
        kept.push_back(cells);
        return cells;
    }
    Pixels::SBitmap Decoded() const override { return Plain(Width(), Height(), White); }

    int Alive() const {
        int alive = 0;
        for (const auto& one : kept) alive += one.expired() ? 0 : 1;
        return alive;
    }

    enum class EFailure { None, Picture, Memory };
    mutable int made = 0;
    EFailure fails = EFailure::None;
    mutable std::vector<std::weak_ptr<const Pixels::SBitmap>> kept;

private:
    Pixels::SImageGrid _grid;
};

STexture MakeSheet(GPU& gpu, const std::shared_ptr<CCountedSheet>& sheet) {
    Pixels::SBitmap bitmap;
    bitmap.width = sheet->Width();
    bitmap.height = sheet->Height();
    bitmap.sheet = sheet;
    return MakeTexture(gpu, bitmap, sheet->Grid().columns, sheet->Grid().rows);
}

using CpuTextures = CpuData;

} // namespace

TEST_F(CpuTextures, SetsNothingOfARecordButItsHandle) {
    const STexture record{0, 2, 2, 0.5f, 0.25f, 3, 4, 5, 6};
    auto texture = record;
    gpu.CreateTexture(Plain(2, 2, White), texture, 2, 2);
    EXPECT_NE(texture.piGDIP, 0u);
    const auto handle = texture.piGDIP;
    texture.piGDIP = 0;
    EXPECT_EQ(texture, record);
    const std::array<std::uint32_t, 4> bits{};
    gpu.CreateTextureBits(bits.data(), 8, Argb32, texture, 2, 2, 2, 2);
    EXPECT_NE(texture.piGDIP, 0u);
    EXPECT_NE(texture.piGDIP, handle);
    texture.piGDIP = 0;
    EXPECT_EQ(texture, record);
}

TEST_F(CpuTextures, MakesTexturesOfPixelsInEachFormat) {
    const std::array<std::uint32_t, 2> bits{0x80FF8000, 0x80404000};
    const auto look = [&](std::int32_t format) {
        STexture texture;
        texture.nW = 2;
        texture.nH = 1;
        gpu.CreateTextureBits(bits.data(), 8, format, texture, 2, 1, 2, 1);
        Draw([&] { gpu.DrawTexture(texture, At(0, 0, 2, 1)); });
        return std::array{Pixel(0, 0), Pixel(1, 0)};
    };
    EXPECT_EQ(look(Argb32), (std::array{0xFF804000u, 0xFF202000u}));
    EXPECT_EQ(look(PremultipliedArgb32)[1], 0xFF404000u);
    EXPECT_EQ(look(Rgb32), (std::array{0xFFFF8000u, 0xFF404000u}));
    EXPECT_EQ(look(Rgb24)[0], 0xFFFF8000u);
    EXPECT_EQ(look(Rgb24)[1], 0xFF400080u);
}

TEST_F(CpuTextures, LeavesATextureBlankWhosePitchOrHeightIsNotItsOwn) {
    const std::vector<std::uint32_t> bits(64, 0xFFFFFFFF);
    const auto look = [&](std::int32_t pitch, std::int32_t height, std::int32_t format) {
        STexture texture;
        texture.nW = 4;
        texture.nH = 4;
        gpu.CreateTextureBits(bits.data(), pitch, format, texture, 4, height, 4, 4);
        EXPECT_NE(texture.piGDIP, 0u);
        const auto green = MakeTexture(gpu, Plain(4, 4, 0xFF00FF00));
        Draw([&] {
            gpu.DrawTexture(green, At(0, 0, 4, 4));
            gpu.DrawTexture(texture, At(0, 0, 4, 4));
        });
        return Pixel(0, 0);
    };
    EXPECT_EQ(look(16, 4, Argb32), 0xFFFFFFFFu);
    EXPECT_EQ(look(20, 4, Argb32), 0xFF00FF00u);
    EXPECT_EQ(look(16, 3, Argb32), 0xFF00FF00u);
    EXPECT_EQ(look(20, 4, Rgb32), Black);
}

TEST_F(CpuTextures, LogsATextureThatItCannotMake) {
    STexture texture;
    {
        const CAddedLog log;
        gpu.CreateTextureBits(nullptr, 16, 0x1234, texture, 4, 4, 4, 4);
        EXPECT_EQ(texture.piGDIP, 0u);
        EXPECT_EQ(
            log.Text(), "Error=a_rsTexture.piGDIP->LockBits(nullptr, 0, a_nPixelFormat, &iImageData):2\r\n");
    }
    const CAddedLog log;
    auto torn = Plain(4, 4, White);
    torn.bytes.resize(63);
    gpu.CreateTexture(torn, texture, 4, 4);
    gpu.CreateTexture({}, texture, 0, 0);
    EXPECT_EQ(texture.piGDIP, 0u);
    EXPECT_EQ(
        log.Text(), "Error=a_piBitmap->Clone(0, 0, a_nTexW, a_nTexH, a_piBitmap->GetPixelFormat()):2\r\n");
}

TEST_F(CpuTextures, CopiesThePixelsOfATexture) {
    std::vector<std::uint32_t> bits(16, 0xFFFF0000);
    STexture texture;
    texture.nW = texture.nH = 4;
    gpu.CreateTextureBits(bits.data(), 16, Argb32, texture, 4, 4, 4, 4);
    bits.assign(16, 0xFF00FF00);
    Draw([&] { gpu.DrawTexture(texture, At(0, 0, 4, 4)); });
    EXPECT_EQ(Pixel(0, 0), 0xFFFF0000u);
}

TEST_F(CpuTextures, DrawsTexturesThatAreFreedInTheSameFrame) {
    Draw([&] {
        for (int n = 0; n < 10; ++n) {
            auto red = MakeTexture(gpu, Plain(4, 4, 0xFFFF0000));
            gpu.DrawTexture(red, At(static_cast<float>(4 * n), 0, 4, 4));
            gpu.FreeTexture(red);
            EXPECT_EQ(red, FreedTexture());
        }
    });
    EXPECT_EQ(Pixel(0, 0), 0xFFFF0000u);
    EXPECT_EQ(Pixel(39, 3), 0xFFFF0000u);
}

TEST_F(CpuTextures, PaintsANewTextureWhereverTheOldOneWas) {
    for (std::uint32_t n = 1; n < 50; ++n) {
        const std::uint32_t colour = Black | n;
        auto texture = MakeTexture(gpu, Plain(4, 4, colour));
        Draw([&] { gpu.DrawTexture(texture, At(0, 0, 4, 4)); });
        EXPECT_EQ(Pixel(0, 0), colour);
        gpu.FreeTexture(texture); // most likely the next one gets its memory
    }
}

TEST_F(CpuTextures, DrawsNothingWithoutATexture) {
    Draw([&] {
        gpu.DrawTexture({}, At(0, 0, 4, 4));
        gpu.DrawTexture9({}, {});
    });
    EXPECT_TRUE(IsBlack());
    STexture none;
    gpu.FreeTexture(none);
}

TEST_F(CpuTextures, MakesABackdropOfTheFrame) {
    const auto scene = MakeTexture(gpu, SpottedPicture(Width, Height));
    Draw([&] { gpu.DrawTexture(scene, At(0, 0, Width, Height)); });
    auto expected = FrameOf(gpu, Width, Height);
    Pixels::Blur({reinterpret_cast<std::uint8_t*>(expected.data()), 4 * expected.size()}, Width, Height, 4,
        4 * Width, false);
    STexture backdrop;
    gpu.MakeBackdrop(backdrop, Width, Height);
    ASSERT_NE(backdrop.piGDIP, 0u);
    Draw([&] { gpu.DrawTexture(backdrop, At(0, 0, Width, Height)); });
    EXPECT_EQ(FrameOf(gpu, Width, Height), expected);
}

TEST_F(CpuTextures, DecodesAStoredPictureOnceForEachSize) {
    const auto sheet = std::make_shared<CCountedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    EXPECT_EQ(sheet->made, 0);
    for (int n = 0; n < 5; ++n) {
        Draw([&] {
            gpu.DrawTexture(texture, At(0, 0, 10, 9));
            gpu.DrawTexture(texture, At(20, 20.25f, 10.4f, 8.6f));
            gpu.DrawTexture(texture, At(static_cast<float>(n), 0, 12, 9));
        });
    }
    EXPECT_EQ(sheet->made, 2);
    EXPECT_EQ(Pixel(4, 0), Black | 12u << 8 | 9u);
}

TEST_F(CpuTextures, GivesUpSizesThatAreNoLongerInUse) {
    const auto sheet = std::make_shared<CCountedSheet>();
    auto texture = MakeSheet(gpu, sheet);
    for (std::int32_t size = 8; size < 30; ++size) {
        Draw([&] { gpu.DrawTexture(texture, At(0, 0, static_cast<float>(size), 10)); });
        EXPECT_EQ(sheet->Alive(), 1);
    }
    Draw([] {}); // it may be drawn again
    EXPECT_EQ(sheet->Alive(), 1);
    gpu.FreeTexture(texture);
    EXPECT_EQ(sheet->Alive(), 0);
}

TEST_F(CpuTextures, MakesNoNewSizeWhileItStretches) {
    const auto sheet = std::make_shared<CCountedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    const auto draw = [&](float width) {
        Draw([&] { gpu.DrawTexture(texture, At(0, 0, width, 10)); });
        return Pixel(0, 0) >> 8 & 0xFF; // of the size that was drawn
    };
    EXPECT_EQ(draw(10), 10u);
    gpu.SetStretching(true);
    for (const float width : {11.0f, 15.0f, 20.0f, 7.0f}) EXPECT_EQ(draw(width), 10u);
    EXPECT_EQ(Pixel(6, 9), Pixel(0, 0));
    EXPECT_EQ(Pixel(7, 9), Black);
    EXPECT_EQ(sheet->made, 1);
    gpu.SetStretching(false);
    EXPECT_EQ(draw(20), 20u);
    EXPECT_EQ(sheet->made, 2);
}

TEST_F(CpuTextures, StretchesTheNearestSize) {
    const auto sheet = std::make_shared<CCountedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    Draw([&] {
        for (const float width : {10.0f, 20.0f, 30.0f}) gpu.DrawTexture(texture, At(0, 0, width, 10));
    });
    gpu.SetStretching(true);
    const auto draw = [&](float width) {
        Draw([&] {
            for (const float other : {10.0f, 20.0f, 30.0f}) gpu.DrawTexture(texture, At(0, 20, other, 10));
            gpu.DrawTexture(texture, At(0, 0, width, 10));
        });
        return Pixel(0, 0) >> 8 & 0xFF;
    };
    EXPECT_EQ(draw(8), 10u);
    EXPECT_EQ(draw(14), 10u);
    EXPECT_EQ(draw(16), 20u);
    EXPECT_EQ(draw(24), 20u);
    EXPECT_EQ(draw(26), 30u);
    EXPECT_EQ(draw(50), 30u);
    EXPECT_EQ(sheet->made, 3);
}

TEST_F(CpuTextures, MakesTheFirstSizeThoughItStretches) {
    const auto sheet = std::make_shared<CCountedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    gpu.SetStretching(true);
    Draw([&] { gpu.DrawTexture(texture, At(0, 0, 13, 10)); });
    EXPECT_EQ(Pixel(0, 0) >> 8 & 0xFF, 13u);
}

TEST_F(CpuTextures, ScalesTheCellsOfAStoredPictureByItsOwnGrid) {
    const auto sheet = std::make_shared<CCountedSheet>(Pixels::SImageGrid{6, 3, 2});
    auto texture = MakeSheet(gpu, sheet);
    auto draw = At(0, 0, 13, 10);
    draw.sFrom = CellOf(texture, 2, 1);
    texture.nColumns = texture.nRows = texture.nFrames = 1;
    Draw([&] { gpu.DrawTexture(texture, draw); });
    EXPECT_EQ(Pixel(12, 9), Black | 13u << 8 | 10u);
    EXPECT_EQ(sheet->made, 1);
}

TEST_F(CpuTextures, DrawsPartsOfAPictureFromThePictureAsStored) {
    const auto sheet = std::make_shared<CCountedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    auto draw = At(0, 0, 30, 20);
    draw.sFrom = {0.0f, 0.5f, 0.0f, 1.0f};
    Draw([&] { gpu.DrawTexture(texture, draw); });
    EXPECT_EQ(Pixel(0, 0), Black | 8u << 8 | 8u);
}

TEST_F(CpuTextures, NeitherScalesNorFailsBeyondAllSense) {
    const auto sheet = std::make_shared<CCountedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    Draw([&] { gpu.DrawTexture(texture, At(-5000, -5000, 900000, 900000)); });
    EXPECT_EQ(Pixel(0, 0), Black | 8u << 8 | 8u);
}

TEST_F(CpuTextures, PassesOnThatAPictureCannotBeDecoded) {
    const auto sheet = std::make_shared<CCountedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    sheet->fails = CCountedSheet::EFailure::Picture;
    gpu.BeginFrame();
    gpu.Clear();
    EXPECT_THROW(gpu.DrawTexture(texture, At(0, 0, 10, 10)), Exceptions::GDIPImage);
    sheet->fails = CCountedSheet::EFailure::None;
    Draw([&] { gpu.DrawTexture(texture, At(0, 0, 10, 10)); });
    EXPECT_EQ(Pixel(0, 0), Black | 10u << 8 | 10u);
}

TEST_F(CpuTextures, LosesOneQuadAndLogsItWithoutMemory) {
    const auto sheet = std::make_shared<CCountedSheet>();
    const auto texture = MakeSheet(gpu, sheet);
    const auto red = MakeTexture(gpu, Plain(4, 4, 0xFFFF0000));
    sheet->fails = CCountedSheet::EFailure::Memory;
    const CAddedLog log;
    Draw([&] {
        gpu.DrawTexture(texture, At(0, 0, 10, 10));
        gpu.DrawTexture(red, At(20, 0, 4, 4));
    });
    EXPECT_EQ(Pixel(0, 0), Black);
    EXPECT_EQ(Pixel(20, 0), 0xFFFF0000u);
    EXPECT_EQ(log.Text(),
        "Error=_piGdipBB->DrawImage(a_rsTexture.piGDIP, Gdiplus::RectF(a_fL, a_fT, a_fW, a_fH), a_fU1 * "
        "a_rsTexture.nW, a_fV1 * a_rsTexture.nH, (a_fU2 - a_fU1) * a_rsTexture.nW, (a_fV2 - a_fV1) * "
        "a_rsTexture.nH, Gdiplus::Unit::UnitPixel, piAttr):3\r\n");
}
