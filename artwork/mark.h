#pragma once

#include "artwork/pen.h"

namespace KAV::Artwork {

/// The maker's mark: a peak that runs into a ceiling. Centred on (x, y), `size` high.
void DrawMark(CPen& pen, double x, double y, double size, const SColour& colour, const SColour& ceiling);

} // namespace KAV::Artwork
