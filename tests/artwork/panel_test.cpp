// What has to line up: indicators with the scales under them, meters with what is drawn over them, lettering
// with the parts that it is printed on. Everything is measured in the committed pictures.

#include "artwork/colour.h"
#include "artwork/labels.h"
#include "artwork/scales.h"
#include "tests/artwork/decoded.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <span>
#include <vector>

using namespace KAV::Artwork;

namespace {

constexpr double HalfPixel = 0.5; // of the panel

/// A band's picture, addressed by the panel's coordinates.
class CBand final {
public:
    explicit CBand(EBand band)
        : _rect(BandRect(band)), _sprite(SpriteOf(SpriteNameOf(band))), _pixels(ReadPng(FileOf(_sprite))) {}

    double ScaleX() const { return _sprite.width / _sprite.panelWidth; }
    double ScaleY() const { return _sprite.height / _sprite.panelHeight; }
    int ToX(double x) const { return static_cast<int>(std::floor((x - _rect.x) * ScaleX())); }
    int ToY(double y) const { return static_cast<int>(std::floor((y - _rect.y) * ScaleY())); }
    double FromY(double y) const { return _rect.y + y / ScaleY(); }

    double Brightness(int x, int y) const {
        const auto* p = _pixels.At(x, y);
        return 0.2126 * p[0] + 0.7152 * p[1] + 0.0722 * p[2];
    }
    /// Interpolated between the four pixels around a place on the panel.
    double BrightnessAt(double x, double y) const {
        const double u = (x - _rect.x) * ScaleX() - 0.5;
        const double v = (y - _rect.y) * ScaleY() - 0.5;
        const int u0 = static_cast<int>(std::floor(u));
        const int v0 = static_cast<int>(std::floor(v));
        const double s = u - u0;
        const double t = v - v0;
        return (Brightness(u0, v0) * (1 - s) + Brightness(u0 + 1, v0) * s) * (1 - t) +
               (Brightness(u0, v0 + 1) * (1 - s) + Brightness(u0 + 1, v0 + 1) * s) * t;
    }
    double LuminanceAt(int x, int y) const {
        const auto* p = _pixels.At(x, y);
        const auto channel = [p](int k) { return static_cast<float>(p[k]) / 255; };
        return Luminance({channel(0), channel(1), channel(2), 1});
    }
    int Width() const { return _pixels.width; }
    int Height() const { return _pixels.height; }

private:
    static std::string_view SpriteNameOf(EBand band) {
        constexpr std::string_view names[] = {"toolbar_up", "gui_front_root_panel_1500px", "toolbar_down3"};
        return names[static_cast<int>(band)];
    }

