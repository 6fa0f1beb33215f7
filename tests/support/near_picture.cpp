// Comparing with the committed pictures where the system scales and letters in its own way: they need not be
// equal, only near.

#include "pixels/png_reader.h"
#include "tests/support/file_text.h"
#include "tests/support/golden_picture.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>
#include <stdexcept>

namespace KAV::Tests {

namespace {

namespace fs = std::filesystem;

constexpr int Off = 32; // of 255, in any channel

/// The states of the panel that differ from it at rest by little more than a text.
const std::set<std::string> TextsAlone{
    "panel/hint_fader", "panel/hint_toolbar", "panel/hint_at_the_edge", "panel/names", "panel/patch_name"};

const std::uint8_t* At(const Pixels::SBitmap& picture, std::int32_t x, std::int32_t y) {
    return picture.bytes.data() + static_cast<std::size_t>(picture.stride) * static_cast<std::size_t>(y) +
           static_cast<std::size_t>(4 * x);
}

/// A channel's mean difference, and the share of pixels that are off.
struct SNearness {
    double mean = 0.0;
    double off = 0.0;
};
constexpr SNearness WholePicture{1.3, 0.008}; // with its texts; twice what is measured

/// Of the pixels for which `counts` holds.
template<typename TCounts>
SNearness NearnessOf(const Pixels::SBitmap& a, const Pixels::SBitmap& b, const TCounts& counts) {
    double sum = 0.0;
    double off = 0.0;
    double pixels = 0.0;
    for (std::int32_t y = 0; y < a.height; ++y) {
        for (std::int32_t x = 0; x < a.width; ++x) {
            if (!counts(x, y)) continue;
            int most = 0;
            for (int n = 0; n < 3; ++n) {
                const int difference = std::abs(At(a, x, y)[n] - At(b, x, y)[n]);
                sum += difference;
                most = std::max(most, difference);
            }
            off += most > Off ? 1.0 : 0.0;
            pixels += 1.0;
        }
    }
    if (pixels == 0.0) return {};
    return {sum / (3.0 * pixels), off / pixels};
}

testing::AssertionResult IsNear(const SNearness& measured, const SNearness& most, const std::string& what) {
    if (measured.mean <= most.mean && measured.off <= most.off) return testing::AssertionSuccess();
    return testing::AssertionFailure() << what << ": mean " << measured.mean << " of " << most.mean
                                       << ", off " << measured.off << " of " << most.off;
}

/// On the display of the gain reduction in a panel of that width.
bool IsOnDisplay(std::int32_t x, std::int32_t y, std::int32_t width) {
    const auto scaled = [width](std::int32_t at) { return at * width / 754; };
    return x >= scaled(328) && x < scaled(427) && y >= scaled(156) && y < scaled(371);
}

bool SameSize(const Pixels::SBitmap& a, const Pixels::SBitmap& b) {
    return a.width == b.width && a.height == b.height;
}

} // namespace

testing::AssertionResult IsTheCommittedPicture(const Pixels::SBitmap& picture, const std::string& name) {
    const auto committed = CommittedPicture(name);
    if (!SameSize(picture, committed)) return testing::AssertionFailure() << name << " has another size";
    const auto all = [](std::int32_t, std::int32_t) { return true; };
    return IsNear(NearnessOf(picture, committed, all), WholePicture, name);
}

testing::AssertionResult DiffersAsCommitted(
    const Pixels::SBitmap& picture, const Pixels::SBitmap& rest, const std::string& name) {
    const auto difference = CommittedPicture(name);
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::istringstream(CommittedPlace(name)) >> left >> top;
    const auto committedRest = CommittedPicture("panel/rest_" + std::to_string(picture.width));
    if (!SameSize(picture, rest) || !SameSize(picture, committedRest))
        return testing::AssertionFailure() << name << " has another size";
    auto expected = committedRest;
    const auto isCommitted = [&](std::int32_t x, std::int32_t y) {
        return x >= left && y >= top && x < left + difference.width && y < top + difference.height &&
               At(difference, x - left, y - top)[3] != 0;
    };
    for (std::int32_t y = 0; y < expected.height; ++y) {
        for (std::int32_t x = 0; x < expected.width; ++x) {
            if (isCommitted(x, y))
                std::copy_n(At(difference, x - left, y - top), 4,
                    expected.bytes.data() + (At(expected, x, y) - expected.bytes.data()));
        }
    }
    const auto isElsewhere = [&](std::int32_t x, std::int32_t y) { return !isCommitted(x, y); };
    // Where the committed picture has changed, this one must have, too, and has come near it: least where
    // only a text has changed, which is in another typeface.
    const auto changed = NearnessOf(picture, expected, isCommitted);
    const auto before = NearnessOf(rest, expected, isCommitted);
    const bool isText = TextsAlone.contains(name);
    const double nearer = isText ? 1.0 : 0.6;
    if (changed.mean > nearer * before.mean)
        return testing::AssertionFailure() << name << ": the change is " << changed.mean
                                           << " from the committed one, and was " << before.mean << " before";
    const auto elsewhere = IsNear(NearnessOf(picture, rest, isElsewhere), {0.1, 0.001}, name + ", elsewhere");
    if (!elsewhere) return elsewhere;
    // A curve is filled by lines, which have one colour each here, and run from one to another elsewhere.
    const bool hasCurve = name.starts_with("panel/busy_");
    const auto isCompared = [&](std::int32_t x, std::int32_t y) {
        return !hasCurve || !IsOnDisplay(x, y, picture.width);
    };
    return IsNear(NearnessOf(picture, expected, isCompared), WholePicture, name);
}

Pixels::SBitmap CommittedPicture(const std::string& name) {
    const auto text = ReadText(fs::path(KAV_PICTURES) / (name + ".png"));
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    auto picture = Pixels::ReadPng(bytes);
    if (!picture) throw std::runtime_error(name + " can't be read");
    return *std::move(picture);
}

std::string CommittedPlace(const std::string& name) {
    return ReadText(fs::path(KAV_PICTURES) / (name + ".place"));
}

} // namespace KAV::Tests
