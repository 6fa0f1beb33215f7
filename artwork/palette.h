#pragma once

#include "artwork/relief.h"

namespace KAV::Artwork {

// Every colour of the panel, each with its meaning.

inline constexpr SColour Graphite = Hex(0x2D3035);     ///< the body
inline constexpr SColour GraphiteDeep = Hex(0x25282C); ///< sunk areas of it
inline constexpr SColour Well = Hex(0x111316);         ///< the ground of displays, meters and slots
inline constexpr SColour Ink = Hex(0xD3D7DC);          ///< names
inline constexpr SColour InkQuiet = Hex(0xB9BFC6);     ///< numbers of scales, units
inline constexpr SColour Line = Hex(0x8B919A);         ///< lines of scales
inline constexpr SColour Ivory = Hex(0xF4F0E4);        ///< pointers, and lamps of plain switches
inline constexpr SColour Reduction = Hex(0xFF3968);    ///< gain reduction and what belongs to it
inline constexpr SColour MeterGreen = Hex(0x4CC48B);
inline constexpr SColour MeterAmber = Hex(0xF2B441);
inline constexpr SColour MeterRed = Hex(0xF0513F);
inline constexpr SColour Solo = Hex(0xF7F3A2);
inline constexpr SColour Mute = Hex(0xFF8E7B);
inline constexpr SColour Macro = Hex(0xA7CDDF);
inline constexpr SColour LampDark = Hex(0x50545B); ///< a lamp that is off

// Materials: one set for the whole family.

inline constexpr SMaterial Lacquer{.colour = Hex(0x393D43), .roughness = 0.55f, .sheen = 0.9f};
inline constexpr SMaterial LacquerPressed{.colour = Hex(0x2B2E33), .roughness = 0.6f, .sheen = 0.6f};
inline constexpr SMaterial Body{.colour = Graphite, .roughness = 0.7f, .sheen = 0.5f};
inline constexpr SMaterial Gap{.colour = Hex(0x0D0E10), .roughness = 0.9f, .sheen = 0.1f};
inline constexpr SMaterial Glass{.colour = Well, .roughness = 0.8f, .sheen = 0.15f};
inline constexpr SMaterial Anodised{.colour = Hex(0x4A4E54), .metal = 0.3f, .roughness = 0.4f, .sheen = 1.8f};
inline constexpr SMaterial Rubber{.colour = Hex(0x212327), .roughness = 0.5f, .sheen = 1.5f};
inline constexpr SMaterial Aluminium{
    .colour = Hex(0xC4C7CC), .metal = 1, .roughness = 0.3f, .grain = EGrain::Turned, .grainSpread = 0.46f};
inline constexpr SMaterial Polished{.colour = Hex(0xDDE0E4), .metal = 1, .roughness = 0.28f};
inline constexpr SMaterial Cut{
    .colour = Hex(0xA3A7AD), .metal = 0.9f, .roughness = 0.34f}; ///< an edge, cut bright
inline constexpr SMaterial Inlay{.colour = Ivory, .roughness = 0.6f, .sheen = 0.3f, .glow = 0.12f};

} // namespace KAV::Artwork
