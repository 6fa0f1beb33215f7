#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace KAV::Artwork {

/// The frames of faders, knobs and meters run from minimum to maximum.
inline constexpr int ValueFrames = 63;

/// The frame that shows `value` (0..1).
inline int FrameOf(double value, int frames = ValueFrames) {
    return static_cast<int>(std::floor((frames - 1) * value + 0.5));
}

/// Values that frames are drawn at exactly: those with a number on some scale, and for faders the multiples
/// of 5 dB. 63 frames hit few of them by themselves, and a cap two pixels off its number looks wrong.
inline constexpr std::array FaderAnchors{
    0.0, 1.0 / 6, 0.2, 0.25, 1.0 / 3, 0.4, 0.5, 0.6, 2.0 / 3, 0.75, 0.8, 5.0 / 6, 1.0};
inline constexpr std::array KnobAnchors{0.0, 0.125, 0.25, 0.375, 0.5, 0.625, 0.75, 0.875, 1.0};

/// The value that a frame is drawn at: one that it stands for, exact at the anchors and even between them.
inline double ValueOf(int frame, std::span<const double> anchors) {
    std::size_t i = 1;
    while (FrameOf(anchors[i]) < frame) ++i;
    const int before = FrameOf(anchors[i - 1]);
    const int after = FrameOf(anchors[i]);
    const double part = static_cast<double>(frame - before) / (after - before);
    return anchors[i - 1] + (anchors[i] - anchors[i - 1]) * part;
}

/// Travel of a fader's cap inside its frame, in panel pixels.
inline constexpr double FaderMaximumY = 25.0;
inline constexpr double FaderMinimumY = 304.0;
inline constexpr double FaderCentreX = 30.5;
inline constexpr double FaderCapWidth = 26.0;
inline constexpr double FaderCapHeight = 40.0;

constexpr double FaderY(double value) {
    return FaderMinimumY + (FaderMaximumY - FaderMinimumY) * value;
}

/// A knob turns by 270 degrees. Angles in radians, 0 upwards, clockwise positive.
inline constexpr double KnobHalfTurn = 0.75 * 3.14159265358979323846;

constexpr double KnobAngle(double value) {
    return (2 * value - 1) * KnobHalfTurn;
}

/// Where the scales of the knobs stand, from the knob's centre in panel pixels.
inline constexpr double MainTickInner = 23.0;
inline constexpr double MainTickOuter = 27.0;
inline constexpr double MacroTickInner = 20.4;
inline constexpr double MacroTickOuter = 22.8;

/// A meter's lit part fills its frame's height from the bottom: 62 segments of five panel pixels.
inline constexpr int MeterSegments = ValueFrames - 1;
inline constexpr double MeterLeft = 2.0; ///< the lit part inside the frame, in panel pixels
inline constexpr double MeterRight = 11.0;

/// Value of a peak level on the meters' five-point law: a quarter of the height for each of
/// -48..-24..-12..-6..0.
constexpr double MeterValue(double db) {
    constexpr std::array<double, 5> points{-48, -24, -12, -6, 0};
    if (db <= points.front()) return 0;
    if (db >= points.back()) return 1;
    std::size_t i = 0;
    while (db > points[i + 1]) ++i;
    return (1 - (points[i + 1] - db) / (points[i + 1] - points[i]) + static_cast<double>(i)) * 0.25;
}

/// Position of a release time on the fader: exponential, 0.01 ms to 1000 ms.
inline double ReleaseValue(double ms) {
    return std::log10(ms / 1000) / 5 + 1;
}

/// Height of a gain reduction in the display, 0 at the top and 1 at the bottom: linear in gain.
inline double ReductionHeight(double db) {
    return 1 - std::pow(10.0, -db / 20);
}

/// A line of a scale: its value, and the text next to it; empty for a line between.
struct STick {
    double value = 0; ///< 0..1
    const char* text = "";
};

/// No scale of a fader has a number in its middle, where the panel of an open macro lies.
inline constexpr std::array InputGainTicks{STick{0.0, "-20"}, STick{0.1}, STick{0.2, "-16"}, STick{0.3},
    STick{0.4, "-12"}, STick{0.5}, STick{0.6, "-8"}, STick{0.7}, STick{0.8, "-4"}, STick{0.9},
    STick{1.0, "0"}};
inline constexpr std::array ThirtyDbTicks{STick{0.0, "-30"}, STick{0.1}, STick{0.2, "-24"}, STick{0.3},
    STick{0.4, "-18"}, STick{0.5}, STick{0.6, "-12"}, STick{0.7}, STick{0.8, "-6"}, STick{0.9},
    STick{1.0, "0"}};
inline constexpr std::array ReleaseTicks{STick{0.0, "0.01"}, STick{0.1}, STick{0.2, "0.1"}, STick{0.3},
    STick{0.4, "1"}, STick{0.5}, STick{0.6, "10"}, STick{0.7}, STick{0.8, "100"}, STick{0.9},
    STick{1.0, "1000"}};
inline constexpr std::array MainGainTicks{STick{0.0, "-24"}, STick{0.125}, STick{0.25, "-12"}, STick{0.375},
    STick{0.5, "0"}, STick{0.625}, STick{0.75, "+12"}, STick{0.875}, STick{1.0, "+24"}};
inline constexpr std::array MacroTicks{STick{0.0, "-"}, STick{0.125}, STick{0.25}, STick{0.375}, STick{0.5},
    STick{0.625}, STick{0.75}, STick{0.875}, STick{1.0, "+"}};

/// Levels printed next to the meters, and reductions printed in the display, both in dB. The panel over the
/// release lies where -12 would be.
inline constexpr std::array MeterLevels{0, -3, -6, -10, -15, -20, -30, -40, -48};
inline constexpr std::array ReductionLevels{1, 2, 3, 6, 12, 20};

} // namespace KAV::Artwork
