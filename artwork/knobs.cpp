#include "artwork/palette.h"
#include "artwork/pen.h"
#include "artwork/pictures.h"
#include "artwork/scales.h"
#include "artwork/shapes.h"
#include "artwork/studio.h"

namespace KAV::Artwork {

namespace {

/// A turned knob: a fluted skirt, and on it a cap of turned aluminium. All in panel pixels.
struct SKnob {
    double centre = 0; ///< x and y of the axis
    double skirt = 0;  ///< radius
    double cap = 0;    ///< radius
    double skirtHeight = 5.2;
    double capHeight = 6.6;
    int flutes = 0;
    double fluteDepth = 0.55;
    double pointer = 2.3;   ///< width
    double pointerFrom = 0; ///< radius where it begins; it ends short of the skirt's edge
};

constexpr double Chamfer = 1.1; // width of the cap's edge

/// 0 on the land between two flutes, 1 in the middle of a flute: narrow round grooves, wide lands.
double Flute(const SKnob& knob, double angle) {
    const double phase = angle * knob.flutes / (2 * Pi);
    const double away = std::abs(phase - std::round(phase)) * 2; // 0 in the groove's middle
    const double t = std::clamp(1 - away / 0.62, 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

/// The knob at a point that was turned back by the knob's angle: the pointer looks upwards.
SSurface KnobSurface(const SKnob& knob, double x, double y) {
    const double r = std::hypot(x, y);
    if (r >= knob.skirt) return {};
    const double flute = r > knob.skirt * 0.8 ? Flute(knob, std::atan2(x, -y)) : 0;
    const double edge = r - (knob.skirt - knob.fluteDepth * flute);
    if (edge >= 0) return {};

    // The pointer is a milled groove with paint in it, through the cap and the skirt.
    const double pointerEnd = knob.skirt - 1.6;
    const double along = std::clamp(-y, knob.pointerFrom, pointerEnd);
    const double pointer = std::hypot(x, -y - along) - knob.pointer / 2;

    SSurface surface;
    const double gap = knob.cap + 0.5;
    const double inward = std::clamp((knob.skirt - r) / (knob.skirt - gap), 0.0, 1.0);
    if (r > gap) { // a cone up to the cap, its foot rounded
        surface = {RoundedEdge(edge, 1.3, knob.skirtHeight - 2) + 2 * inward, &Rubber};
    } else if (r > knob.cap) {
        surface = {knob.skirtHeight - 0.3, &Gap};
    } else { // a wall, a chamfer that mirrors the lamp, and a face with the marks of the tool
        const double chamfer = std::clamp((knob.cap - r) / Chamfer, 0.0, 1.0);
        const bool face = chamfer >= 1;
        surface = {knob.capHeight - 0.6 * (1 - chamfer), face ? &Aluminium : &Polished};
        if (face) surface.height -= 0.012 * (1 - std::cos(2 * Pi * (knob.cap - Chamfer - r) / 0.8));
    }
    if (pointer < 0) {
        surface.height -= 0.45 * SmoothStep(0, -0.4, pointer);
        if (pointer < -0.22)
            surface.material = &Inlay;
        else
            surface.material = &Gap;
    }
    return surface;
}

CBitmap RenderKnob(const SFrame& frame, const SKnob& knob, double angle) {
    const double s = std::sin(angle);
    const double c = std::cos(angle);
    const auto shape = [&](double x, double y) {
        const double u = x - knob.centre;
        const double v = y - knob.centre;
        return KnobSurface(knob, u * c + v * s, v * c - u * s);
    };
    return RenderRelief(frame, shape,
        {.shadow = 0.7, .shadowSteep = 1.45, .reach = 8, .turnX = knob.centre, .turnY = knob.centre});
}

/// Keeps shadows off the rim of the frame: they fade out over the last panel pixels.
void FadeRim(CBitmap& bitmap, const SFrame& frame, double from, double to) {
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            const double r = std::hypot((x + 0.5) / frame.scaleX - frame.width / frame.scaleX / 2,
                (y + 0.5) / frame.scaleY - frame.height / frame.scaleY / 2);
            const auto keep = static_cast<float>(1 - SmoothStep(from, to, r));
            SColour& pixel = bitmap.At(x, y);
            pixel = {pixel.r * keep, pixel.g * keep, pixel.b * keep, pixel.a * keep};
        }
    }
}

double AngleOf(int index) {
    return KnobAngle(ValueOf(index, KnobAnchors));
}

} // namespace

Painter MainKnobPainter(const SFrame& frame) {
    const SKnob knob{.centre = 30, .skirt = 20.5, .cap = 14.6, .flutes = 36, .pointerFrom = 7.5};
    return [=](int index) {
        CBitmap bitmap = RenderKnob(frame, knob, AngleOf(index));
        FadeRim(bitmap, frame, 26, 29.4);
        return bitmap;
    };
}

Painter MacroKnobPainter(const SFrame& frame) {
    const SKnob knob{.centre = 25,
        .skirt = 15,
        .cap = 10.4,
        .skirtHeight = 4.6,
        .capHeight = 5.8,
        .flutes = 28,
        .fluteDepth = 0.5,
        .pointer = 2.1,
        .pointerFrom = 5};
    return [=](int index) {
        CPen ring(frame);
        const double radius = 17.9;
        ring.Arc(25, 25, radius, -KnobHalfTurn, KnobHalfTurn, 2.3, Hex(0x16181B));
        const double angle = AngleOf(index);
        if (index != ValueFrames / 2)
            ring.Arc(25, 25, radius, std::min(0.0, angle), std::max(0.0, angle), 1.6, Macro);
        CBitmap bitmap = ring.Result();
        CBitmap body = RenderKnob(frame, knob, angle);
        FadeRim(body, frame, 20, 24.4);
        bitmap.Over(body);
        return bitmap;
    };
}

/// The toolkit shows values from the middle upwards turned by half and tinted, below it as they are: the
/// frames of the upper half are drawn turned, so that both halves read alike. At the middle nothing is set
/// and no arc shows.
Painter SensitivityKnobPainter(const SFrame& frame) {
    return [=](int index) {
        constexpr double centre = 6;
        const double angle = AngleOf(index);
        const double turned = index > ValueFrames / 2 ? Pi : 0;
        CPen pen(frame);
        pen.Disc(centre, centre, 5.6, Hex(0x0F1113));
        pen.Disc(centre, centre, 3.9, Hex(0x43484F));
        pen.Arc(centre, centre, 4.75, 0, 2 * Pi, 0.5, Hex(0x3A3E44));
        if (index != ValueFrames / 2)
            pen.Arc(centre, centre, 4.75, std::min(0.0, angle) + turned, std::max(0.0, angle) + turned, 1.35,
                Hex(0xFFFFFF));
        return pen.Result();
    };
}

} // namespace KAV::Artwork
