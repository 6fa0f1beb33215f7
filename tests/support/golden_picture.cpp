#include "tests/support/golden_picture.h"

#include "platform/picture_target.h"
#include "tests/support/file_text.h"

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

/// The smallest rectangle outside of which two pictures of one size are equal; empty if they are.
Platform::SArea RectangleOfDifferences(const Pixels::SBitmap& a, const Pixels::SBitmap& b) {
    std::int32_t left = a.width;
    std::int32_t top = a.height;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
    for (std::int32_t y = 0; y < a.height; ++y) {
        for (std::int32_t x = 0; x < a.width; ++x) {
            if (Distance(a, b, x, y) == 0) continue;
            left = std::min(left, x);
            top = std::min(top, y);
            right = std::max(right, x + 1);
            bottom = std::max(bottom, y + 1);
        }
    }
    if (right <= left) return {};
    return {left, top, right - left, bottom - top};
}

/// A part of a picture; transparent where it is as `rest`.
Pixels::SBitmap CutDifferent(
    const Pixels::SBitmap& picture, const Pixels::SBitmap& rest, const Platform::SArea& area) {
    auto part = Pixels::TransparentBitmap(area.width, area.height);
    for (std::int32_t y = 0; y < area.height; ++y) {
        for (std::int32_t x = 0; x < area.width; ++x) {
            if (Distance(picture, rest, area.left + x, area.top + y) == 0) continue;
            std::copy_n(At(picture, area.left + x, area.top + y), 4,
                part.bytes.begin() + static_cast<std::ptrdiff_t>(y) * part.stride + 4 * x);
        }
    }
    return part;
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

testing::AssertionResult DiffersAsCommitted(
    const Pixels::SBitmap& picture, const Pixels::SBitmap& rest, const std::string& name) {
    if (picture.width != rest.width || picture.height != rest.height)
        return testing::AssertionFailure() << Size(picture) << " instead of " << Size(rest);
    const auto area = RectangleOfDifferences(picture, rest);
    if (area.width == 0) return testing::AssertionFailure() << "there is no difference";
    auto result = IsTheCommittedPicture(CutDifferent(picture, rest, area), name);
    const auto place = std::to_string(area.left) + " " + std::to_string(area.top) + "\n";
    const auto committed = fs::path(KAV_PICTURES) / (name + ".place");
    if (Renews()) WriteText(committed, place);
    const auto expected = ReadText(committed);
    if (expected == place) return result;
    return testing::AssertionFailure() << "it is at " << place << " instead of " << expected;
}

namespace {

testing::AssertionResult IsAsCommitted(
    const Pixels::SBitmap& picture, const fs::path& committed, const std::string& name) {
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

} // namespace

testing::AssertionResult IsTheCommittedPicture(const Pixels::SBitmap& picture, const std::string& name) {
    return IsAsCommitted(picture, fs::path(KAV_PICTURES) / (name + ".png"), name);
}

testing::AssertionResult IsTheDocumentedPicture(const Pixels::SBitmap& picture, const std::string& name) {
    return IsAsCommitted(picture, fs::path(KAV_DOCUMENTED_PICTURES) / (name + ".png"), name);
}

Pixels::SBitmap CommittedPicture(const std::string& name) {
    return ReadPng(fs::path(KAV_PICTURES) / (name + ".png"));
}

std::string CommittedPlace(const std::string& name) {
    return ReadText(fs::path(KAV_PICTURES) / (name + ".place"));
}

std::vector<std::string> CommittedPictures(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(fs::path(KAV_PICTURES) / folder)) {
        if (entry.path().extension() == ".png") names.push_back(entry.path().stem().string());
    }
    return names;
}

} // namespace KAV::Tests
