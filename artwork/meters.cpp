#include "artwork/palette.h"
#include "artwork/pen.h"
#include "artwork/pictures.h"
#include "artwork/scales.h"
#include "artwork/shapes.h"
#include "artwork/studio.h"

namespace KAV::Artwork {

namespace {

/// Green up to -12 dB, through amber at -6 dB to red from -1 dB up.
SColour LevelColour(double value) {
    const double amber = SmoothStep(0.55, 0.80, value);
    const double red = SmoothStep(0.90, 0.955, value);
    return Mix(Mix(MeterGreen, MeterAmber, amber), MeterRed, red);
}

SColour Unlit(const SColour& lit) {
    return Mix(Hex(0x1B1E22), lit, 0.09);
}

} // namespace

Painter MeterPainter(const SFrame& frame) {
    return [=](int index) {
        CPen pen(frame);
        const double step = frame.height / frame.scaleY / MeterSegments;
        for (int i = 0; i < MeterSegments; ++i) {
            const SRect cell{
                MeterLeft, (MeterSegments - 1 - i) * step + 0.5, MeterRight - MeterLeft, step - 1};
            const SColour colour = LevelColour((i + 0.5) / MeterSegments);
            if (i >= index) {
                pen.FillRound(cell, 0.6, Unlit(colour));
                continue;
            }
            pen.FillRound(cell, 0.6, colour);
            pen.Fill({cell.x + 0.5, cell.y, cell.w - 1, 0.5}, Mix(colour, Hex(0xFFFFFF), 0.35));
        }
        return pen.Result();
    };
}

/// Stands below a button, which covers the upper half of its frame; the button above the next row covers the
/// end.
Painter ChannelMeterPainter(const SFrame& frame) {
    return [=](int index) {
        constexpr int segments = 15;
        CPen pen(frame);
        const double left = 2;
        const double step = (frame.width / frame.scaleX - 2 * left) / segments;
        pen.FillRound({left - 1, 0.5, frame.width / frame.scaleX - 2 * left + 2, 4.6}, 1, Well);
        for (int i = 0; i < segments; ++i) {
            const SColour colour = LevelColour((i + 0.5) / segments);
            const SRect cell{left + i * step + 0.35, 1.35, step - 0.7, 2.9};
            pen.FillRound(cell, 0.4, i < index ? colour : Unlit(colour));
        }
        return pen.Result();
    };
}

} // namespace KAV::Artwork
