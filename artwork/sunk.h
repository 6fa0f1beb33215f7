#pragma once

#include "artwork/geometry.h"
#include "artwork/relief.h"

namespace KAV::Artwork {

/// An area that lies below the panel: a display, a slot, a section. The panel around it is not drawn.
struct SSunk {
    SRect rect; ///< its ground; the bevel lies around it
    double radius = 3;
    double depth = 1.5;
    double bevel = 0.9;
    const SMaterial* ground = nullptr;
};

CBitmap RenderSunk(const SFrame& frame, const SSunk& sunk);

/// The same, laid over a larger picture at the place that `sunk.rect` names there.
void CarveSunk(CBitmap& bitmap, const SFrame& frame, const SSunk& sunk);

} // namespace KAV::Artwork
