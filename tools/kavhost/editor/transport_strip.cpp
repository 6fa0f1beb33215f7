#include "tools/kavhost/editor/transport_strip.h"

#include "tools/kavhost/editor/strip_text.h"
#include "tools/kavhost/play/time_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace KAV::Host {

namespace {

constexpr double UsualHeight = 28; ///< below an editor of the usual width
constexpr double UsualWidth = 754;

using Colour = std::array<double, 3>; ///< red, green, blue
constexpr Colour Ground{0.10, 0.11, 0.12};
constexpr Colour Groove{0.20, 0.21, 0.23};
constexpr Colour Played{0.29, 0.73, 0.50};
constexpr Colour Ink{0.88, 0.89, 0.91};
constexpr Colour Dim{0.42, 0.44, 0.47};

constexpr int SamplesPerSide = 8; ///< of a pixel at the edge of a shape

std::uint32_t Mixed(std::uint32_t below, const Colour& colour, double part) noexcept {
    std::uint32_t pixel = 0;
    for (std::size_t i = 0; i < colour.size(); ++i) {
        const auto shift = 16 - 8 * static_cast<int>(i);
        const auto under = static_cast<double>(below >> shift & 0xFF);
        const auto mixed = std::lround(under + (colour[i] * 255 - under) * part);
        pixel |= static_cast<std::uint32_t>(mixed) << shift;
    }
    return pixel;
}

struct SPoint {
    double x = 0;
    double y = 0;
};

/// A picture that shapes are drawn into; what lies outside of it is left out.
class CCanvas final {
public:
    explicit CCanvas(SPicture& picture) noexcept : _picture(picture) {}

    void Blend(std::int32_t x, std::int32_t y, const Colour& colour, double part) noexcept {
        if (x < 0 || y < 0 || x >= _picture.width || y >= _picture.height) return;
        auto& pixel = _picture.pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(_picture.width) +
                                      static_cast<std::size_t>(x)];
        pixel = Mixed(pixel, colour, part);
    }

    /// Whole pixels.
    void FillRect(double left, double top, double width, double height, const Colour& colour) noexcept {
        const auto right = static_cast<std::int32_t>(std::lround(left + width));
        const auto bottom = static_cast<std::int32_t>(std::lround(top + height));
        for (auto y = static_cast<std::int32_t>(std::lround(top)); y < bottom; ++y)
            for (auto x = static_cast<std::int32_t>(std::lround(left)); x < right; ++x)
                Blend(x, y, colour, 1);
    }

    /// A shape within the square around `centre` whose half side is `reach`: what `isInside` says of points.
    template<typename INSIDE>
    void FillShape(const SPoint& centre, double reach, const Colour& colour, INSIDE isInside) noexcept {
        const auto first = [&](double middle) {
            return static_cast<std::int32_t>(std::floor(middle - reach));
        };
        const auto end = [&](double middle) { return static_cast<std::int32_t>(std::ceil(middle + reach)); };
        for (auto y = first(centre.y); y < end(centre.y); ++y) {
            for (auto x = first(centre.x); x < end(centre.x); ++x) {
                int covered = 0;
                for (int sample = 0; sample < SamplesPerSide * SamplesPerSide; ++sample) {
                    const int column = sample % SamplesPerSide;
                    const int row = sample / SamplesPerSide;
                    const SPoint point{x + (column + 0.5) / SamplesPerSide, y + (row + 0.5) / SamplesPerSide};
                    if (isInside(point)) ++covered;
                }
                Blend(x, y, colour, static_cast<double>(covered) / (SamplesPerSide * SamplesPerSide));
            }
        }
    }

    void DrawText(
        const STextPicture& text, std::int32_t left, std::int32_t top, const Colour& colour) noexcept {
        std::size_t i = 0;
        for (std::int32_t y = 0; y < text.height; ++y)
            for (std::int32_t x = 0; x < text.width; ++x)
                Blend(left + x, top + y, colour, text.coverage[i++] / 255.0);
    }

private:
    SPicture& _picture;
};

/// Whether a point is on the inner side of all edges, or of none: within, whichever way round they go.
bool IsInTriangle(const SPoint& point, const std::array<SPoint, 3>& corners) noexcept {
    int left = 0;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const auto& from = corners[i];
        const auto& to = corners[(i + 1) % corners.size()];
        if ((to.x - from.x) * (point.y - from.y) > (to.y - from.y) * (point.x - from.x)) ++left;
    }
    return left == 0 || left == 3;
}

void DrawPlayButton(CCanvas& canvas, const SStripLayout& layout, bool plays) {
    const double size = layout.height * 0.42;
    const double left = layout.buttonEnd / 2.0 - size / 2;
    const double top = (layout.height - size) / 2;
    if (plays) {
        const double bar = std::round(size * 0.34);
        const double height = std::round(size);
        canvas.FillRect(std::round(left), std::round(top), bar, height, Ink);
        canvas.FillRect(std::round(left + size) - bar, std::round(top), bar, height, Ink);
        return;
    }
    const std::array<SPoint, 3> corners{{{left, top}, {left + size, top + size / 2}, {left, top + size}}};
    canvas.FillShape({left + size / 2, top + size / 2}, size / 2, Ink,
        [&](const SPoint& point) { return IsInTriangle(point, corners); });
}

