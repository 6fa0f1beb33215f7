#include "tests/support/golden_picture.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <png.h>
#include <stdexcept>
#include <string_view>

namespace KAV::Tests {

namespace {

namespace fs = std::filesystem;

const std::uint8_t* At(const Pixels::SBitmap& picture, std::int32_t x, std::int32_t y) {
    return picture.bytes.data() + static_cast<std::size_t>(picture.stride) * static_cast<std::size_t>(y) +
           static_cast<std::size_t>(4 * x);
}

int Distance(const Pixels::SBitmap& a, const Pixels::SBitmap& b, std::int32_t x, std::int32_t y) {
    int largest = 0;
    for (int n = 0; n < 4; ++n) largest = std::max(largest, std::abs(At(a, x, y)[n] - At(b, x, y)[n]));
    return largest;
}

std::string Size(const Pixels::SBitmap& picture) {
    return std::to_string(picture.width) + " x " + std::to_string(picture.height);
}

bool Renews() {
    const char* const renews = std::getenv("KAV_RENEW_PICTURES");
    return renews != nullptr && std::string_view(renews) == "1";
}

} // namespace

testing::AssertionResult AreTheSame(const Pixels::SBitmap& actual, const Pixels::SBitmap& expected) {
    if (actual.width != expected.width || actual.height != expected.height)
        return testing::AssertionFailure() << Size(actual) << " instead of " << Size(expected);
    int count = 0;
    int largest = 0;
    std::string first;
    for (std::int32_t y = 0; y < actual.height; ++y) {
        for (std::int32_t x = 0; x < actual.width; ++x) {
            const int distance = Distance(actual, expected, x, y);
            if (distance == 0) continue;
            if (++count == 1) first = std::to_string(x) + ", " + std::to_string(y);
            largest = std::max(largest, distance);
        }
    }
    if (count == 0) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << count << " pixels differ, by " << largest << " at most, the first at " << first;
}

Pixels::SBitmap DifferenceOf(const Pixels::SBitmap& actual, const Pixels::SBitmap& expected) {
    auto difference = Pixels::TransparentBitmap(actual.width, actual.height);
    for (std::int32_t y = 0; y < actual.height; ++y) {
        for (std::int32_t x = 0; x < actual.width; ++x) {
            const int distance = Distance(actual, expected, x, y);
            const auto red = static_cast<std::uint8_t>(distance == 0 ? 255 : 255 - distance / 2);
            const auto other = static_cast<std::uint8_t>(distance == 0 ? 255 : 0);
            const std::array<std::uint8_t, 4> pixel{other, other, red, 255};
            std::copy(pixel.begin(), pixel.end(),
                difference.bytes.begin() + (static_cast<std::ptrdiff_t>(y) * difference.stride + 4 * x));
        }
    }
    return difference;
}

Pixels::SBitmap ReadPng(const fs::path& file) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, file.c_str()) == 0)
        throw std::runtime_error("no " + file.string());
    image.format = PNG_FORMAT_BGRA;
    auto picture = Pixels::TransparentBitmap(
        static_cast<std::int32_t>(image.width), static_cast<std::int32_t>(image.height));
    picture.alpha = Pixels::EAlpha::Straight;
    if (png_image_finish_read(&image, nullptr, picture.bytes.data(), picture.stride, nullptr) == 0)
        throw std::runtime_error("can't read " + file.string() + ": " + image.message);
    return picture;
}

void WritePng(const Pixels::SBitmap& picture, const fs::path& file) {
    fs::create_directories(file.parent_path());
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_BGRA;
    if (png_image_write_to_file(&image, file.c_str(), 0, picture.bytes.data(), picture.stride, nullptr) == 0)
        throw std::runtime_error("can't write " + file.string() + ": " + image.message);
}

testing::AssertionResult IsTheCommittedPicture(const Pixels::SBitmap& picture, const std::string& name) {
    const auto committed = fs::path(KAV_PICTURES) / (name + ".png");
    if (Renews()) {
        WritePng(picture, committed);
        return testing::AssertionFailure() << "renewed: look at " << committed.string();
    }
    const auto folder = fs::path(KAV_DIFFERENT_PICTURES);
    const auto actual = folder / (name + ".png");
    if (!fs::exists(committed)) {
        WritePng(picture, actual);
        return testing::AssertionFailure()
               << "nothing is committed as " << name << "; it is " << actual.string();
    }
    const auto expected = ReadPng(committed);
    auto result = AreTheSame(picture, expected);
    if (result) return result;
    WritePng(picture, actual);
    result << "; it is " << actual.string();
    if (picture.width == expected.width && picture.height == expected.height)
        WritePng(DifferenceOf(picture, expected), folder / (name + ".difference.png"));
    return result;
}

} // namespace KAV::Tests
