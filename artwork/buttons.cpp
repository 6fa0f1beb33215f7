#include "artwork/buttons.h"

#include "artwork/palette.h"
#include "artwork/pictures.h"
#include "artwork/shapes.h"
#include "artwork/studio.h"

namespace KAV::Artwork {

CBitmap RenderKey(const SFrame& frame, const SKey& key) {
    const auto shape = [&key](double x, double y) -> SSurface {
        const double edge = RoundBoxDistance(key.rect, key.radius, x, y);
        if (edge >= key.gap) return {};
        if (edge >= 0) return {0, &Gap};
        const double height = key.pressed ? 0.35 : 1.5;
        SSurface surface{key.pressed ? RoundedEdge(edge, 0.5, height) : ChamferedEdge(edge, 0.85, height),
            key.pressed ? &LacquerPressed : &Lacquer};
        // Arched a little, or dished when it is down, so that the face is not one flat area.
        const double across = (y - key.rect.CentreY()) / key.rect.h;
        surface.height += (key.pressed ? 0.02 : -0.06) * key.rect.h * 4 * across * across;
        if (key.lamp.w > 0) {
            const double lamp = RoundBoxDistance(key.lamp, key.lamp.h / 2, x, y);
            if (lamp < 0.45) surface = {height - 0.7, &Gap};
        }
        return surface;
    };
    CBitmap bitmap =
        RenderRelief(frame, shape, {.shadow = 0.4, .shadowSteep = 1.2, .occlusion = 0.9, .reach = 4});
    if (key.lamp.w > 0) {
        CPen pen(frame);
        const SRect lens = key.lamp.Inset(0.2);
        pen.FillRound(lens, lens.h / 2, key.lit ? key.lampColour : LampDark);
        if (key.lit)
            pen.FillRound({lens.x + 0.6, lens.y + 0.35, lens.w - 1.2, lens.h * 0.35}, lens.h * 0.17,
                Hex(0xFFFFFF).WithAlpha(0.45));
        bitmap.Over(pen.Result());
        if (key.lit) AddGlow(bitmap, frame, key, 0.5);
    }
    return bitmap;
}

void AddGlow(CBitmap& bitmap, const SFrame& frame, const SKey& key, double strength) {
    for (int y = 0; y < bitmap.Height(); ++y) {
        for (int x = 0; x < bitmap.Width(); ++x) {
            const double u = (x + 0.5) / frame.scaleX;
            const double v = (y + 0.5) / frame.scaleY;
            const double inside = SmoothStep(0, 1.2, -RoundBoxDistance(key.rect, key.radius, u, v));
            const double away = RoundBoxDistance(key.lamp, key.lamp.h / 2, u, v);
            if (inside <= 0 || away <= 0) continue;
            const double reach = away / key.glowReach;
            const auto add = static_cast<float>(strength * inside * std::exp(-reach * reach) * 0.6);
            SColour& pixel = bitmap.At(x, y);
            const auto screen = [&](float below, float light) {
                return below + light * add * (pixel.a - below);
            };
            pixel = {screen(pixel.r, key.lampColour.r), screen(pixel.g, key.lampColour.g),
                screen(pixel.b, key.lampColour.b), pixel.a};
        }
    }
}

namespace {

Painter CaptionButton(const SFrame& frame, std::string_view caption) {
    return [=](int index) {
        const bool on = index == 1;
        const SKey key{.rect = {3, 4, 93, 30},
            .radius = 4,
            .pressed = on,
            .lit = on,
            .lamp = {10, 16.9, 11, 4.2},
            .lampColour = Reduction,
            .glowReach = 7};
        CBitmap bitmap = RenderKey(frame, key);
        CPen pen(frame);
        pen.Text(caption, 58.5, on ? 19.3 : 19, {.size = 8.6, .face = EFace::Bold, .tracking = 0.35},
            on ? Hex(0xFFFFFF) : Ink);
        bitmap.Over(pen.Result());
        return bitmap;
    };
}

} // namespace

Painter LimiterButtonPainter(const SFrame& frame) {
    return CaptionButton(frame, "Limiter");
}

Painter AutoReleaseButtonPainter(const SFrame& frame) {
    return CaptionButton(frame, "Auto Release");
}

/// The meter shows through below the face, so nothing may be drawn there. The lamp is white when on: the
/// toolkit tints the picture to tell solo and mute.
Painter ChannelButtonPainter(const SFrame& frame) {
    constexpr double meterTop = 25;
    return [=](int index) {
        const bool on = index == 1;
        const SKey key{.rect = {2, 1.4, 46, 22},
            .radius = 2.6,
            .pressed = on,
            .lit = on,
            .lamp = {7, 3.6, 36, 3},
            .lampColour = Hex(0xFFFFFF),
            .glowReach = 5};
        SFrame above = frame;
        above.height = static_cast<int>(meterTop * frame.scaleY);
        CBitmap bitmap(frame.width, frame.height);
        bitmap.Over(RenderKey(above, key));
        return bitmap;
    };
}

Painter MacroButtonPainter(const SFrame& frame) {
    return [=](int index) {
        const bool on = index == 1;
        const SKey key{.rect = {3, 4, 78, 22},
            .radius = 3,
            .pressed = on,
            .lit = on,
            .lamp = {9, 13.2, 3.6, 3.6},
            .lampColour = Macro,
            .glowReach = 7};
        return RenderKey(frame, key);
    };
}

Painter DialogButtonPainter(const SFrame& frame) {
    return [=](int) { return RenderKey(frame, {.rect = {3, 3, 107, 39}, .radius = 4}); };
}

Painter HighQualityPainter(const SFrame& frame) {
    return [=](int index) {
        const bool on = index == 1;
        CPen pen(frame);
        const SRect badge{8.4, 4.8, 11.2, 10.4};
        if (on)
            pen.FillRound(badge, 2, Ivory);
        else
            pen.StrokeRound(badge.Inset(0.35), 1.7, 0.6, Hex(0x757B83));
        pen.Text("HQ", badge.CentreX(), badge.CentreY(), {.size = 6.3, .face = EFace::Bold},
            on ? Hex(0x15171A) : Hex(0x989EA6));
        return pen.Result();
    };
}

/// Small, and in its frame's corner: it lies over the corner of the settings key.
Painter LampPainter(const SFrame& frame) {
    return [=](int index) {
        const bool on = index == 1;
        constexpr double x = 5.2;
        constexpr double y = 5.2;
        const auto shape = [](double u, double v) -> SSurface {
            const double edge = std::hypot(u - x, v - y) - 3.1;
            if (edge >= 0) return {};
            return {RoundedEdge(edge, 0.8, 0.8), &Gap};
        };
        CBitmap bitmap = RenderRelief(frame, shape, {.shadow = 0.3, .reach = 2});
        CPen pen(frame);
        if (on) {
            for (int i = 6; i > 0; --i) pen.Disc(x, y, 2.2 + 0.42 * i, MeterAmber.WithAlpha(0.10));
        }
        pen.Disc(x, y, 2.1, on ? MeterAmber : Hex(0x4A3D22));
        pen.Disc(x - 0.6, y - 0.7, 0.7, Hex(0xFFFFFF).WithAlpha(on ? 0.8 : 0.2));
        bitmap.Over(pen.Result());
        return bitmap;
    };
}

} // namespace KAV::Artwork