    SRect _rect;
    const SSprite& _sprite;
    SPixels _pixels;
};

/// The place of something bright: the mean of all places, weighted by how far they exceed the midpoint of the
/// darkest and the brightest.
double BrightPlace(const std::vector<std::pair<double, double>>& placesAndBrightness) {
    double low = 1e9;
    double high = -1e9;
    for (const auto& [place, brightness] : placesAndBrightness) {
        low = std::min(low, brightness);
        high = std::max(high, brightness);
    }
    double sum = 0;
    double weights = 0;
    for (const auto& [place, brightness] : placesAndBrightness) {
        const double weight = std::max(0.0, brightness - (low + high) / 2);
        sum += place * weight;
        weights += weight;
    }
    return sum / weights;
}

/// The painted line's height in a frame of the fader, in panel pixels from the frame's top: a bright line
/// across the cap, found without using its expected place.
double FaderIndicator(const SPixels& pixels, int frame) {
    const SSprite& sprite = SpriteOf("fader");
    const SCell cell = CellOf(pixels, sprite, frame);
    std::vector<std::pair<double, double>> rows;
    for (int v = 0; v < cell.height; ++v) {
        double sum = 0;
        const int from = static_cast<int>(FaderCentreX * 2) - 16;
        for (int u = from; u < from + 32; ++u) sum += cell.At(u, v)[3] == 255 ? BrightnessAt(cell, u, v) : 0;
        rows.emplace_back((v + 0.5) / 2, sum / 32);
    }
    // The line is far brighter than anything else on the cap.
    double brightest = 0;
    for (const auto& [place, brightness] : rows) brightest = std::max(brightest, brightness);
    std::erase_if(rows, [brightest](const auto& row) { return row.second < brightest * 0.75; });
    double sum = 0;
    for (const auto& row : rows) sum += row.first;
    return sum / static_cast<double>(rows.size());
}

/// The height of a line of a fader's scale on the panel, searched for up to three pixels around `near`.
double TickHeight(const CBand& body, double x, double near) {
    std::vector<std::pair<double, double>> rows;
    for (double y = near - 3; y <= near + 3; y += 0.05) {
        double sum = 0;
        for (double dx = 0; dx < 6; dx += 0.5) sum += body.BrightnessAt(x + dx, y);
        rows.emplace_back(y, sum);
    }
    return BrightPlace(rows);
}

/// The direction of a knob's pointer, from what differs from the mean of all frames inside a ring of the cap.
double PointerAngle(const SPixels& pixels, const SSprite& sprite, int frame, double inner, double outer) {
    const double middle = sprite.FrameWidth() / 2.0;
    const double scale = sprite.FrameWidth() / sprite.panelWidth;
    double x = 0;
    double y = 0;
    for (int v = 0; v < sprite.FrameHeight(); ++v) {
        for (int u = 0; u < sprite.FrameWidth(); ++u) {
            const double dx = u + 0.5 - middle;
            const double dy = v + 0.5 - middle;
            const double r = std::hypot(dx, dy) / scale;
            if (r < inner || r > outer) continue;
            double mean = 0;
            for (int k = 0; k < ValueFrames; ++k) mean += BrightnessAt(CellOf(pixels, sprite, k), u, v);
            mean /= ValueFrames;
            const double more = BrightnessAt(CellOf(pixels, sprite, frame), u, v) - mean;
            if (more < 40) continue;
            x += more * dx / std::hypot(dx, dy);
            y += more * dy / std::hypot(dx, dy);
        }
    }
    return std::atan2(x, -y);
}

/// The direction of a knob's scale line, searched for within six degrees.
double TickAngle(const CBand& band, const SRect& knob, double near, double inner, double outer) {
    std::vector<std::pair<double, double>> angles;
    for (double angle = near - 0.105; angle <= near + 0.105; angle += 0.002) {
        double sum = 0;
        for (double r = inner; r <= outer; r += 0.2)
            sum +=
                band.BrightnessAt(knob.CentreX() + r * std::sin(angle), knob.CentreY() - r * std::cos(angle));
        angles.emplace_back(angle, sum);
    }
    return BrightPlace(angles);
}

struct SFader {
    const char* place;
    std::span<const STick> ticks;
};

class Fader : public testing::TestWithParam<SFader> {};

/// A knob's pointer and the scale on the toolbar agree at every line, within half a panel pixel at
/// the scale's inner end.
void ExpectPointerMeetsTicks(const SPixels& pixels, const SPlace& place, std::span<const STick> ticks,
    double capInner, double capOuter, double tickInner, double tickOuter) {
    static const CBand toolbar(EBand::Toolbar);
    const SSprite& sprite = *place.sprite;
    for (const auto& tick : ticks) {
        const int frame = FrameOf(tick.value);
        const double pointer = PointerAngle(pixels, sprite, frame, capInner, capOuter);
        const double line = TickAngle(toolbar, place.rect, KnobAngle(tick.value), tickInner, tickOuter);
        EXPECT_NEAR(pointer, line, HalfPixel / tickInner) << place.name << " at " << tick.value;
        EXPECT_NEAR(line, KnobAngle(tick.value), HalfPixel / tickInner) << place.name << " at " << tick.value;
    }
}

} // namespace

TEST_P(Fader, IndicatorPointsAtItsTick) {
    const auto& [name, ticks] = GetParam();
    const SPixels pixels = ReadPng(FileOf(SpriteOf("fader")));
    const CBand body(EBand::Body);
    const SRect rect = PlaceOf(name).rect;
    int numbers = 0;
    for (const auto& tick : ticks) {
        const double expected = rect.y + FaderY(tick.value);
        const double line = TickHeight(body, rect.x + FaderCentreX - 14, expected);
        EXPECT_NEAR(line, expected, HalfPixel) << name << " at " << tick.value;
        const double indicator = rect.y + FaderIndicator(pixels, FrameOf(tick.value));
        // A line without a number may be between two frames.
        const double halfStep = *tick.text ? 0 : (FaderMinimumY - FaderMaximumY) / (ValueFrames - 1) / 2;
        EXPECT_NEAR(indicator, line, HalfPixel + halfStep) << name << " at " << tick.value;
        numbers += *tick.text != 0;
    }
    EXPECT_GE(numbers, 5);
}

INSTANTIATE_TEST_SUITE_P(All, Fader,
    testing::Values(SFader{"Input Gain", InputGainTicks}, SFader{"Threshold", ThirtyDbTicks},
        SFader{"Release", ReleaseTicks}, SFader{"Output Ceiling", ThirtyDbTicks}));

