#pragma once

#include "gfx/renderers.h"

#include <vector>

namespace KAV::Bench {

struct SCase {
    const char* name;
    GFX::SRendererRow renderer;
    bool drawsIntoWindow; ///< it gets a window; otherwise something that takes its pictures
};
/// The renderers of this system.
std::vector<SCase> Cases();

/// Seconds of processor time that this process has taken.
double ProcessTime();

} // namespace KAV::Bench
