#pragma once

#include "gfx/gpu.h"

#include <cstdint>
#include <memory>
#include <string_view>

/// What a back end says of itself. Threads: that of the window.
namespace KAV::GFX {

/// A window of the system's own, and the size of what is drawn into it.
struct SRendererTarget {
    void* pWindow = nullptr;
    std::int32_t nW = 0;
    std::int32_t nH = 0;
};

enum class EReason {
    Chosen,  ///< the user's setting, or the default
    FallBack ///< another one has failed; OpenGL is then ready only with a driver of the graphics hardware
};

/// May throw, and may return null: both are renderers that aren't ready.
using RendererFactory = std::unique_ptr<GPU> (*)(const SRendererTarget& a_sTarget, EReason a_nReason);

struct SRendererRow {
    std::u16string_view sName; ///< as GPU::GetName()
    RendererFactory pCreate;   ///< null: there is none yet
    bool bOnThisSystem;        ///< false: this system has no such graphics
};
// The back ends, each defined in its folder.
SRendererRow SoftwareRenderer() noexcept; ///< gfx/cpu

} // namespace KAV::GFX
