#pragma once

#include "gfx/gpu.h"
#include "gfx/renderer_row.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>

/// Which renderers there are, and which of them an editor gets. Threads: that of the window.
namespace KAV::GFX {

/// The numbers of the renderers, as the settings keep them.
inline constexpr std::uint32_t Software = 0;
inline constexpr std::uint32_t OpenGL = 1;
inline constexpr std::uint32_t Direct3D9 = 2;
inline constexpr std::uint32_t Direct2D = 3;
inline constexpr std::size_t RendererCount = 4;
inline constexpr std::uint32_t DefaultRenderer = Direct3D9;

/// By number.
using RendererTable = std::array<SRendererRow, RendererCount>;

/// The table in use: that of this build, unless a test has put another in its place.
const RendererTable& Renderers() noexcept;
/// For tests: the table of the whole process from now on; null means that of this build.
void UseRenderers(const RendererTable* a_pTable) noexcept;

struct SCreatedRenderer {
    std::unique_ptr<GPU> piGPU; ///< ready; null if no renderer is
    /// The one that was tried last: the one that is ready, or the end of the chain. The settings take it over
    /// when it is ready and not the one they hold, so that the next session starts with what worked.
    std::uint32_t nRenderer = Software;

    bool IsReady() const noexcept { return piGPU != nullptr; }
    /// The renderer, or the base in its place.
    GPU& Get() const noexcept { return piGPU != nullptr ? *piGPU : NoRenderer(); }
};

/// Makes the renderer of that number. One that doesn't get ready is ended, the session log gets a line and
/// the user a box, and the next one is tried: Direct3D 9, OpenGL, Direct2D, software, none. A renderer that
/// this build or this system doesn't have, or that passes itself over, gets the line alone. An unknown number
/// makes none. Nothing throws.
SCreatedRenderer CreateRenderer(void* a_pWindow, std::int32_t a_nW, std::int32_t a_nH,
    std::uint32_t a_nRenderer, const ShowError& a_piShowError) noexcept;
/// With the boxes of the system.
SCreatedRenderer CreateRenderer(
    void* a_pWindow, std::int32_t a_nW, std::int32_t a_nH, std::uint32_t a_nRenderer) noexcept;

} // namespace KAV::GFX
