#include "native/native_pictures.h"

#include "panel/sprites.h"
#include "pixels/image_name.h"
#include "pixels/sheet.h"
#include "tests/native/pictures_fixture.h"
#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::Tests;
using Native::SPictureWish;

namespace {

class PreparedPictures : public CPicturesFixture {};

/// Every picture as an editor of that width shows it.
std::vector<SPictureWish> Wishes(double width) {
    std::vector<SPictureWish> wishes;
    for (const auto& sprite : Panel::Sprites) {
        wishes.push_back({Utils::ToUtf16(std::string(sprite.image)),
            static_cast<std::int32_t>(sprite.panelWidth * width / 754.0 + 0.5),
            static_cast<std::int32_t>(sprite.panelHeight * width / 754.0 + 0.5)});
    }
    return wishes;
}

std::size_t Bytes(const std::vector<SPictureWish>& wishes) {
    std::size_t bytes = 0;
    for (const auto& wish : wishes) {
        const auto grid = Pixels::GridOf(wish.name);
        bytes +=
            std::size_t{4} * static_cast<std::size_t>(wish.width * wish.height * grid.columns * grid.rows);
    }
    return bytes;
}

} // namespace

TEST_F(PreparedPictures, HaveTheSizesThatDrawingAsksFor) {
    const auto wishes = Wishes(754);
    pictures.Prepare(wishes);
    auto& store = Pixels::CSheetStore::OfProcess();
    EXPECT_EQ(store.KeptBytes(), Bytes(wishes));
    for (const auto& wish : wishes) {
        const auto cells = Load(wish.name)->sheet->Cells(wish.width, wish.height);
        EXPECT_GT(cells.use_count(), 1) << Utils::ToUtf8(wish.name) << " was made before";
    }
    EXPECT_EQ(store.KeptBytes(), Bytes(wishes)) << "and no other";
}

TEST_F(PreparedPictures, StayAtTheLastSizeWithinTwelveMegabytes) {
    auto& store = Pixels::CSheetStore::OfProcess();
    pictures.Prepare(Wishes(754));
    pictures.End();
    EXPECT_EQ(store.KeptBytes(), Bytes(Wishes(754))) << "the whole panel at its own width";
    EXPECT_LE(store.KeptBytes(), 12'000'000u);
    ASSERT_EQ(pictures.Begin(), u"");
    pictures.Prepare(Wishes(1100));
    EXPECT_EQ(store.KeptBytes(), Bytes(Wishes(754)) + Bytes(Wishes(1100)));
    for (int i = 0; i <= Pixels::CSheetStore::RestTicks; ++i) pictures.HasNewTexts();
    EXPECT_EQ(store.KeptBytes(), 0u) << "nobody draws either size";
    pictures.Prepare(Wishes(1100));
    pictures.End();
    EXPECT_LE(store.KeptBytes(), 12'000'000u);
    EXPECT_GT(store.KeptBytes(), 1'000'000u);
}

TEST_F(PreparedPictures, LeaveFailuresToTheDraw) {
    const auto folder = Tests::ScratchFolder() / "prepare";
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    Tests::WriteText(folder / "cut.png", StoredBytes(Lamp).substr(0, 400));
    const std::vector<SPictureWish> wishes{{u"Nothing.png", 5, 5}, {u"cut.png", 5, 5}, {Edit, 0, 5},
        {Edit, 5, -1}, {Edit, 1 << 30, 5}, {u"", 5, 5}, {Lamp, 17, 17}};
    pictures.Prepare(wishes);
    EXPECT_GT(Load(Lamp)->sheet->Cells(17, 17).use_count(), 1) << "the others are made";
    pictures.Prepare({});
}
