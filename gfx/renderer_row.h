#pragma once

#include "gfx/gpu.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

/// What a back end says of itself. Threads: that of the window.
namespace KAV::GFX {

/// Shows an error; the call may end long before or after the user has closed it.
using ShowError = std::function<void(std::u16string_view a_sTitle, std::u16string_view a_sText)>;

/// A window of the system's own, and the size of what is drawn into it.
struct SRendererTarget {
    void* pWindow = nullptr;
    std::int32_t nW = 0;
    std::int32_t nH = 0;
    const ShowError* pShowError = nullptr; ///< while the renderer is made; null: nothing is shown
};

enum class EReason {
    Chosen,  ///< the user's setting, or the default
    FallBack ///< another one has failed; on Linux OpenGL is then one only with a driver of the hardware
};

/// Thrown by a factory: on this machine the renderer is one only for a user who chooses it, so that it is
/// passed over as one that the system doesn't have.
struct SPassedOver {};

/// May throw, and may return null: both are renderers that aren't ready.
using RendererFactory = std::unique_ptr<GPU> (*)(const SRendererTarget& a_sTarget, EReason a_nReason);

struct SRendererRow {
    std::u16string_view sName; ///< as GPU::GetName()
    RendererFactory pCreate;   ///< null: there is none yet
    bool bOnThisSystem;        ///< false: this system has no such graphics
};
// The back ends, each defined in its folder.
SRendererRow SoftwareRenderer() noexcept; ///< gfx/cpu
SRendererRow OpenGLRenderer() noexcept;   ///< gfx/ogl
SRendererRow Direct3DRenderer() noexcept; ///< gfx/d3d
SRendererRow Direct2DRenderer() noexcept; ///< gfx/d2d

} // namespace KAV::GFX
