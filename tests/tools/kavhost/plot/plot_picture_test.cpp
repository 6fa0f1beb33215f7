#include "tests/tools/kavhost/child.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/plot/plot.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <png.h>
#include <sstream>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

struct SPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;

    std::array<int, 3> At(int x, int y) const {
        const auto* pixel = rgb.data() + 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                                 static_cast<std::size_t>(x));
        return {pixel[0], pixel[1], pixel[2]};
    }
};

/// An empty picture if the bytes aren't a PNG file.
SPicture Decode(const std::string& bytes) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0) return {};
    image.format = PNG_FORMAT_RGB;
    SPicture picture{static_cast<int>(image.width), static_cast<int>(image.height), {}};
    picture.rgb.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, picture.rgb.data(), 0, nullptr) == 0) return {};
    return picture;
}

SPicture Draw(const SPlot& plot) {
    std::ostringstream png;
    DrawPlot(plot, png);
    return Decode(png.str());
}

/// Columns from `left` to `right` that have such a pixel below the head.
int ColumnsWith(const SPicture& picture, int left, int right, bool (*isWanted)(const std::array<int, 3>&)) {
    int columns = 0;
    for (int x = left; x < right; ++x) {
        for (int y = 130; y < picture.height; ++y) {
            if (!isWanted(picture.At(x, y))) continue;
            ++columns;
            break;
        }
    }
    return columns;
}

bool IsBlue(const std::array<int, 3>& pixel) {
    return pixel[2] > pixel[0] + 100;
}
bool IsOrange(const std::array<int, 3>& pixel) {
    return pixel[0] > pixel[2] + 150;
}

/// A hundred seconds without any sound.
SPlot Still() {
    SPlot plot;
    plot.title = "title";
    plot.seconds = 100;
    const std::vector<SSpan> nothing(100, SSpan{0, 0});
    plot.before.amplitude = plot.after.amplitude = {1, nothing};
    return plot;
}

constexpr int Left = 104; // of the diagrams
constexpr int Middle = (104 + 1564) / 2;
constexpr int Right = 1564;
const std::vector<std::string> InputAlone{"in.wav"};

} // namespace

TEST(PlotPicture, HasTheSizeAndIsLight) {
    const auto picture = Draw(Still());
    EXPECT_EQ(picture.width, 1600);
    EXPECT_EQ(picture.height, 1000);
    EXPECT_EQ(picture.At(2, 2), (std::array{255, 255, 255}));
    EXPECT_EQ(picture.At(1598, 998), (std::array{255, 255, 255}));
}

TEST(PlotPicture, ShowsTheBinsWhereTheyLie) {
    auto still = Still();
    for (auto& bin : still.before.amplitude.bins) bin = SSpan{};
    for (auto& bin : still.after.amplitude.bins) bin = SSpan{};
    auto plot = still;
    for (std::size_t i = 0; i < 50; ++i) plot.before.amplitude.bins[i] = {-0.5, 0.5};
    for (std::size_t i = 50; i < 100; ++i) plot.after.amplitude.bins[i] = {-0.5, 0.5};
    // The legend and its text are the same in both.
    const auto empty = Draw(still), full = Draw(plot);
    const auto more = [&](int left, int right, bool (*isWanted)(const std::array<int, 3>&)) {
        return ColumnsWith(full, left, right, isWanted) - ColumnsWith(empty, left, right, isWanted);
    };
    EXPECT_NEAR(more(Left, Middle, IsBlue), Middle - Left, 3);
    EXPECT_EQ(ColumnsWith(full, Left, Middle - 3, IsOrange), ColumnsWith(empty, Left, Middle - 3, IsOrange));
    EXPECT_NEAR(ColumnsWith(full, Middle, Right, IsOrange), Right - Middle, 3);
    EXPECT_LE(more(Middle + 3, Right, IsBlue), 0);
}

TEST(PlotPicture, ShowsGainReductionDownwardsFromItsTop) {
    auto plot = Still();
    plot.reduction = {1, std::vector<SSpan>(100, SSpan{-3, -3})};
    const auto picture = Draw(plot), still = Draw(Still());
    // The last diagram ends 52 pixels above the lower edge; down to -6 dB half of it is filled.
    int filled = 0, rows = 0;
    for (int y = 750; y < 1000; ++y) {
        const auto pixel = picture.At(Middle + 7, y);
        const bool isFilled = pixel[0] < 150 && pixel != still.At(Middle + 7, y);
        if (isFilled) ++filled;
        if (isFilled || filled > 0) ++rows;
    }
    const int panel = 170; // about a quarter of the picture without its head and names
    EXPECT_NEAR(filled, panel / 2, 12);
    EXPECT_GT(rows, filled + panel / 2 - 12);
}

TEST(PlotPicture, TakesWhatNoScaleHolds) {
    auto plot = Still();
    plot.title = std::string("no \xFF UTF-8\n\tand \x01 more ") + std::string(1000, 'x');
    plot.settings = std::string(5000, 'y');
    plot.measures = std::string(5000, 'z');
    plot.before.amplitude.bins[3] = {-3e38, 3e38};
    plot.before.peak = {1, {{770, 770}, {-HUGE_VAL, -HUGE_VAL}, SSpan{}, {-3, -3}}};
    plot.after.shortTerm = {0.1, {SSpan{}, {-HUGE_VAL, -HUGE_VAL}, {HUGE_VAL, HUGE_VAL}}};
    plot.reduction = {0.01, {{-HUGE_VAL, HUGE_VAL}, SSpan{}, {-700, 700}}};
    EXPECT_EQ(Draw(plot).width, 1600);
    plot.seconds = 0;
    EXPECT_EQ(Draw(plot).width, 1600);
    plot.seconds = 1e7;
    EXPECT_EQ(Draw(plot).width, 1600);
    EXPECT_EQ(Draw(SPlot{}).width, 1600);
}

TEST(PlotPicture, IsTheSameEachTime) {
    std::ostringstream a, b;
    DrawPlot(Still(), a);
    DrawPlot(Still(), b);
    EXPECT_EQ(a.str(), b.str());
}

TEST(PlotPicture, LeavesNothingWhenTheDiskIsFull) {
    const auto folder = NewFolder();
    WriteWav(folder / "in.wav", Noise(2, 1000, 0.5f));
    const auto run = CChild({"render", "-p", EffectFile("fader"), folder / "in.wav", "-o", folder / "out.wav",
                                "--plot", folder / "p.png"},
        {.mostFileBytes = 20000}) // the audio has less, the picture more
                         .Wait();
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("p.png: cannot be written: File too large\n"), std::string::npos) << run.errors;
    EXPECT_EQ(FilesIn(folder), InputAlone);
}