TEST(MainKnobs, PointAtTheirTicks) {
    const SPixels pixels = ReadPng(FileOf(SpriteOf("knob02")));
    for (const auto* name : {"Main Input Gain", "Main Output Gain"})
        ExpectPointerMeetsTicks(
            pixels, PlaceOf(name), MainGainTicks, 9, 14, MainTickInner, MainTickOuter - 1.5);
}

TEST(MacroKnobs, PointAtTheirTicks) {
    const SPixels pixels = ReadPng(FileOf(SpriteOf("knob03")));
    for (const auto& place : Places()) {
        if (place.widget == EClass::MacroKnob)
            ExpectPointerMeetsTicks(pixels, place, MacroTicks, 6, 10, MacroTickInner, MacroTickOuter - 0.8);
    }
}

/// The arc of a sensitivity ends at the value; the upper half is drawn turned by half.
TEST(SensitivityKnob, EndsItsArcAtTheValue) {
    const SSprite& sprite = SpriteOf("knob04");
    const SPixels pixels = ReadPng(FileOf(sprite));
    const double scale = sprite.FrameWidth() / sprite.panelWidth;
    for (const int frame : {0, 8, 16, 24, 31, 38, 46, 54, 62}) {
        const SCell cell = CellOf(pixels, sprite, frame);
        const double value = KnobAngle(ValueOf(frame, KnobAnchors));
        double lit = 0; // length of the arc, counted along its circle
        for (double angle = -3.14159; angle < 3.14159; angle += 0.01) {
            const double x = (6 + 4.75 * std::sin(angle)) * scale;
            const double y = (6 - 4.75 * std::cos(angle)) * scale;
            lit += BrightnessAt(cell, static_cast<int>(x), static_cast<int>(y)) > 150 ? 0.01 : 0;
        }
        // Round ends extend the arc by half a stroke on both sides.
        const double ends = frame == 31 ? 0 : 1.35 / 4.75;
        EXPECT_NEAR(lit, std::abs(value) + ends, HalfPixel / 4.75) << "frame " << frame;
    }
}

TEST(MeterFrames, FillFromTheBottomSegmentBySegment) {
    const SSprite& sprite = SpriteOf("meterled");
    const SPixels pixels = ReadPng(FileOf(sprite));
    for (int frame = 0; frame < sprite.frames; ++frame) {
        const SCell cell = CellOf(pixels, sprite, frame);
        for (int segment = 0; segment < MeterSegments; ++segment) {
            const int y = cell.height - 1 - (segment * 10 + 5);
            const auto* p = cell.At(cell.width / 2, y);
            ASSERT_EQ(p[3], 255);
            ASSERT_EQ(std::max({p[0], p[1], p[2]}) > 128, segment < frame) << frame << ' ' << segment;
        }
    }
}

TEST(MeterScales, StandAtTheirLevels) {
    const CBand body(EBand::Body);
    const SRect rect = PlaceOf("Input Meter 1").rect;
    for (const int db : MeterLevels) {
        const double expected = rect.Bottom() - rect.h * MeterValue(db);
        std::vector<std::pair<double, double>> rows;
        for (double y = expected - 2; y <= expected + 2; y += 0.05)
            rows.emplace_back(y, body.BrightnessAt(256.2, y) + body.BrightnessAt(256.7, y));
        EXPECT_NEAR(BrightPlace(rows), expected, HalfPixel) << db << " dB";
    }
}

TEST(ReductionGrid, StandsWhereTheCurveReachesItsDecibels) {
    const CBand body(EBand::Body);
    for (const int db : ReductionLevels) {
        const double expected =
            GainReductionRect().y + GainReductionRect().h * (1 - std::pow(10.0, -db / 20.0));
        EXPECT_NEAR(TickHeight(body, GainReductionRect().x + 50, expected), expected, HalfPixel)
            << db << " dB";
    }
}

/// An open macro lays a strip over the middle of each fader, for the knobs of the four groups, each 1.2 times
/// as wide and high as their pattern.
TEST(MacroStrips, CoverNoLettering) {
    const SRect pattern = PlaceOf("Macro 1/1").rect;
    const double width = 4 * 1.2 * pattern.w;
    const double height = 1.2 * pattern.h;
    for (const auto* name : {"Input Gain", "Threshold", "Release", "Output Ceiling"}) {
        const SRect fader = PlaceOf(name).rect;
        for (const auto& label : LabelsOf(EBand::Body)) {
            const double size = LetteringSize(label.tone);
            const double reach = 0.65 * size * static_cast<double>(label.text.size()); // at least its width
            const double left = label.x - reach * (label.align + 1) / 2;
            const double gapX =
                std::max(left - (fader.CentreX() + width / 2), fader.CentreX() - width / 2 - left - reach);
            const double gapY = std::abs(label.y - fader.CentreY()) - height / 2 - 0.37 * size; // capitals
            EXPECT_TRUE(gapX > 0 || gapY > 1) << name << " covers " << label.text << ", " << gapY;
        }
    }
}

