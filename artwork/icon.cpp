#include "artwork/icon.h"

#include "artwork/mark.h"
#include "artwork/palette.h"
#include "artwork/shapes.h"

namespace KAV::Artwork {

namespace {

constexpr double Side = 64; // of the drawing, whatever the picture's
constexpr SRect Key{2, 2, 60, 60};
constexpr double KeyRadius = 13;
constexpr SRect Display{9, 9, 46, 46};
constexpr double DisplayRadius = 7;
constexpr int SmallestWithDisplay = 48;

SSurface KeyAt(double x, double y, bool hasDisplay) {
    constexpr double height = 3;
    constexpr double depth = 1.6;
    const double edge = RoundBoxDistance(Key, KeyRadius, x, y);
    if (edge >= 0) return {};
    const double inside = RoundBoxDistance(Display, DisplayRadius, x, y);
    if (hasDisplay && inside < 0) return {height - depth, &Glass};
    return {ChamferedEdge(edge, 1.6, height), &Lacquer};
}

} // namespace

CBitmap DrawIcon(int side) {
    const SFrame frame{side, side, side / Side, side / Side};
    const bool hasDisplay = side >= SmallestWithDisplay;
    CBitmap icon = RenderRelief(
        frame, [hasDisplay](double x, double y) { return KeyAt(x, y, hasDisplay); }, {.shadow = 0});
    CPen pen(frame);
    if (hasDisplay)
        DrawMark(pen, Display.CentreX(), Display.CentreY(), 34, Ivory, Reduction);
    else
        DrawMark(pen, Key.CentreX(), Key.CentreY(), 36, Ivory, Reduction, 0.17);
    icon.Over(pen.Result());
    return icon;
}

} // namespace KAV::Artwork
