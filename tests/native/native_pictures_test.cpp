#include "native/native_pictures.h"

#include "native/picture_source.h"
#include "panel/sprites.h"
#include "pixels/blur.h"
#include "pixels/png_reader.h"
#include "pixels/resample.h"
#include "pixels/sheet.h"
#include "pixels/sheet_store.h"
#include "platform/resource.h"
#include "tests/native/pictures_fixture.h"
#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"
#include "utils/exceptions.h"
#include "utils/text.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using namespace KAV;
using namespace KAV::Tests;
using Pixels::SBitmap;

namespace {

class NativePictures : public CPicturesFixture {};

SBitmap Stored(std::u16string_view name) {
    return Pixels::ReadPng(Platform::Resource(Utils::ToUtf8(name))).value();
}

std::u16string Undecodable(std::u16string_view name, std::u16string_view size) {
    return u" GDI+ ERROR:\r\n\r\nFunction: Gdiplus::Bitmap() error = 2\r\nImage: \"" + std::u16string(name) +
           u"\" (" + std::u16string(size) + u"px)\r\n\r\nCan't load image.";
}

} // namespace

TEST_F(NativePictures, HaveEveryPictureOfThePanelUndecoded) {
    for (const auto& sprite : Panel::Sprites) {
        const auto name = Utils::ToUtf16(std::string(sprite.image));
        SCOPED_TRACE(sprite.image);
        const auto bitmap = Load(name);
        ASSERT_NE(bitmap, nullptr);
        EXPECT_EQ(bitmap->width, sprite.width);
        EXPECT_EQ(bitmap->height, sprite.height);
        EXPECT_TRUE(bitmap->bytes.empty());
        ASSERT_NE(bitmap->sheet, nullptr);
        EXPECT_EQ(bitmap->sheet->Width(), sprite.width);
        EXPECT_EQ(bitmap->sheet->Height(), sprite.height);
        EXPECT_EQ(bitmap->sheet->Grid(), (Pixels::SImageGrid{sprite.frames, sprite.columns, sprite.Rows()}));
    }
}

TEST_F(NativePictures, ShareOneSheetPerNameWhateverItsCase) {
    const auto sheet = Load(Edit)->sheet;
    EXPECT_EQ(Load(Edit)->sheet, sheet);
    EXPECT_EQ(Load(u"TOOLBTNEDIT((2))##SZ-1X-1PXSB0.PNG")->sheet, sheet);
    Native::CNativePictures other;
    EXPECT_EQ(other.LoadImage(Edit, -1, -1, 0)->sheet, sheet);
    EXPECT_NE(Load(Lamp)->sheet, sheet);
    EXPECT_EQ(sheet->Decoded().bytes, Stored(Edit).bytes);
    EXPECT_EQ(sheet->Cells(45, 23)->bytes, Pixels::Resampled(Stored(Edit), {2, 1, 2}, 45, 23).bytes);
}

TEST_F(NativePictures, ScaleTheWholeGridForASizeOfAFrame) {
    const auto bitmap = Load(Edit, 45, 23);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->sheet, nullptr);
    EXPECT_EQ(bitmap->width, 45);
    EXPECT_EQ(bitmap->height, 46);
    EXPECT_EQ(bitmap->alpha, Pixels::EAlpha::Premultiplied);
    EXPECT_EQ(bitmap->bytes, Pixels::Resampled(Stored(Edit), {}, 45, 46).bytes);
    EXPECT_NE(bitmap->bytes, Pixels::Resampled(Stored(Edit), {2, 1, 2}, 45, 23).bytes)
        << "cells by themselves";
}

TEST_F(NativePictures, NeedNoScalingAtTheirOwnSize) {
    EXPECT_EQ(Load(Edit, 100, 51)->sheet, Load(Edit)->sheet);
    EXPECT_EQ(Load(Edit, 100, -1)->sheet, Load(Edit)->sheet);
    EXPECT_EQ(Load(Edit, -1, 51)->sheet, Load(Edit)->sheet);
}