/// The part of a meter that lights up, on the panel.
SRect LitRect(const SPlace& meter) {
    if (meter.sprite->stem == "meterled")
        return {meter.rect.x + MeterLeft, meter.rect.y, MeterRight - MeterLeft, meter.rect.h};
    return {meter.rect.x + 2, meter.rect.y + 1.35, meter.rect.w - 4, 2.9};
}

/// How many pixels of a widget's frames are over a rectangle of the panel, and whether any of them is
/// visible.
struct SCovering {
    int pixels = 0;
    int strongestAlpha = 0;
};

SCovering Covering(const SPlace& place, const SPixels& pixels, const SRect& rect) {
    const SSprite& sprite = *place.sprite;
    const double scaleX = sprite.FrameWidth() / place.rect.w;
    const double scaleY = sprite.FrameHeight() / place.rect.h;
    const auto clip = [](double x, int size) {
        return std::clamp(static_cast<int>(std::lround(x)), 0, size);
    };
    const int left = clip((rect.x - place.rect.x) * scaleX, sprite.FrameWidth());
    const int right = clip((rect.Right() - place.rect.x) * scaleX, sprite.FrameWidth());
    const int top = clip((rect.y - place.rect.y) * scaleY, sprite.FrameHeight());
    const int bottom = clip((rect.Bottom() - place.rect.y) * scaleY, sprite.FrameHeight());
    SCovering covering;
    for (int frame = 0; frame < sprite.frames; ++frame) {
        const SCell cell = CellOf(pixels, sprite, frame);
        for (int v = top; v < bottom; ++v) {
            for (int u = left; u < right; ++u) {
                ++covering.pixels;
                covering.strongestAlpha = std::max(covering.strongestAlpha, int{cell.At(u, v)[3]});
            }
        }
    }
    return covering;
}

/// A name without the number at its end.
std::string_view FamilyOf(std::string_view name) {
    return name.substr(0, name.find_last_not_of("0123456789") + 1);
}

/// The panel in its drawing order: everything that is drawn after a meter leaves the meter's lit part visible
/// in each of its frames.
TEST(Panel, CoversNoLitPartOfAnyMeterInAnyFrame) {
    std::map<std::string_view, SPixels> pictures;
    for (const auto& sprite : Sprites) pictures.emplace(sprite.stem, ReadPng(FileOf(sprite)));
    std::map<std::string_view, int> overlaps;
    const auto& places = Places();
    for (std::size_t m = 0; m < places.size(); ++m) {
        if (places[m].widget != EClass::Meter) continue;
        for (std::size_t later = m + 1; later < places.size(); ++later) {
            const auto covering =
                Covering(places[later], pictures.at(places[later].sprite->stem), LitRect(places[m]));
            if (covering.pixels > 0) ++overlaps[FamilyOf(places[later].name)];
            EXPECT_EQ(covering.strongestAlpha, 0) << places[later].name << " over " << places[m].name;
        }
    }
    // They do overlap: two faders overlap two meters each, and every button overlaps its own.
    EXPECT_EQ(overlaps["Input Gain"], 2);
    EXPECT_EQ(overlaps["Output Ceiling"], 2);
    EXPECT_EQ(overlaps["ToolCh"], 16);
    EXPECT_EQ(overlaps["ToolBtnFx"], 4);
}

TEST(Panel, LeavesTheMetersUnderChannelAndGroupButtonsFree) {
    const SSprite& button = SpriteOf("toolbtnrtg");
    const SSprite& meter = SpriteOf("toolmeterchnl");
    const SPixels buttons = ReadPng(FileOf(button));
    const SPixels meters = ReadPng(FileOf(meter));
    const int top = 25 * 3; // the meter begins 25 panel pixels below the button, at three pixels each
    for (int state = 0; state < 2; ++state) {
        const SCell cell = CellOf(buttons, button, state);
        for (int v = top; v < cell.height; ++v) {
            for (int u = 0; u < cell.width; ++u) ASSERT_EQ(cell.At(u, v)[3], 0);
        }
    }
    // And the meter draws nothing over the next row of buttons, six panel pixels below its top.
    const SCell full = CellOf(meters, meter, 15);
    for (int v = 18; v < full.height; ++v) {
        for (int u = 0; u < full.width; ++u) ASSERT_EQ(full.At(u, v)[3], 0);
    }
}

