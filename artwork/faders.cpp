#include "artwork/palette.h"
#include "artwork/pictures.h"
#include "artwork/scales.h"
#include "artwork/shapes.h"
#include "artwork/studio.h"

namespace KAV::Artwork {

namespace {

/// A cap milled from one piece: a rounded block, two scoops with fine grips, and a painted line across the
/// ridge between them. (x, y) from its centre, in panel pixels.
SSurface CapSurface(double x, double y) {
    const SRect block{-FaderCapWidth / 2, -FaderCapHeight / 2, FaderCapWidth, FaderCapHeight};
    const double edge = RoundBoxDistance(block, 2.6, x, y);
    if (edge >= 0) return {};
    SSurface surface{ChamferedEdge(edge, 1.2, 4.6), &Anodised};
    if (edge > -1.0) surface.material = &Cut;
    const double away = std::abs(y);
    const double ridge = 3.2;
    const double lip = FaderCapHeight / 2 - 2.6;
    if (away > ridge && away < lip) {
        const double t = (away - ridge) / (lip - ridge);
        const double side = SmoothStep(0, 1.6, FaderCapWidth / 2 - 1.2 - std::abs(x));
        surface.height -= side * 2.1 * std::sin(Pi * t);
        const double grip = std::abs(std::fmod(away - ridge, 2.6) - 1.3) / 1.3; // 1 on a groove
        surface.height -=
            side * 0.34 * SmoothStep(0.45, 1, grip) * SmoothStep(0, 0.12, t) * SmoothStep(1, 0.9, t);
    }
    if (away < 1.0 && edge < -0.7) {
        surface.height -= 0.12 * SmoothStep(1.0, 0.75, away);
        surface.material = &Inlay;
    }
    return surface;
}

} // namespace

/// The cap stands on whole pixels of the picture, a quarter of a panel pixel off at most, and the light does
/// not move with it: so it is drawn once, and is as crisp in every frame.
Painter FaderPainter(const SFrame& frame) {
    constexpr int margin = 24; // of pixels around the cap, for its shadow
    const SFrame window{frame.width, static_cast<int>(FaderCapHeight * frame.scaleY) + 2 * margin,
        frame.scaleX, frame.scaleY};
    const double middle = window.height / 2.0 / frame.scaleY;
    const auto shape = [middle](double x, double y) { return CapSurface(x - FaderCentreX, y - middle); };
    CBitmap cap = RenderRelief(window, shape, {.shadow = 0.7, .shadowSteep = 1.25, .reach = 9});
    // No shadow may reach the meters that stand beside the fader, nor the frame's rim.
    for (int y = 0; y < cap.Height(); ++y) {
        for (int x = 0; x < cap.Width(); ++x) {
            const double fromCap = std::abs((x + 0.5) / frame.scaleX - FaderCentreX) - FaderCapWidth / 2;
            const double above = middle - FaderCapHeight / 2 - (y + 0.5) / frame.scaleY;
            const auto keep =
                static_cast<float>((1 - SmoothStep(1.0, 4.2, fromCap)) * (1 - SmoothStep(0.5, 4.2, above)));
            SColour& pixel = cap.At(x, y);
            pixel = {pixel.r * keep, pixel.g * keep, pixel.b * keep, pixel.a * keep};
        }
    }
    return [=](int index) {
        CBitmap bitmap(frame.width, frame.height);
        const double centre = FaderY(ValueOf(index, FaderAnchors)) * frame.scaleY;
        bitmap.Over(cap, 0, static_cast<int>(std::lround(centre - window.height / 2.0)));
        return bitmap;
    };
}

} // namespace KAV::Artwork