TEST_F(NativePictures, ScaleOneSideAlone) {
    const auto narrow = Load(Edit, 50, -1);
    EXPECT_EQ(narrow->width, 50);
    EXPECT_EQ(narrow->height, 102);
    EXPECT_EQ(narrow->bytes, Pixels::Resampled(Stored(Edit), {}, 50, 102).bytes);
    const auto low = Load(Edit, -1, 20);
    EXPECT_EQ(low->width, 100);
    EXPECT_EQ(low->height, 40);
    // A square, too: both sides are asked for.
    EXPECT_EQ(Load(Edit, 30, 30)->height, 60);
}

TEST_F(NativePictures, AreNoneWithoutPixels) {
    EXPECT_EQ(Load(Edit, 0, 20), nullptr);
    EXPECT_EQ(Load(Edit, 20, 0), nullptr);
    EXPECT_EQ(Load(Edit, -2, 20), nullptr);
    EXPECT_EQ(Load(Edit, 20, std::numeric_limits<std::int32_t>::min(), 4), nullptr);
    EXPECT_THROW(Load(Edit, std::numeric_limits<std::int32_t>::max(), 20), std::bad_alloc);
    EXPECT_THROW(Load(Edit, 20, std::numeric_limits<std::int32_t>::max()), std::bad_alloc);
    EXPECT_THROW(Load(Edit, -1, -1, std::numeric_limits<std::int32_t>::max()), std::bad_alloc);
}

TEST_F(NativePictures, BlurAWhiteSilhouetteWithRoomAroundIt) {
    constexpr std::int32_t blur = 3;
    const auto bitmap = Load(Lamp, -1, -1, blur);
    ASSERT_NE(bitmap, nullptr);
    ASSERT_EQ(bitmap->width, 36 + 8 * blur);
    ASSERT_EQ(bitmap->height, 72 + 8 * blur);
    EXPECT_EQ(bitmap->alpha, Pixels::EAlpha::Straight);
    // The picture's alpha in the middle of nothing, blurred by itself.
    const auto stored = Stored(Lamp);
    std::vector<std::uint8_t> alpha(static_cast<std::size_t>(bitmap->width * bitmap->height));
    for (std::int32_t y = 0; y < 72; ++y) {
        for (std::int32_t x = 0; x < 36; ++x)
            alpha[static_cast<std::size_t>((y + 4 * blur) * bitmap->width + x + 4 * blur)] =
                stored.bytes[static_cast<std::size_t>(y * stored.stride + 4 * x + 3)];
    }
    ASSERT_GT(std::count(alpha.begin(), alpha.end(), 255), 100);
    Pixels::Blur(alpha, bitmap->width, bitmap->height, blur, bitmap->width, false);
    for (std::size_t i = 0; i < alpha.size(); ++i) {
        ASSERT_EQ(bitmap->bytes[4 * i + 3], alpha[i]) << i;
        for (std::size_t c = 0; c < 3; ++c) ASSERT_EQ(bitmap->bytes[4 * i + c], 255) << i;
    }
}

TEST_F(NativePictures, BlurTheScaledPicture) {
    const auto bitmap = Load(Lamp, 15, 15, 1);
    ASSERT_EQ(bitmap->width, 15 + 8);
    ASSERT_EQ(bitmap->height, 30 + 8);
    auto alpha = std::vector<std::uint8_t>(std::size_t{23} * 38);
    const auto scaled = Pixels::Resampled(Stored(Lamp), {}, 15, 30);
    for (std::size_t y = 0; y < 30; ++y) {
        for (std::size_t x = 0; x < 15; ++x) alpha[(y + 4) * 23 + x + 4] = scaled.bytes[4 * (15 * y + x) + 3];
    }
    Pixels::Blur(alpha, 23, 38, 1, 23, false);
    for (std::size_t i = 0; i < alpha.size(); ++i) ASSERT_EQ(bitmap->bytes[4 * i + 3], alpha[i]) << i;
}