TEST(Panel, EndsItsFadersAboveTheToolbar) {
    const SSprite& sprite = SpriteOf("fader");
    const SPixels pixels = ReadPng(FileOf(sprite));
    const SCell cell = CellOf(pixels, sprite, 0);
    const int toolbar = static_cast<int>((PlaceOf("Toolbar").rect.y - PlaceOf("Threshold").rect.y) * 2);
    for (int v = toolbar; v < cell.height; ++v) {
        for (int u = 0; u < cell.width; ++u) ASSERT_LT(cell.At(u, v)[3], 32);
    }
}

/// The strongest contrast between the ground of an area, which is the colour of most of it, and its lightest
/// or darkest hundredth, which is the ink.
double ContrastOfInk(std::vector<double> luminances) {
    std::sort(luminances.begin(), luminances.end());
    const auto at = [&luminances](double part) {
        return luminances[static_cast<std::size_t>(part * static_cast<double>(luminances.size() - 1))];
    };
    return std::max(Contrast(at(0.99), at(0.5)), Contrast(at(0.01), at(0.5)));
}

/// Words on a key: a rectangle in panel pixels that contains them and the face, but no lamp.
struct SWords {
    const char* sprite;
    SRect rect;
};

class BandLettering : public testing::TestWithParam<EBand> {};

TEST_P(BandLettering, HasAContrastOfFourAndAHalf) {
    const CBand band(GetParam());
    for (const auto& label : LabelsOf(GetParam())) {
        const double size = LetteringSize(label.tone);
        const double width = std::max<double>(static_cast<double>(label.text.size()), 1) * size * 0.5;
        const double left = label.x - width * (label.align + 1) / 2;
        std::vector<double> luminances;
        for (int y = band.ToY(label.y - size * 0.6); y <= band.ToY(label.y + size * 0.6); ++y) {
            for (int x = band.ToX(left); x <= band.ToX(left + width); ++x) {
                if (x < 0 || y < 0 || x >= band.Width() || y >= band.Height()) continue;
                luminances.push_back(band.LuminanceAt(x, y));
            }
        }
        EXPECT_GE(ContrastOfInk(luminances), 4.5) << label.text;
    }
}

INSTANTIATE_TEST_SUITE_P(All, BandLettering, testing::Values(EBand::Top, EBand::Body, EBand::Toolbar));

TEST(Lettering, OnKeysHasAContrastOfFourAndAHalf) {
    constexpr SWords words[] = {{"buttonin", {30, 13, 60, 12}}, {"buttonar", {28, 13, 64, 12}},
        {"switchgpu2", {6, 10, 48, 9}}, {"switchgpu2", {5, 25, 50, 10}}, {"switchsimd", {18, 6, 24, 8}},
        {"switchsimd", {26, 15, 24, 12}}, {"hq", {9.5, 6, 9, 8}}, {"toolbtna", {5, 5, 14, 12}}};
    for (const auto& [name, rect] : words) {
        const SSprite& sprite = SpriteOf(name);
        const SPixels pixels = ReadPng(FileOf(sprite));
        const double scaleX = sprite.FrameWidth() / sprite.panelWidth;
        const double scaleY = sprite.FrameHeight() / sprite.panelHeight;
        for (int frame = 0; frame < sprite.frames; ++frame) {
            const SCell cell = CellOf(pixels, sprite, frame);
            std::vector<double> luminances;
            for (int v = static_cast<int>(rect.y * scaleY); v < static_cast<int>(rect.Bottom() * scaleY);
                 ++v) {
                for (int u = static_cast<int>(rect.x * scaleX); u < static_cast<int>(rect.Right() * scaleX);
                     ++u) {
                    const auto* p = cell.At(u, v);
                    const float alpha = static_cast<float>(p[3]) / 255;
                    const float ground = 0x17 / 255.0f * (1 - alpha); // a display, where the key has no face
                    const auto channel = [&](int k) {
                        return static_cast<float>(p[k]) / 255 * alpha + ground;
                    };
                    luminances.push_back(Luminance({channel(0), channel(1), channel(2), 1}));
                }
            }
            EXPECT_GE(ContrastOfInk(luminances), 4.5) << name << " frame " << frame;
        }
    }
}
