#include "tests/support/golden_picture.h"

#include <cstdlib>
#include <filesystem>
#include <numeric>

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// 5 x 3 pixels, each byte another.
Pixels::SBitmap Ramp() {
    auto picture = Pixels::TransparentBitmap(5, 3);
    std::iota(picture.bytes.begin(), picture.bytes.end(), std::uint8_t{3});
    return picture;
}

} // namespace

TEST(GoldenPicture, KeepsEveryByteInItsFile) {
    const auto file = std::filesystem::temp_directory_path() / "golden" / "ramp.png";
    WritePng(Ramp(), file);
    EXPECT_TRUE(AreTheSame(ReadPng(file), Ramp()));
    EXPECT_EQ(ReadPng(file).bytes, Ramp().bytes);
    std::filesystem::remove_all(file.parent_path());
}

TEST(GoldenPicture, DiffersInAnyByteByOne) {
    for (std::size_t n = 0; n < Ramp().bytes.size(); ++n) {
        auto other = Ramp();
        ++other.bytes[n];
        EXPECT_FALSE(AreTheSame(other, Ramp())) << n;
    }
}

TEST(GoldenPicture, DiffersInSize) {
    EXPECT_FALSE(AreTheSame(Pixels::TransparentBitmap(5, 2), Pixels::TransparentBitmap(5, 3)));
    EXPECT_FALSE(AreTheSame(Pixels::TransparentBitmap(4, 3), Pixels::TransparentBitmap(5, 3)));
}

TEST(GoldenPicture, TakesRowsWithGaps) {
    Pixels::SBitmap gaps{5, 3, 24, Pixels::EAlpha::Premultiplied, Pixels::PixelBytes(72, 99)};
    const auto ramp = Ramp();
    for (std::size_t y = 0; y < 3; ++y)
        std::copy_n(ramp.bytes.begin() + static_cast<std::ptrdiff_t>(20 * y), 20,
            gaps.bytes.begin() + static_cast<std::ptrdiff_t>(24 * y));
    EXPECT_TRUE(AreTheSame(gaps, ramp));
}

TEST(GoldenPicture, MarksWhatDiffers) {
    auto other = Ramp();
    other.bytes[4 * 7 + 2] = 200;
    const auto difference = DifferenceOf(other, Ramp());
    for (std::size_t n = 0; n < 15; ++n) EXPECT_EQ(difference.bytes[4 * n] == 0, n == 7) << n;
}

TEST(GoldenPicture, IsMissedWhereNoneIsCommitted) {
    unsetenv("KAV_RENEW_PICTURES");
    EXPECT_FALSE(IsTheCommittedPicture(Ramp(), "none_of_this_name"));
}
