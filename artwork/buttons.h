#pragma once

#include "artwork/geometry.h"
#include "artwork/pen.h"
#include "artwork/relief.h"

namespace KAV::Artwork {

/// A key of the panel: a lacquered face in a dark gap, with a lamp if that has a width. A pressed key lies
/// lower.
struct SKey {
    SRect rect;
    double radius = 3;
    double gap = 0.9;
    bool pressed = false;
    bool lit = false;
    SRect lamp{};
    SColour lampColour{};
    double glowReach = 5;
};

CBitmap RenderKey(const SFrame& frame, const SKey& key);

/// Light of the key's lamp on its own face.
void AddGlow(CBitmap& bitmap, const SFrame& frame, const SKey& key, double strength);

} // namespace KAV::Artwork
