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

Painter WordSwitch(const SFrame& frame, std::string_view title, std::span<const std::string_view> words) {
    return [=, list = std::vector<std::string_view>(words.begin(), words.end())](int index) {
        const double w = frame.width / frame.scaleX;
        const double h = frame.height / frame.scaleY;
        const bool tall = h > 40;
        const SKey key{.rect = {2, 2, w - 4, h - 4}, .radius = 4};
        CBitmap bitmap = RenderKey(frame, key);
        CPen pen(frame);
        const double middle = tall ? 0.46 * h : 0.60 * h;
        pen.Text(title, w / 2, tall ? 14.5 : 10, {.size = 7, .face = EFace::Bold, .tracking = 0.5}, InkQuiet);
        pen.Text(list[static_cast<std::size_t>(index)], w / 2, middle + (tall ? 3 : 2),
            {.size = 11, .face = EFace::Bold}, Hex(0xFFFFFF));
        if (tall) {
            for (int i = 0; i < static_cast<int>(list.size()); ++i)
                pen.Disc(
                    w / 2 + (i - 1) * 8, h - 13, i == index ? 2.0 : 1.5, i == index ? Ivory : Hex(0x5B6067));
        }
        bitmap.Over(pen.Result());
        return bitmap;
    };
}

constexpr std::array<std::string_view, 3> RendererWords{"CPU", "OpenGL", "Direct3D9"};
constexpr std::array<std::string_view, 2> SimdWords{"Off", "On"};

} // namespace

Painter RendererSwitchPainter(const SFrame& frame) {
    return WordSwitch(frame, "RENDERER", RendererWords);
}

Painter SimdSwitchPainter(const SFrame& frame) {
    return WordSwitch(frame, "SIMD", SimdWords);
}

} // namespace KAV::Artwork
