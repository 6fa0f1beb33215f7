#include "pixels/stored_sheet.h"

#include "pixels/resample.h"
#include "tests/support/together.h"
#include "utils/exceptions.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace KAV;
using Pixels::CStoredSheet;
using Pixels::SBitmap;

namespace {

constexpr std::int32_t Width = 24;
constexpr std::int32_t Height = 16;

SBitmap Source() {
    SBitmap bitmap = Pixels::TransparentBitmap(Width, Height);
    bitmap.alpha = Pixels::EAlpha::Straight;
    std::uint8_t value = 7;
    for (auto& byte : bitmap.bytes) byte = value = static_cast<std::uint8_t>(value * 5 + 3);
    return bitmap;
}

/// A picture of 3 x 2 cells, and how often it was decoded.
struct SPicture {
    std::atomic<int> decoded{0};
    std::function<std::optional<SBitmap>()> instead;
    CStoredSheet sheet{{u"Some.png", Width, Height, {6, 3, 2}, [this]() -> std::optional<SBitmap> {
                            ++decoded;
                            return instead ? instead() : Source();
                        }}};
};

} // namespace

TEST(StoredSheet, KnowsItsSizeWithoutDecoding) {
    SPicture picture;
    EXPECT_EQ(picture.sheet.Width(), Width);
    EXPECT_EQ(picture.sheet.Height(), Height);
    EXPECT_EQ(picture.sheet.Grid(), (Pixels::SImageGrid{6, 3, 2}));
    EXPECT_EQ(picture.decoded, 0);
}

TEST(StoredSheet, ScalesEachCell) {
    SPicture picture;
    const auto cells = picture.sheet.Cells(4, 5);
    EXPECT_EQ(cells->bytes, Pixels::Resampled(Source(), {6, 3, 2}, 4, 5).bytes);
    EXPECT_EQ(cells->width, 12);
    EXPECT_EQ(cells->height, 10);
    EXPECT_EQ(picture.sheet.Cells(8, 8)->bytes, Pixels::Premultiplied(Source()).bytes);
    EXPECT_EQ(picture.sheet.Decoded().bytes, Source().bytes);
    EXPECT_EQ(picture.sheet.Decoded().alpha, Pixels::EAlpha::Straight);
}

TEST(StoredSheet, SharesAPictureAsLongAsSomebodyHoldsIt) {
    SPicture picture;
    auto first = picture.sheet.Cells(4, 4);
    auto second = picture.sheet.Cells(4, 4);
    EXPECT_EQ(first, second);
    EXPECT_EQ(picture.decoded, 1);
    const auto other = picture.sheet.Cells(4, 5);
    EXPECT_NE(other, first);
    EXPECT_EQ(picture.decoded, 2);
    first.reset();
    EXPECT_EQ(picture.sheet.Cells(4, 4), second);
    EXPECT_EQ(picture.decoded, 2);
    const std::weak_ptr<const SBitmap> released = second;
    second.reset();
    EXPECT_TRUE(released.expired());
    EXPECT_EQ(picture.sheet.Cells(4, 4)->width, 12);
    EXPECT_EQ(picture.decoded, 3);
    EXPECT_EQ(picture.sheet.Cells(4, 5), other);
    EXPECT_EQ(picture.decoded, 3);
}

TEST(StoredSheet, MakesOnePictureForAllThatAskAtOnce) {
    SPicture picture;
    std::atomic<int> asking{0};
    picture.instead = [&] {
        while (asking < 3) std::this_thread::yield(); // all of them are on their way
        return std::optional(Source());
    };
    std::vector<std::shared_ptr<const SBitmap>> got(3);
    std::vector<std::thread> threads;
    for (auto& place : got) {
        threads.emplace_back([&] {
            ++asking;
            place = picture.sheet.Cells(4, 4);
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(picture.decoded, 1);
    EXPECT_EQ(got[0], got[1]);
    EXPECT_EQ(got[0], got[2]);
    EXPECT_EQ(got[0]->bytes, Pixels::Resampled(Source(), {6, 3, 2}, 4, 4).bytes);
}

TEST(StoredSheet, DecodesForTwoSizesAtTheSameTime) {
    // Each decoding waits for the other one: with a lock held meanwhile this would never end.
    SPicture picture;
    picture.instead = [&] {
        while (picture.decoded < 2) std::this_thread::yield();
        return std::optional(Source());
    };
    std::thread other([&] { EXPECT_EQ(picture.sheet.Cells(4, 4)->width, 12); });
    EXPECT_EQ(picture.sheet.Cells(5, 4)->width, 15);
    other.join();
}

TEST(StoredSheet, ReportsADamagedPictureByItsNameAndSize) {
    SPicture picture;
    picture.instead = [] { return std::optional<SBitmap>(); };
    const std::u16string message =
        u" GDI+ ERROR:\r\n\r\nFunction: Gdiplus::Bitmap() error = 2\r\nImage: \"Some.png\" (24x16px)\r\n\r\n"
        u"Can't load image.";
    for (int i = 0; i < 2; ++i) {
        try {
            picture.sheet.Cells(4, 4);
            ADD_FAILURE() << "no exception";
        } catch (const Exceptions::GDIPImage& error) {
            EXPECT_EQ(error.message, message);
        }
        EXPECT_THROW(picture.sheet.Decoded(), Exceptions::GDIPImage);
    }
    picture.instead = nullptr;
    EXPECT_EQ(picture.sheet.Cells(4, 4)->width, 12);
}

TEST(StoredSheet, LetsWaitersTryThemselvesAfterAFailure) {
    SPicture picture;
    std::atomic<int> asking{0};
    picture.instead = [&]() -> std::optional<SBitmap> {
        while (asking < 2) std::this_thread::yield();
        if (picture.decoded == 1) throw std::bad_alloc();
        return Source();
    };
    std::atomic<int> failed{0};
    std::atomic<int> got{0};
    const auto ask = [&] {
        ++asking;
        try {
            got += picture.sheet.Cells(4, 4)->width == 12 ? 1 : 0;
        } catch (const std::bad_alloc&) {
            ++failed;
        }
    };
    std::thread other(ask);
    ask();
    other.join();
    EXPECT_EQ(failed, 1);
    EXPECT_EQ(got, 1);
}

TEST(StoredSheet, WorksWithManyThreadsAndSizes) {
    SPicture picture;
    const auto three = Pixels::Resampled(Source(), {6, 3, 2}, 3, 3);
    Tests::CTogether together;
    for (int t = 0; t < 4; ++t) {
        together.Add([&, t](int round) {
            const std::int32_t side = 3 + (round + t) % 4;
            const auto cells = picture.sheet.Cells(side, side);
            ASSERT_EQ(cells->width, 3 * side);
            EXPECT_TRUE(side != 3 || cells->bytes == three.bytes);
        });
    }
    together.Run();
}
