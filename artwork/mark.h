#pragma once

#include "artwork/pen.h"

namespace KAV::Artwork {

/// The vendor's mark: a peak that hits a ceiling. Centred on (x, y), `size` high; its strokes are `weight` of
/// that wide.
void DrawMark(CPen& pen, double x, double y, double size, const SColour& colour, const SColour& ceiling,
    double weight = 0.10);

} // namespace KAV::Artwork
