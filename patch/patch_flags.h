#pragma once

#include <cstdint>

namespace KAV {

/// What a patch text contains in addition to parameters and macros, and which parts of it a reader takes.
enum PatchFlag : std::uint32_t {
    FxNames = 1,          ///< the names of the groups; read whenever present
    Routing = 2,          ///< the routing documents; read whenever present
    GuiWidth = 4,         ///< the width of the editor
    Simd = 8,             ///< the switch for vector code
    AgcSettings = 16,     ///< the settings of the automatic gain
    EffectiveValues = 64, ///< written: values as heard, macro offsets included
    GroupsParallel = 128, ///< how the groups are connected
};

/// What a host's project contains. Bit 32 has no meaning and is always set here.
inline constexpr std::uint32_t HostChunkFlags = 191;
/// What a new instance takes from the default patch.
inline constexpr std::uint32_t InstanceDefaultFlags = 188;

static_assert(HostChunkFlags == (FxNames | Routing | GuiWidth | Simd | AgcSettings | 32 | GroupsParallel));
static_assert(InstanceDefaultFlags == (GuiWidth | Simd | AgcSettings | 32 | GroupsParallel));

} // namespace KAV
