#pragma once

#include "gfx/gpu.h"

#include <string_view>

namespace KAV::GFX {

/// Warns in the session log if a texture, in its own pixels, exceeds what the renderer takes: a side that
/// isn't below its maximum, or too great a ratio of the longer side to the shorter one. Limits of 0 aren't
/// checked. It only warns: the texture is made all the same.
void CheckTexture(std::u16string_view a_sName, std::int32_t a_nW, std::int32_t a_nH, const GPU& a_piGPU);

} // namespace KAV::GFX
