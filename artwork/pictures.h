#pragma once

#include "artwork/layout.h"
#include "artwork/relief.h"

#include <functional>

namespace KAV::Artwork {

/// Draws frame `index` of a picture. Any thread; the result depends only on the index.
using Painter = std::function<CBitmap(int index)>;

/// The frame of a picture, in its own pixels.
inline SFrame FrameOf(const SSprite& sprite) {
    return {sprite.FrameWidth(), sprite.FrameHeight(), sprite.FrameWidth() / sprite.panelWidth,
        sprite.FrameHeight() / sprite.panelHeight};
}

// One function for each family of pictures; each may prepare what its frames share.
Painter FaderPainter(const SFrame& frame);
Painter MainKnobPainter(const SFrame& frame);
Painter MacroKnobPainter(const SFrame& frame);
Painter SensitivityKnobPainter(const SFrame& frame);
Painter MeterPainter(const SFrame& frame);
Painter ChannelMeterPainter(const SFrame& frame);

Painter LimiterButtonPainter(const SFrame& frame);
Painter AutoReleaseButtonPainter(const SFrame& frame);
Painter ChannelButtonPainter(const SFrame& frame);
Painter MacroButtonPainter(const SFrame& frame);
Painter DialogButtonPainter(const SFrame& frame);
Painter HighQualityPainter(const SFrame& frame);
Painter LampPainter(const SFrame& frame);

Painter CopyPainter(const SFrame& frame);
Painter DropDownPainter(const SFrame& frame);
Painter EditPainter(const SFrame& frame);
Painter LoadPainter(const SFrame& frame);
Painter SavePainter(const SFrame& frame);
Painter StepPainter(const SFrame& frame, bool forward);
Painter HistoryPainter(const SFrame& frame, bool forward);
Painter SlotPainter(const SFrame& frame);
Painter SlotCopyPainter(const SFrame& frame);
Painter SettingsPainter(const SFrame& frame);
Painter ResizePainter(const SFrame& frame);

Painter DisplayPainter(const SFrame& frame);
Painter HintPainter(const SFrame& frame);
Painter LogoPainter(const SFrame& frame);
Painter RendererSwitchPainter(const SFrame& frame);
Painter SimdSwitchPainter(const SFrame& frame);

Painter TopBarPainter(const SFrame& frame);
Painter BodyPainter(const SFrame& frame);
Painter ToolbarPainter(const SFrame& frame);

/// The painter of a picture by its name; throws std::out_of_range.
Painter PainterOf(const SSprite& sprite);

/// The finished picture, its frames drawn by as many threads as the machine has.
SPixels Paint(const SSprite& sprite);

} // namespace KAV::Artwork
