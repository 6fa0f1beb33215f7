#include "artwork/mark.h"

namespace KAV::Artwork {

void DrawMark(CPen& pen, double x, double y, double size, const SColour& colour, const SColour& ceiling,
    double weight) {
    auto* path = pen.Path();
    const double s = size / 2;
    cairo_save(path);
    cairo_translate(path, x, y);
    cairo_new_path(path);
    cairo_move_to(path, -s * 1.1, s * 0.85);
    cairo_line_to(path, -s * 0.42, -s * 0.48);
    cairo_line_to(path, s * 0.42, -s * 0.48);
    cairo_line_to(path, s * 1.1, s * 0.85);
    pen.StrokePath(size * weight, colour);
    cairo_move_to(path, -s * 1.1, -s * 0.85);
    cairo_line_to(path, s * 1.1, -s * 0.85);
    pen.StrokePath(size * weight, ceiling);
    cairo_restore(path);
}

} // namespace KAV::Artwork
