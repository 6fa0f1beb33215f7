#include "artwork/buttons.h"
#include "artwork/palette.h"
#include "artwork/pictures.h"
#include "artwork/studio.h"

#include <cmath>

namespace KAV::Artwork {

namespace {

constexpr SColour SymbolRest = Hex(0xC6CBD1);
constexpr SColour SymbolOn = Hex(0xFFFFFF);
constexpr SColour SymbolDisabled = Hex(0x62676E);

/// Draws a symbol around (0, 0) in a colour.
using Symbol = std::function<void(CPen& pen, const SColour& colour)>;

CBitmap SymbolKey(const SFrame& frame, const SKey& key, const Symbol& symbol, const SColour& colour) {
    CBitmap bitmap = RenderKey(frame, key);
    CPen pen(frame);
    cairo_translate(pen.Path(), key.rect.CentreX(), key.rect.CentreY() + (key.pressed ? 0.4 : 0));
    symbol(pen, colour);
    bitmap.Over(pen.Result());
    return bitmap;
}

/// The two frames of a key with a symbol: at rest, and pressed or on.
Painter TwoStates(const SFrame& frame, const SRect& rect, double radius, const Symbol& symbol) {
    return [=](int index) {
        return SymbolKey(frame, {.rect = rect, .radius = radius, .pressed = index == 1}, symbol,
            index == 1 ? SymbolOn : SymbolRest);
    };
}

void Folder(CPen& pen, const SColour& colour) {
    auto* path = pen.Path();
    cairo_new_path(path);
    cairo_move_to(path, -6, 4.2);
    cairo_line_to(path, -6, -4.2);
    cairo_line_to(path, -2, -4.2);
    cairo_line_to(path, -0.6, -2.6);
    cairo_line_to(path, 4.6, -2.6);
    cairo_line_to(path, 4.6, -0.9);
    pen.StrokePath(1.15, colour);
    cairo_move_to(path, -6, 4.2);
    cairo_line_to(path, -3.8, -0.9);
    cairo_line_to(path, 6.6, -0.9);
    cairo_line_to(path, 4.4, 4.2);
    cairo_close_path(path);
    pen.StrokePath(1.15, colour);
}

void Disk(CPen& pen, const SColour& colour) {
    auto* path = pen.Path();
    cairo_new_path(path);
    cairo_move_to(path, -5, -5);
    cairo_line_to(path, 3, -5);
    cairo_line_to(path, 5, -3);
    cairo_line_to(path, 5, 5);
    cairo_line_to(path, -5, 5);
    cairo_close_path(path);
    pen.StrokePath(1.15, colour);
    pen.Fill({-2.6, -4.6, 4.6, 2.7}, colour);
    pen.StrokeRound({-3, 0.6, 6, 4.4}, 0.3, 0.95, colour);
}

/// A turn to the left with an arrow head; mirrored for redo.
void Turn(CPen& pen, const SColour& colour) {
    auto* path = pen.Path();
    cairo_new_path(path);
    cairo_move_to(path, -5, -1.6);
    cairo_line_to(path, 2, -1.6);
    cairo_arc(path, 2, 1.5, 3.1, -Pi / 2, Pi / 2);
    cairo_line_to(path, -2.6, 4.6);
    pen.StrokePath(1.3, colour);
    cairo_move_to(path, -2.4, -4.6);
    cairo_line_to(path, -5.6, -1.6);
    cairo_line_to(path, -2.4, 1.4);
    pen.StrokePath(1.3, colour);
}

void Pencil(CPen& pen, const SColour& colour) {
    auto* path = pen.Path();
    cairo_new_path(path);
    cairo_move_to(path, -5, 5);
    cairo_line_to(path, -4.1, 1.9);
    cairo_line_to(path, 2.6, -4.8);
    cairo_line_to(path, 4.8, -2.6);
    cairo_line_to(path, -1.9, 4.1);
    cairo_close_path(path);
    pen.StrokePath(1.15, colour);
    pen.Line(1.0, -3.2, 3.2, -1.0, 1.0, colour);
}

void Gear(CPen& pen, const SColour& colour) {
    auto* path = pen.Path();
    constexpr int teeth = 8;
    cairo_new_path(path);
    for (int i = 0; i < teeth; ++i) {
        const double middle = 2 * Pi * i / teeth;
        const auto point = [&](double turn, double radius) {
            cairo_line_to(path, radius * std::sin(middle + turn), -radius * std::cos(middle + turn));
        };
        point(-0.29, 4.2);
        point(-0.17, 5.7);
        point(0.17, 5.7);
        point(0.29, 4.2);
    }
    cairo_close_path(path);
    cairo_new_sub_path(path);
    cairo_arc(path, 0, 0, 1.9, 0, 2 * Pi);
    cairo_set_fill_rule(path, CAIRO_FILL_RULE_EVEN_ODD);
    pen.FillPath(colour);
}

void Chevron(CPen& pen, double dx, double dy, const SColour& colour) {
    auto* path = pen.Path();
    cairo_new_path(path);
    cairo_move_to(path, -dx * 1.6 - dy * 3.2, -dy * 1.6 - dx * 3.2);
    cairo_line_to(path, dx * 1.6, dy * 1.6);
    cairo_line_to(path, -dx * 1.6 + dy * 3.2, -dy * 1.6 + dx * 3.2);
    pen.StrokePath(1.5, colour);
}

/// Two sheets, one behind the other.
void Sheets(CPen& pen, const SColour& colour) {
    auto* path = pen.Path();
    cairo_new_path(path);
    cairo_move_to(path, -3.6, 4);
    cairo_line_to(path, -7, 4);
    cairo_line_to(path, -7, -8);
    cairo_line_to(path, 3, -8);
    cairo_line_to(path, 3, -5);
    pen.StrokePath(1.5, colour);
    pen.StrokeRound({-3, -4.4, 10, 12}, 1, 1.5, colour);
    pen.Line(-0.2, -0.6, 4.2, -0.6, 1.1, colour);
    pen.Line(-0.2, 1.8, 4.2, 1.8, 1.1, colour);
    pen.Line(-0.2, 4.2, 2.4, 4.2, 1.1, colour);
}

} // namespace

Painter CopyPainter(const SFrame& frame) {
    return TwoStates(frame, {9, 19, 30, 24}, 3, [](CPen& pen, const SColour& colour) {
        cairo_scale(pen.Path(), 0.95, 0.95);
        Sheets(pen, colour);
    });
}

Painter DropDownPainter(const SFrame& frame) {
    return TwoStates(
        frame, {2, 2, 16, 16}, 2.5, [](CPen& pen, const SColour& colour) { Chevron(pen, 0, 1, colour); });
}

Painter EditPainter(const SFrame& frame) {
    return TwoStates(
        frame, {2, 2, 41, 19}, 2.8, [](CPen& pen, const SColour& colour) { Pencil(pen, colour); });
}

Painter LoadPainter(const SFrame& frame) {
    return TwoStates(frame, {1.8, 2, 40.4, 18}, 2.8, Folder);
}

Painter SavePainter(const SFrame& frame) {
    return TwoStates(frame, {1.8, 2, 40.4, 18}, 2.8, Disk);
}

/// Stands on a display, so it has no key of its own: pressing it lights the arrow up.
Painter StepPainter(const SFrame& frame, bool forward) {
    return [=](int index) {
        CPen pen(frame);
        if (index == 1) pen.FillRound({1.5, 1.5, 13, 13}, 2, Hex(0x5A6068));
        cairo_translate(pen.Path(), 8, 8);
        Chevron(pen, forward ? 1 : -1, 0, index == 1 ? SymbolOn : Hex(0xA6ACB4));
        return pen.Result();
    };
}

/// At rest, without a step to take, pressed.
Painter HistoryPainter(const SFrame& frame, bool forward) {
    return [=](int index) {
        const auto symbol = [forward](CPen& pen, const SColour& colour) {
            if (forward) cairo_scale(pen.Path(), -1, 1);
            Turn(pen, colour);
        };
        const SColour colours[] = {SymbolRest, SymbolDisabled, SymbolOn};
        return SymbolKey(frame, {.rect = {1.8, 2, 40.4, 18}, .radius = 2.8, .pressed = index == 2}, symbol,
            colours[index]);
    };
}

/// A, A pressed, B, B pressed.
Painter SlotPainter(const SFrame& frame) {
    return [=](int index) {
        const auto symbol = [index](CPen& pen, const SColour& colour) {
            pen.Text(index < 2 ? "A" : "B", 0, 0, {.size = 11, .face = EFace::Bold}, colour);
        };
        return SymbolKey(frame, {.rect = {1.8, 2, 20, 18}, .radius = 2.8, .pressed = index % 2 == 1}, symbol,
            index % 2 == 1 ? SymbolOn : SymbolRest);
    };
}

/// The toolkit turns this picture by half when the direction of the copy does.
Painter SlotCopyPainter(const SFrame& frame) {
    return [=](int index) {
        const auto symbol = [](CPen& pen, const SColour& colour) {
            auto* path = pen.Path();
            cairo_new_path(path);
            cairo_move_to(path, -4.6, 0);
            cairo_line_to(path, 4.2, 0);
            pen.StrokePath(1.4, colour);
            cairo_move_to(path, 1.4, -3.2);
            cairo_line_to(path, 4.8, 0);
            cairo_line_to(path, 1.4, 3.2);
            pen.StrokePath(1.4, colour);
        };
        return SymbolKey(frame, {.rect = {5.5, 2, 16, 18}, .radius = 2.8, .pressed = index == 1}, symbol,
            index == 1 ? SymbolOn : SymbolRest);
    };
}

Painter SettingsPainter(const SFrame& frame) {
    return TwoStates(frame, {1.5, 1.5, 16, 16}, 2.8, Gear);
}

Painter ResizePainter(const SFrame& frame) {
    return [=](int) {
        CPen pen(frame);
        for (int i = 0; i < 3; ++i) {
            const double away = 2.6 + 3.0 * i;
            pen.Line(11 - away, 10.9, 10.9, 11 - away, 0.9, Hex(0x8F959D));
        }
        return pen.Result();
    };
}

} // namespace KAV::Artwork
