#pragma once

#include "artwork/colour.h"

namespace KAV::Artwork {

/// Whether a surface was turned on a lathe: its fine grooves draw highlights out across themselves.
enum class EGrain { None, Turned };

/// What a surface is made of.
struct SMaterial {
    SColour colour;         ///< of the light that it scatters, or, for a metal, mirrors
    float metal = 0;        ///< 0 lacquer or plastic, 1 metal
    float roughness = 0.5f; ///< 0 mirror, 1 chalk
    EGrain grain = EGrain::None;
    float grainSpread = 0; ///< how far the grooves tilt the surface, as a tangent
    float sheen = 1;       ///< how much of the mirrored light of a lacquer is kept
    float glow = 0;        ///< light that it emits, in units of its colour
};

} // namespace KAV::Artwork
