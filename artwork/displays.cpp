#include "artwork/buttons.h"
#include "artwork/mark.h"
#include "artwork/palette.h"
#include "artwork/pictures.h"
#include "artwork/shapes.h"
#include "artwork/sunk.h"

#include <array>

namespace KAV::Artwork {

Painter DisplayPainter(const SFrame& frame) {
    return [=](int) {
        const double w = frame.width / frame.scaleX;
        const double h = frame.height / frame.scaleY;
        return RenderSunk(
            frame, {.rect = {2, 2, w - 4, h - 4}, .radius = 2.8, .depth = 1.4, .ground = &Glass});
    };
}

/// The corners are a third of the picture each; what lies between them is stretched.
Painter HintPainter(const SFrame& frame) {
    return [=](int) {
        CPen pen(frame);
        const SRect rect{0.75, 0.75, 11, 11};
        pen.FillRound(rect, 2.6, Hex(0x0B0C0E).WithAlpha(0.94));
        pen.StrokeRound(rect.Inset(0.4), 2.2, 0.5, Hex(0x7F858E).WithAlpha(0.9));
        return pen.Result();
    };
}

/// White, because the toolkit gives it its colour.
Painter LogoPainter(const SFrame& frame) {
    return [=](int) {
        CPen pen(frame);
        DrawMark(pen, 56.5, 27, 40, Hex(0xFFFFFF), Hex(0xFFFFFF));
        pen.Text("KAVELIN", 56.5, 62, {.size = 15, .face = EFace::Bold, .tracking = 3.2}, Hex(0xFFFFFF));
        return pen.Result();
    };
}

namespace {

constexpr SColour White = Hex(0xFFFFFF);
constexpr SLettering TitleStyle{.size = 7, .face = EFace::Bold, .tracking = 0.5};

} // namespace

/// One of three words, and three dots that tell where it stands among them.
Painter RendererSwitchPainter(const SFrame& frame) {
    return [=](int index) {
        constexpr std::array<std::string_view, 3> words{"CPU", "OpenGL", "Direct3D9"};
        CBitmap bitmap = RenderKey(frame, {.rect = {2, 2, 56, 56}, .radius = 4});
        CPen pen(frame);
        pen.Text("RENDERER", 30, 14.5, TitleStyle, InkQuiet);
        pen.Text(words[static_cast<std::size_t>(index)], 30, 30, {.size = 9.4, .face = EFace::Bold}, White);
        for (int i = 0; i < 3; ++i)
            pen.Disc(22 + 8 * i, 45.5, i == index ? 2.0 : 1.5, i == index ? Ivory : LampDark);
        bitmap.Over(pen.Result());
        return bitmap;
    };
}

Painter SimdSwitchPainter(const SFrame& frame) {
    return [=](int index) {
        const bool on = index == 1;
        const SKey key{.rect = {2, 2, 56, 30},
            .radius = 4,
            .pressed = on,
            .lit = on,
            .lamp = {8, 19, 9, 3.6},
            .lampColour = Ivory};
        CBitmap bitmap = RenderKey(frame, key);
        CPen pen(frame);
        pen.Text("SIMD", 30, 10, TitleStyle, InkQuiet);
        pen.Text(on ? "On" : "Off", 36, 20.8, {.size = 10, .face = EFace::Bold}, on ? White : Ink);
        bitmap.Over(pen.Result());
        return bitmap;
    };
}

} // namespace KAV::Artwork
