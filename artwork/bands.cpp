#include "artwork/labels.h"
#include "artwork/mark.h"
#include "artwork/palette.h"
#include "artwork/pen.h"
#include "artwork/pictures.h"
#include "artwork/scales.h"
#include "artwork/studio.h"
#include "artwork/sunk.h"

namespace KAV::Artwork {

namespace {

/// One plate of the front: lacquer under the studio's lamp, which reaches all three bands as one light.
CBitmap Plate(const SFrame& frame, const SRect& band, const SColour& colour) {
    CBitmap bitmap(frame.width, frame.height);
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            const double u = band.x + (x + 0.5) / frame.scaleX;
            const double v = band.y + (y + 0.5) / frame.scaleY;
            const double away = std::hypot((u - 230) / 520, (v - 40) / 430);
            const double lamp = 0.90 + 0.20 * std::exp(-away * away);
            const SLight light = Decode(colour) * static_cast<float>(lamp * lamp);
            bitmap.At(x, y) = Encode(light);
        }
    }
    CPen pen(frame);
    const double w = band.w;
    pen.Fill({0, 0, w, 0.5}, Hex(0xFFFFFF).WithAlpha(0.13));
    pen.Fill({0, 0.5, w, 0.5}, Hex(0xFFFFFF).WithAlpha(0.05));
    pen.Fill({0, band.h - 0.5, w, 0.5}, Hex(0x000000).WithAlpha(0.55));
    pen.Fill({0, band.h - 1, w, 0.5}, Hex(0x000000).WithAlpha(0.3));
    bitmap.Over(pen.Result());
    return bitmap;
}

bool IsNumber(ETone tone) {
    return tone == ETone::Number || tone == ETone::Fine;
}

SLettering StyleOf(const SLabel& label) {
    SLettering style{.size = LetteringSize(label.tone)};
    style.align = label.align < 0 ? EAlign::Left : label.align > 0 ? EAlign::Right : EAlign::Centre;
    if (IsNumber(label.tone))
        style.weight = 0.22; // thin strokes turn grey when the panel is small
    else
        style.face = EFace::Bold;
    if (label.tone == ETone::Section) style.tracking = 0.9;
    if (label.tone == ETone::Product) style.tracking = 0.9;
    return style;
}

/// Scales and lettering of a band, filled into fine grooves: each has a dark edge towards the lamp.
CBitmap Engraving(const SFrame& frame, EBand band) {
    const SRect rect = BandRect(band);
    CPen pen(frame);
    cairo_translate(pen.Path(), -rect.x, -rect.y);
    for (const auto& line : ScaleLinesOf(band))
        pen.Line(line.x0, line.y0, line.x1, line.y1, line.major ? 0.95 : 0.6,
            Line.WithAlpha(line.major ? 1 : 0.6));
    for (const auto& label : LabelsOf(band)) {
        const SColour colour = IsNumber(label.tone) ? InkQuiet : Ink;
        pen.Text(label.text, label.x - 0.3, label.y - 0.4, StyleOf(label), Hex(0x000000).WithAlpha(0.5));
        pen.Text(label.text, label.x, label.y, StyleOf(label), colour);
    }
    return pen.Result();
}

} // namespace

Painter TopBarPainter(const SFrame& frame) {
    return [=](int) {
        CBitmap bitmap = Plate(frame, BandRect(EBand::Top), Hex(0x32363C));
        CarveSunk(
            bitmap, frame, {.rect = {12, 22.6, 72.4, 20.8}, .radius = 2.8, .depth = 1.4, .ground = &Glass});
        CPen pen(frame);
        for (const double x : {112.0, 574.0, 698.0}) {
            pen.Fill({x, 8, 0.5, 68}, Hex(0x000000).WithAlpha(0.4));
            pen.Fill({x + 0.5, 8, 0.5, 68}, Hex(0xFFFFFF).WithAlpha(0.07));
        }
        bitmap.Over(pen.Result());
        bitmap.Over(Engraving(frame, EBand::Top));
        return bitmap;
    };
}

Painter BodyPainter(const SFrame& frame) {
    return [=](int) {
        const SRect band = BandRect(EBand::Body);
        CBitmap bitmap = Plate(frame, band, Graphite);
        const auto carve = [&](SSunk sunk) {
            sunk.rect = sunk.rect.Moved(0, -band.y);
            CarveSunk(bitmap, frame, sunk);
        };
        for (const double x : {8.0, 156.0, 502.0, 650.0})
            carve({.rect = {x - 0.5, 121, 98, 314}, .radius = 2, .depth = 1.2, .ground = &Glass});
        for (const double x : {140.5, 302.5, 472.5, 634.5})
            carve({.rect = {x - 1.8, 118 + FaderMaximumY - 5, 3.6, FaderMinimumY - FaderMaximumY + 10},
                .radius = 1.8,
                .depth = 2.4,
                .ground = &Gap});
        carve({.rect = {GainReductionRect().x - 3, GainReductionRect().y - 3, GainReductionRect().w + 6,
                   GainReductionRect().h + 6},
            .radius = 3,
            .depth = 1.8,
            .ground = &Glass});
        bitmap.Over(Engraving(frame, EBand::Body));
        return bitmap;
    };
}

Painter ToolbarPainter(const SFrame& frame) {
    return [=](int) {
        const SRect band = BandRect(EBand::Toolbar);
        CBitmap bitmap = Plate(frame, band, Hex(0x32363C));
        static constexpr SMaterial ground{.colour = Hex(0x2A2D32), .roughness = 0.7f, .sheen = 0.4f};
        CarveSunk(bitmap, frame, {.rect = {157, 4, 442, 77}, .radius = 4, .depth = 0.9, .ground = &ground});
        CPen pen(frame);
        for (const double x : {246.0, 334.0, 422.0, 510.0}) {
            pen.Fill({x - 0.5, 10, 0.5, 65}, Hex(0x000000).WithAlpha(0.4));
            pen.Fill({x, 10, 0.5, 65}, Hex(0xFFFFFF).WithAlpha(0.06));
        }
        DrawMark(pen, 637, 30, 16, InkQuiet, Reduction);
        bitmap.Over(pen.Result());
        bitmap.Over(Engraving(frame, EBand::Toolbar));
        return bitmap;
    };
}

} // namespace KAV::Artwork
