#pragma once

#include "artwork/bitmap.h"
#include "artwork/geometry.h"
#include "artwork/relief.h"

#include <cairo/cairo.h>
#include <memory>
#include <string_view>

namespace KAV::Artwork {

enum class EFace { Regular, Bold };
enum class EAlign { Left, Centre, Right };

/// How a piece of lettering looks; sizes and distances in panel pixels.
struct SLettering {
    double size = 8;
    EFace face = EFace::Regular;
    EAlign align = EAlign::Centre;
    double tracking = 0; ///< extra space between characters
    double weight = 0;   ///< extra width of the strokes
};

/// Lines, areas and lettering, in panel pixels from the frame's corner, on a transparent ground. Where the
/// layout stretches a picture unevenly, strokes come out evenly on the panel. Lettering is DejaVu Sans
/// Condensed, outlines without hinting, the same on every machine.
class CPen final {
public:
    /// Throws std::runtime_error when the typeface is not installed.
    explicit CPen(const SFrame& frame);

    void Line(double x0, double y0, double x1, double y1, double width, const SColour& colour);
    void Fill(const SRect& rect, const SColour& colour);
    void FillRound(const SRect& rect, double radius, const SColour& colour);
    void StrokeRound(const SRect& rect, double radius, double width, const SColour& colour);
    void Disc(double x, double y, double radius, const SColour& colour);
    /// Part of a circle; angles in radians, 0 upwards, clockwise.
    void Arc(double x, double y, double radius, double from, double to, double width, const SColour& colour);
    /// `y` is the middle of the capital letters.
    void Text(std::string_view text, double x, double y, const SLettering& style, const SColour& colour);
    double TextWidth(std::string_view text, const SLettering& style);

    /// The current path, for symbols: moves, lines and curves, then one of the two below.
    cairo_t* Path() { return _context.get(); }
    void StrokePath(double width, const SColour& colour);
    void FillPath(const SColour& colour);

    /// What was drawn so far.
    CBitmap Result();

private:
    struct SDestroy {
        void operator()(cairo_t* context) const { cairo_destroy(context); }
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    };
    void SetColour(const SColour& colour);
    void RoundPath(const SRect& rect, double radius);

    std::unique_ptr<cairo_surface_t, SDestroy> _surface;
    std::unique_ptr<cairo_t, SDestroy> _context;
};

} // namespace KAV::Artwork
