#include "dsp/meter_scale.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <span>

// A block shows about ten peaks, and with the library's logarithm and a search for the segment that would
// take as long as limiting a short block. So a place is first computed with a precision slightly better than
// single. Only if the result lies too close to where single precision rounds to another number, for a few
// peaks in ten thousand, is it computed as defined. The result equals that of the definition to the bit.

namespace KAV::DSP {

namespace {

constexpr std::array<double, 7> SevenPoints{-192.0, -96.0, -48.0, -24.0, -12.0, -6.0, 0.0};
constexpr std::array<double, 5> FivePoints{-48.0, -24.0, -12.0, -6.0, 0.0};

double Decibels(float peak) noexcept {
    return peak > 0.0f ? 20.0 * std::log10(static_cast<double>(peak)) : -999.9;
}

/// The segment that contains `db`, which is above the first point and below the last: from points[i] to
/// points[i + 1] inclusive.
std::size_t Segment(std::span<const double> points, double db) noexcept {
    std::size_t i = 0;
    while (db > points[i + 1]) ++i;
    return i;
}

/// The scales as defined.
float DefinedSevenPointScale(float peak) noexcept {
    const double db = Decibels(peak);
    if (db >= SevenPoints.back()) return 1.0f;
    if (db <= SevenPoints.front()) return 0.0f;
    const std::size_t i = Segment(SevenPoints, db);
    const double part = (SevenPoints[i + 1] - db) / (SevenPoints[i + 1] - SevenPoints[i]);
    return static_cast<float>((static_cast<double>(i) + 2.0 - part) / 7.0);
}

float DefinedFivePointScale(float peak) noexcept {
    const double db = Decibels(peak);
    if (db <= FivePoints.front()) return 0.0f;
    if (db >= FivePoints.back()) return 1.0f;
    const std::size_t i = Segment(FivePoints, db);
    const double part = std::fabs((FivePoints[i + 1] - db) / (FivePoints[i + 1] - FivePoints[i]));
    return static_cast<float>((1.0 - part + static_cast<double>(i)) * 0.25);
}

/// Decibels of a normal number, from its exponent, the part of the mantissa's range that it lies in, and a
/// series for the distance from the middle of that part; accurate to 1e-10 dB.
class CCloseDecibels final {
public:
    CCloseDecibels() noexcept {
        for (std::size_t i = 0; i < Parts; ++i) {
            const double middle = 1.0 + (static_cast<double>(i) + 0.5) / static_cast<double>(Parts);
            _parts[i] = {1.0 / middle, 20.0 * std::log10(middle)};
        }
    }

    static bool IsNormal(float peak) noexcept { return Exponent(peak) - 1 < 254; }

    double operator()(float peak) const noexcept {
        const auto bits = std::bit_cast<std::uint32_t>(peak);
        const SPart& part = _parts[bits >> (MantissaBits - PartBits) & (Parts - 1)];
        constexpr std::uint32_t mantissa = (1u << MantissaBits) - 1;
        const auto x = static_cast<double>(std::bit_cast<float>((bits & mantissa) | One));
        const double octaves = static_cast<double>(static_cast<std::int32_t>(Exponent(peak)) - 127);
        // ln(1 + r) = r - r^2/2 + r^3/3 - r^4/4 ..., |r| <= 1/128; all in dB
        const double r = x * part.reciprocal - 1.0;
        const double low = Unit - r * (Unit * 0.5);
        const double high = Unit * (1.0 / 3.0) - r * (Unit * 0.25);
        return octaves * Octave + part.decibels + r * (low + r * r * high);
    }

private:
    static constexpr std::uint32_t MantissaBits = 23;
    static constexpr std::uint32_t PartBits = 6;
    static constexpr std::size_t Parts = 1 << PartBits;
    static constexpr double Octave = 20.0 * std::numbers::ln2 / std::numbers::ln10; // dB
    static constexpr double Unit = 20.0 / std::numbers::ln10;                       // dB of a factor of e
    static constexpr std::uint32_t One = 0x3F800000;                                // 1.0f
    struct SPart {
        double reciprocal; // of the middle
        double decibels;   // of the middle
    };

    static std::uint32_t Exponent(float peak) noexcept {
        return std::bit_cast<std::uint32_t>(peak) >> MantissaBits;
    }

    std::array<SPart, Parts> _parts{};
};

const CCloseDecibels CloseDecibels;

/// A segment, extended in both directions.
struct SLine {
    double slope; // per dB
    double place; // at 0 dB
};

/// Each segment of a scale is as high as the previous one and no wider, so slopes never fall, and the highest
/// of all lines is that of the segment itself.
template<std::size_t COUNT>
double Highest(const std::array<SLine, COUNT>& lines, double db) noexcept {
    double place = 0.0;
    for (const SLine& line : lines) place = std::max(place, line.place + line.slope * db);
    return place;
}

template<std::size_t COUNT>
constexpr std::array<SLine, COUNT> Lines(std::span<const double> points, double height, double first) {
    std::array<SLine, COUNT> lines{};
    for (std::size_t i = 0; i < COUNT; ++i) {
        const double slope = height / (points[i + 1] - points[i]);
        lines[i] = {slope, first + height * static_cast<double>(i + 1) - slope * points[i + 1]};
    }
    return lines;
}

// The last two segments are one line.
constexpr auto SevenPointLines = Lines<5>(SevenPoints, 1.0 / 7.0, 1.0 / 7.0);
constexpr auto FivePointLines = Lines<3>(FivePoints, 0.25, 0.0);

template<std::size_t COUNT>
float Scale(float peak, const std::array<SLine, COUNT>& lines, double lowest,
    float (*defined)(float) noexcept) noexcept {
    constexpr double close = 1e-9;  // dB
    constexpr double doubt = 1e-11; // of the scale
    if (!CCloseDecibels::IsNormal(peak)) return defined(peak);
    const double db = CloseDecibels(peak);
    if (db > close) return 1.0f;
    if (db < lowest - close) return 0.0f;
    if (db > -close || db < lowest + close) return defined(peak);
    const double place = Highest(lines, db);
    const auto below = static_cast<float>(place - doubt);
    const auto above = static_cast<float>(place + doubt);
    return below == above ? below : defined(peak);
}

} // namespace

float SevenPointScale(float peak) noexcept {
    return Scale(peak, SevenPointLines, SevenPoints.front(), DefinedSevenPointScale);
}

float FivePointScale(float peak) noexcept {
    return Scale(peak, FivePointLines, FivePoints.front(), DefinedFivePointScale);
}

} // namespace KAV::DSP
