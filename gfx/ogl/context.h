#pragma once

#include "gfx/renderer_row.h"
#include "platform/opengl_functions.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace KAV::GFX::OGL {

/// A context of OpenGL in a window, as the system makes it: by WGL on Windows, by EGL on Linux. On Windows
/// the context has a child of the window to itself, on Linux where the window's visual can't be drawn with.
/// Threads: the window's.
class CContext final {
public:
    /// Makes it, and makes it current. Throws KAV::Exceptions::OGL with the function that refused, and
    /// SPassedOver without touching any library if there is no hardware that the reason asks for.
    CContext(const SRendererTarget& a_sTarget, EReason a_nReason);
    ~CContext();
    CContext(const CContext&) = delete;
    CContext& operator=(const CContext&) = delete;

    /// Whether a driver that draws in software is to be passed over.
    static bool AsksForHardware(EReason a_nReason) noexcept;
    /// What a failed MakeCurrent() of a frame is called.
    static std::u16string_view RedrawCall() noexcept;
    /// What a failed Swap() is called.
    static std::u16string_view SwapCall() noexcept;

    const Platform::SOpenGL& Functions() const noexcept;
    bool IsCurrent() const noexcept;
    // False: Error() says why.
    bool MakeCurrent() noexcept;
    bool Swap() noexcept;
    void Resize(std::int32_t a_nW, std::int32_t a_nH) noexcept;
    std::uint32_t Error() const noexcept; ///< of the last call that failed
    /// It can't be used any more, but another one can be made for the same window.
    bool IsLost() const noexcept;

private:
    struct SParts;
    std::unique_ptr<SParts> _piParts;
};

} // namespace KAV::GFX::OGL