void DrawBar(CCanvas& canvas, const SStripLayout& layout, const SStripView& view) {
    const double thickness = std::max(std::round(layout.height * 0.2), 2.0);
    const double top = std::round((layout.height - thickness) / 2);
    canvas.FillRect(layout.barBegin, top, layout.barEnd - layout.barBegin, thickness, Groove);
    canvas.FillRect(layout.barBegin, top, view.barPixels, thickness, Played);
    const double width = std::max(std::round(layout.height * 0.08), 2.0);
    const double height = std::round(layout.height * 0.5);
    canvas.FillRect(std::round(layout.barBegin + view.barPixels - width / 2),
        std::round((layout.height - height) / 2), width, height, Ink);
}

/// An arrow that returns to where it began.
void DrawLoopMark(CCanvas& canvas, const SStripLayout& layout, bool loops) {
    const SPoint centre{(layout.timeEnd + layout.width) / 2.0, layout.height / 2.0};
    const double radius = layout.height * 0.2;
    const double halfLine = std::max(layout.height * 0.07, 1.5) / 2;
    constexpr double begin = -0.6; // clockwise from the right, in radians
    constexpr double end = 4.6;
    // The head lies across the line's end and points along it.
    const double head = layout.height * 0.16;
    const SPoint at{centre.x + radius * std::cos(end), centre.y + radius * std::sin(end)};
    const SPoint along{-std::sin(end), std::cos(end)};
    const std::array<SPoint, 3> corners{{{at.x + along.x * head, at.y + along.y * head},
        {at.x - along.y * head, at.y + along.x * head}, {at.x + along.y * head, at.y - along.x * head}}};
    canvas.FillShape(centre, radius + head, loops ? Played : Dim, [&](const SPoint& point) {
        if (IsInTriangle(point, corners)) return true;
        const double x = point.x - centre.x;
        const double y = point.y - centre.y;
        if (std::abs(std::hypot(x, y) - radius) > halfLine) return false;
        double angle = std::atan2(y, x);
        if (angle < begin) angle += 2 * std::numbers::pi;
        return angle <= end;
    });
}

} // namespace

std::int32_t StripHeightFor(std::int32_t editorWidth) noexcept {
    const double scale = std::clamp(editorWidth / UsualWidth, 0.8, 4.0);
    return static_cast<std::int32_t>(std::lround(UsualHeight * scale));
}

SStripLayout LayOutStrip(std::int32_t width, std::int32_t height) noexcept {
    SStripLayout layout{width, height};
    layout.buttonEnd = layout.barBegin = std::min(height + height / 4, width);
    layout.timeEnd = std::max(width - height - height / 4, layout.barBegin);
    // Room for "1:02:03 / 1:23:45".
    layout.barEnd = std::max(layout.timeEnd - height * 4, layout.barBegin);
    return layout;
}

EStripPart PartAt(const SStripLayout& layout, std::int32_t x, std::int32_t y) noexcept {
    if (x < 0 || y < 0 || x >= layout.width || y >= layout.height) return EStripPart::None;
    if (x < layout.buttonEnd) return EStripPart::PlayButton;
    if (x <= layout.barEnd) return EStripPart::Bar;
    return x >= layout.timeEnd ? EStripPart::LoopMark : EStripPart::None;
}

double FractionAt(const SStripLayout& layout, std::int32_t x) noexcept {
    const auto length = layout.barEnd - layout.barBegin;
    if (length <= 0) return 0;
    return std::clamp(static_cast<double>(x - layout.barBegin) / length, 0.0, 1.0);
}

SStripView StripViewOf(const SStripLayout& layout, bool plays, bool loops, double seconds, double length) {
    const double fraction = length > 0 ? std::clamp(seconds / length, 0.0, 1.0) : 0;
    return {plays, loops,
        static_cast<std::int32_t>(std::lround(fraction * (layout.barEnd - layout.barBegin))),
        TimeText(seconds) + " / " + TimeText(length)};
}

CStripPainter::CStripPainter() : _text(std::make_unique<CStripText>()) {}

CStripPainter::~CStripPainter() = default;

SPicture CStripPainter::Draw(const SStripLayout& layout, const SStripView& view) {
    SPicture picture{layout.width, layout.height, {}};
    if (layout.width < 1 || layout.height < 1) return picture;
    picture.pixels.assign(static_cast<std::size_t>(layout.width) * static_cast<std::size_t>(layout.height),
        Mixed(0, Ground, 1));
    CCanvas canvas(picture);
    DrawPlayButton(canvas, layout, view.plays);
    DrawBar(canvas, layout, view);
    const auto time = _text->Render(view.time, static_cast<std::int32_t>(std::lround(layout.height * 0.43)));
    canvas.DrawText(
        time, (layout.barEnd + layout.timeEnd - time.width) / 2, (layout.height - time.height) / 2, Ink);
    DrawLoopMark(canvas, layout, view.loops);
    return picture;
}

} // namespace KAV::Host