TEST_F(NativePictures, ReportAMissingPictureUnlessItIsAShadow) {
    EXPECT_EQ(Message(u"Nothing.png"),
        u" RESOURCE ERROR:\r\n\r\nCan't find resource \"Nothing.png\" of type \"IMG\"");
    EXPECT_EQ(Message(u"Nothing.png", 10, 10),
        u" RESOURCE ERROR:\r\n\r\nCan't find resource \"Nothing.png\" of type \"IMG\"");
    EXPECT_EQ(Message(u""), u" RESOURCE ERROR:\r\n\r\nCan't find resource \"\" of type \"IMG\"");
    EXPECT_EQ(Load(u"Nothing.png", -1, -1, 4), nullptr);
    EXPECT_EQ(Load(u"Hint", -1, -1, 4), nullptr) << "names are whole";
    const std::u16string illFormed{u'a', static_cast<char16_t>(0xD800), u'.', u'p', u'n', u'g'};
    EXPECT_EQ(Load(illFormed, -1, -1, 1), nullptr);
}

TEST_F(NativePictures, PreferAFileOfTheExactName) {
    const auto folder = Tests::ScratchFolder() / "exact";
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    const auto stored = Load(Edit)->sheet;
    Tests::WriteText(folder / Utils::ToUtf8(Edit), StoredBytes(Lamp));
    const auto bitmap = Load(Edit);
    EXPECT_EQ(bitmap->width, 36);
    EXPECT_EQ(bitmap->height, 72);
    EXPECT_NE(bitmap->sheet, stored);
    EXPECT_EQ(bitmap->sheet->Decoded().bytes, Stored(Lamp).bytes);
    EXPECT_EQ(Load(u"TOOLBTNEDIT((2))##SZ-1X-1PXSB0.PNG")->sheet, stored) << "not the exact name";
    EXPECT_EQ(Native::StoredSheet(Edit), nullptr) << "the file hides it";
    EXPECT_EQ(Native::StoredSheet(Lamp), Load(Lamp)->sheet);
    EXPECT_EQ(Load(Edit, 18, 36)->width, 18);
    EXPECT_EQ(Load(Edit, -1, -1, 1)->width, 36 + 8);
    // What was loaded stays whole when the file changes; the next time it is read again.
    Tests::WriteText(folder / Utils::ToUtf8(Edit), StoredBytes(u"Hint##Sz-1x-1pxSb0.png"));
    EXPECT_EQ(bitmap->sheet->Cells(18, 18)->bytes, Pixels::Resampled(Stored(Lamp), {2, 1, 2}, 18, 18).bytes);
    EXPECT_EQ(Load(Edit)->width, 25);
    std::filesystem::remove(folder / Utils::ToUtf8(Edit));
    EXPECT_EQ(Load(Edit)->sheet, stored);
}

TEST_F(NativePictures, ReadFilesByAnyPath) {
    const auto file = Tests::ScratchFolder() / "über((2)).png";
    Tests::WriteText(file, StoredBytes(Lamp));
    const auto bitmap = Load(Utils::ToUtf16(file.string()));
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->height, 72);
    EXPECT_EQ(bitmap->sheet->Grid(), (Pixels::SImageGrid{2, 1, 2}));
}

TEST_F(NativePictures, TakeNoFolderForAFile) {
    const auto folder = Tests::ScratchFolder() / "folders";
    std::filesystem::create_directories(folder / Utils::ToUtf8(Edit));
    std::filesystem::current_path(folder);
    EXPECT_EQ(Load(Edit)->width, 100);
    EXPECT_NE(Native::StoredSheet(Edit), nullptr);
}

