#include "artwork/installer.h"

#include "artwork/icon.h"
#include "artwork/mark.h"
#include "artwork/palette.h"
#include "artwork/pen.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace KAV::Artwork {

namespace {

/// How deep the gain is pulled down at `t`, 0..1: each peak at once, back in its own time.
double ReductionAt(double t) {
    struct SPeak {
        double at;
        double depth;
    };
    constexpr std::array<SPeak, 7> peaks{
        {{-0.02, 0.34}, {0.13, 0.62}, {0.29, 0.36}, {0.43, 0.82}, {0.62, 0.45}, {0.74, 0.6}, {0.9, 0.28}}};
    double deepest = 0;
    for (const auto& peak : peaks) {
        if (t >= peak.at) deepest = std::max(deepest, peak.depth * std::exp((peak.at - t) / 0.09));
    }
    return deepest;
}

/// The panel's display of the gain reduction, with a piece of music passing.
void DrawReduction(CPen& pen, const SRect& display) {
    pen.FillRound(display, 3, Well);
    pen.StrokeRound(display.Inset(-0.5), 3.5, 1, Hex(0x000000).WithAlpha(0.6));
    const SRect rect = display.Inset(5);
    for (const double level : {0.14, 0.32, 0.54, 0.8}) {
        const double y = rect.y + level * rect.h;
        pen.Line(rect.x, y, rect.x + rect.w, y, 0.7, Line.WithAlpha(0.35));
    }
    const auto curve = [&] {
        constexpr int steps = 400;
        for (int i = 0; i <= steps; ++i) {
            const double t = static_cast<double>(i) / steps;
            cairo_line_to(pen.Path(), rect.x + t * rect.w, rect.y + ReductionAt(t) * rect.h);
        }
    };
    cairo_new_path(pen.Path());
    cairo_move_to(pen.Path(), rect.x, rect.y);
    curve();
    cairo_line_to(pen.Path(), rect.x + rect.w, rect.y);
    pen.FillPath(Reduction.WithAlpha(0.3));
    cairo_new_path(pen.Path());
    curve();
    pen.StrokePath(1.2, Reduction);
}

} // namespace

std::vector<SPixels> PaintInstallerIcon() {
    std::vector<SPixels> icons;
    for (const int side : {16, 24, 32, 48, 64, 128}) icons.push_back(DrawIcon(side).Quantised());
    return icons;
}

SPixels PaintInstallerHeader() {
    CPen pen({150, 57, 1, 1});
    pen.Fill({0, 0, 150, 57}, Hex(0xFFFFFF)); // the ground of the installer's pages
    DrawMark(pen, 116, 23, 22, Graphite, Reduction);
    pen.Text("KAVELIN", 116, 46, {.size = 8, .face = EFace::Bold, .tracking = 1}, Graphite);
    return pen.Result().Quantised();
}

SPixels PaintInstallerSide() {
    constexpr int width = 164;
    constexpr int height = 314;
    CBitmap bitmap(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double away = std::hypot((x - 40) / 180.0, (y - 10) / 260.0);
            const double lamp = 0.82 + 0.34 * std::exp(-away * away);
            bitmap.At(x, y) = Encode(Decode(Graphite) * static_cast<float>(lamp * lamp));
        }
    }
    CPen pen({width, height, 1, 1});
    const double middle = width / 2.0;
    pen.Text("KAV", middle, 34, {.size = 13, .face = EFace::Bold, .tracking = 2}, InkQuiet);
    pen.Text("SORREL", middle, 55, {.size = 24, .face = EFace::Bold, .tracking = 2}, Ink);
    pen.Text("LIMITER", middle, 76, {.size = 13, .face = EFace::Bold, .tracking = 2}, InkQuiet);
    DrawReduction(pen, {20, 102, width - 40, 124});
    DrawMark(pen, middle, 259, 22, InkQuiet, Reduction);
    pen.Text("KAVELIN", middle, 284, {.size = 9, .face = EFace::Bold, .tracking = 1.2}, InkQuiet);
    bitmap.Over(pen.Result());
    return bitmap.Quantised(1.5);
}

} // namespace KAV::Artwork
