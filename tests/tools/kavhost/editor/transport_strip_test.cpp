#include "tools/kavhost/editor/transport_strip.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

using namespace KAV::Host;

namespace {

const auto Layout = LayOutStrip(754, 28);

SPicture PictureOf(bool plays, bool loops, double seconds) {
    return CStripPainter().Draw(Layout, StripViewOf(Layout, plays, loops, seconds, 100));
}

} // namespace

TEST(TransportStrip, HasItsPartsOneAfterAnother) {
    for (const std::int32_t width : {500, 754, 1508, 4000}) {
        const auto layout = LayOutStrip(width, StripHeightFor(width));
        EXPECT_LT(0, layout.buttonEnd);
        EXPECT_LE(layout.buttonEnd, layout.barBegin);
        EXPECT_LT(layout.barBegin + width / 3, layout.barEnd);
        EXPECT_LT(layout.barEnd, layout.timeEnd);
        EXPECT_LT(layout.timeEnd, width);
    }
}

TEST(TransportStrip, IsAsHighAsItsEditorIsWide) {
    EXPECT_EQ(StripHeightFor(754), 28);
    EXPECT_EQ(StripHeightFor(1508), 56);
    EXPECT_GE(StripHeightFor(10), 20);
}

TEST(TransportStrip, IsNeverBroken) {
    for (std::int32_t width = 0; width < 200; ++width) {
        const auto layout = LayOutStrip(width, 28);
        EXPECT_LE(layout.barEnd, width);
        EXPECT_GE(FractionAt(layout, 50), 0);
        EXPECT_LE(FractionAt(layout, 50), 1);
        CStripPainter().Draw(layout, StripViewOf(layout, true, true, 3, 4));
    }
}

TEST(TransportStrip, FindsWhatIsPressed) {
    EXPECT_EQ(PartAt(Layout, 5, 5), EStripPart::PlayButton);
    EXPECT_EQ(PartAt(Layout, Layout.barBegin, 27), EStripPart::Bar);
    EXPECT_EQ(PartAt(Layout, Layout.barEnd, 0), EStripPart::Bar);      // the very end of the file
    EXPECT_EQ(PartAt(Layout, Layout.barEnd + 1, 5), EStripPart::None); // the time
    EXPECT_EQ(PartAt(Layout, Layout.timeEnd, 5), EStripPart::LoopMark);
    EXPECT_EQ(PartAt(Layout, 300, -1), EStripPart::None);
    EXPECT_EQ(PartAt(Layout, 300, 28), EStripPart::None);
}

TEST(TransportStrip, TurnsThePlaceOnTheBarIntoAPartOfTheFileAndBack) {
    EXPECT_EQ(FractionAt(Layout, Layout.barBegin), 0);
    EXPECT_EQ(FractionAt(Layout, Layout.barEnd), 1);
    EXPECT_EQ(FractionAt(Layout, Layout.barBegin - 50), 0); // dragged beyond its ends
    EXPECT_EQ(FractionAt(Layout, 753), 1);
    for (std::int32_t x = Layout.barBegin; x <= Layout.barEnd; ++x) {
        const auto view = StripViewOf(Layout, true, false, FractionAt(Layout, x) * 200, 200);
        EXPECT_EQ(view.barPixels, x - Layout.barBegin);
    }
}

TEST(TransportStrip, ShowsTheTimeOfTheWhole) {
    EXPECT_EQ(StripViewOf(Layout, true, false, 12.9, 225).time, "0:12 / 3:45");
    EXPECT_EQ(StripViewOf(Layout, true, false, 0, 0).barPixels, 0); // an empty file
}

TEST(TransportStrip, LooksDifferentWheneverItShowsSomethingElse) {
    std::set<std::vector<std::uint32_t>> pictures;
    for (const bool plays : {false, true}) {
        for (const bool loops : {false, true}) {
            for (const double seconds : {0.0, 0.9, 50.0, 100.0})
                pictures.insert(PictureOf(plays, loops, seconds).pixels);
        }
    }
    EXPECT_EQ(pictures.size(), 16u);
    EXPECT_EQ(PictureOf(true, true, 12), PictureOf(true, true, 12));
}

TEST(TransportStrip, LightsTheBarAsFarAsTheFileHasPlayed) {
    const auto row = static_cast<std::size_t>(Layout.height / 2 * Layout.width);
    const auto picture = PictureOf(true, false, 25);
    const auto quarter = (Layout.barBegin * 3 + Layout.barEnd) / 4;
    const auto colourAt = [&](std::int32_t x) { return picture.pixels[row + static_cast<std::size_t>(x)]; };
    EXPECT_EQ(colourAt(Layout.barBegin + 2), colourAt(quarter - 4));
    EXPECT_EQ(colourAt(quarter + 4), colourAt(Layout.barEnd - 2));
    EXPECT_NE(colourAt(quarter - 4), colourAt(quarter + 4));
}

TEST(TransportStrip, WritesTheTimeBetweenTheBarAndTheLoopMark) {
    CStripPainter painter;
    const auto without = painter.Draw(Layout, {false, false, 0, ""});
    const auto with = painter.Draw(Layout, {false, false, 0, "0:12 / 3:45"});
    std::int32_t first = Layout.width;
    std::int32_t last = 0;
    std::uint32_t lightest = 0;
    for (std::int32_t i = 0; i < Layout.width * Layout.height; ++i) {
        const auto pixel = with.pixels[static_cast<std::size_t>(i)];
        if (pixel == without.pixels[static_cast<std::size_t>(i)]) continue;
        first = std::min(first, i % Layout.width);
        last = std::max(last, i % Layout.width);
        lightest = std::max(lightest, pixel & 0xFF);
    }
    EXPECT_GT(first, Layout.barEnd);
    EXPECT_LT(last, Layout.timeEnd);
    EXPECT_NEAR(first - Layout.barEnd, Layout.timeEnd - last, 4); // in the middle
    EXPECT_GT(last - first, 30);
    EXPECT_GT(lightest, 0xC0u); // on a dark ground
}

TEST(TransportStrip, KeepsItsShapesWhateverItsSize) {
    for (const std::int32_t width : {500, 754, 1508}) {
        const auto layout = LayOutStrip(width, StripHeightFor(width));
        const auto picture = CStripPainter().Draw(layout, {false, false, 0, ""});
        const auto at = [&](std::int32_t x, std::int32_t y) {
            return picture.pixels[static_cast<std::size_t>(y * width + x)];
        };
        const auto ground = at(0, 0);
        const auto middle = layout.height / 2;
        EXPECT_NE(at(layout.buttonEnd / 2, middle), ground); // in the triangle
        EXPECT_EQ(at(layout.buttonEnd / 2, 1), ground);
        const auto mark = (layout.timeEnd + layout.width) / 2;
        EXPECT_EQ(at(mark, middle), ground); // within the ring
        EXPECT_NE(at(mark + layout.height / 5, middle + 1), ground);
        EXPECT_NE(at(mark - layout.height / 5, middle), ground);
    }
}