TEST_F(NativePictures, ReportAFileThatIsNoPicture) {
    const auto folder = Tests::ScratchFolder() / "damaged";
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    for (const std::string& content :
        {std::string("no picture"), std::string(), StoredBytes(Lamp).substr(0, 20)}) {
        Tests::WriteText(folder / Utils::ToUtf8(Edit), content);
        EXPECT_EQ(Message(Edit), Undecodable(Edit, u"0x0"));
        EXPECT_EQ(Message(Edit, 10, 10), Undecodable(Edit, u"0x0"));
        EXPECT_EQ(Message(Edit, -1, -1, 2), Undecodable(Edit, u"0x0")) << "it isn't missing";
    }
}

TEST_F(NativePictures, ReportADamagedPictureWhenItsPixelsAreNeeded) {
    const auto folder = Tests::ScratchFolder() / "cut";
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    Tests::WriteText(folder / "cut.png", StoredBytes(Lamp).substr(0, 400));
    EXPECT_EQ(Message(u"cut.png", 10, 10), Undecodable(u"cut.png", u"36x72"));
    EXPECT_EQ(Message(u"cut.png", -1, -1, 1), Undecodable(u"cut.png", u"36x72"));
    const auto bitmap = Load(u"cut.png");
    ASSERT_NE(bitmap, nullptr);
    EXPECT_THROW(bitmap->sheet->Cells(5, 5), Exceptions::GDIPImage);
    EXPECT_THROW(bitmap->sheet->Decoded(), Exceptions::GDIPImage);
}

TEST_F(NativePictures, TakeAGridThatThePictureIsTooSmallForAsNone) {
    const auto folder = Tests::ScratchFolder() / "small";
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    for (const auto* const name : {u"a((100)).png", u"b((2000000000)).png", u"c((100x50)).png"}) {
        Tests::WriteText(folder / Utils::ToUtf8(name), StoredBytes(Lamp));
        const auto bitmap = Load(name);
        EXPECT_EQ(bitmap->sheet->Grid(), Pixels::SImageGrid());
        EXPECT_EQ(bitmap->sheet->Cells(9, 18)->width, 9);
    }
}

TEST(NativePicturesWithoutAnEditor, KeepNoPixelsButFindPictures) {
    EmptyStore();
    Native::CNativePictures pictures;
    EXPECT_EQ(pictures.LoadImage(Edit, -1, -1, 0)->width, 100);
    EXPECT_FALSE(pictures.HasNewTexts());
    EXPECT_EQ(pictures.Measure({}), GUI::SPixelSize());
    const auto blank = pictures.Letter({}, 5, 4);
    EXPECT_EQ(blank.width, 5);
    EXPECT_EQ(blank.height, 4);
    pictures.LoadImage(Edit, -1, -1, 0)->sheet->Cells(9, 9);
    EXPECT_EQ(Pixels::CSheetStore::OfProcess().KeptBytes(), 0u);
    pictures.End();
}

TEST(NativePicturesWithoutAnEditor, CountAnEditorOnceHoweverOftenItBegins) {
    EmptyStore();
    auto& store = Pixels::CSheetStore::OfProcess();
    {
        Native::CNativePictures pictures;
        EXPECT_EQ(pictures.Begin(), u"");
        EXPECT_EQ(pictures.Begin(), u"");
        pictures.LoadImage(Edit, -1, -1, 0)->sheet->Cells(9, 9);
        pictures.HasNewTexts();
        EXPECT_EQ(store.KeptBytes(), std::size_t{4} * 9 * 18);
        pictures.End();
        EXPECT_EQ(store.KeptBytes(), 0u) << "that size had been given back before it closed";
        EXPECT_EQ(pictures.Begin(), u"");
    } // closes by its end
    Native::CNativePictures pictures;
    pictures.LoadImage(Edit, -1, -1, 0)->sheet->Cells(9, 9);
    EXPECT_EQ(store.KeptBytes(), 0u) << "no editor is open";
}
