#pragma once

#include "gfx/call_log.h"
#include "pixels/bitmap.h"
#include "pixels/image_name.h"
#include "platform/opengl_functions.h"

#include <cstdint>

namespace KAV::GFX::OGL {

/// A texture of OpenGL's. Sides are those of the texture itself, in pixels.
struct SObject {
    std::uint32_t nName = 0; ///< 0: there is none
    std::int32_t nTexW = 0;
    std::int32_t nTexH = 0;
    bool bRepeats = true; ///< what lies beyond it: the picture again, or its outermost pixels
};

/// Makes textures and frees them. The context is current in every call. Threads: the window's.
class CTextures final {
public:
    CTextures(const Platform::SOpenGL& a_sGl, CCallLog& a_rsLog, std::int32_t a_nMostPixels, bool a_bAnySize,
        bool a_bClampsToEdge) noexcept
        : _sGl(a_sGl), _iLog(a_rsLog), _nMostPixels(a_nMostPixels), _bAnySize(a_bAnySize),
          _bClampsToEdge(a_bClampsToEdge) {}

    bool AnySize() const noexcept { return _bAnySize; }
    bool CanHold(std::int32_t a_nW, std::int32_t a_nH) const noexcept {
        return a_nW <= _nMostPixels && a_nH <= _nMostPixels;
    }
    /// A picture without gaps between its rows, straight or opaque, in the upper left corner of a texture of
    /// that size. Without a name if it fails.
    SObject Make(const Pixels::SBitmap& a_sPicture, std::int32_t a_nTexW, std::int32_t a_nTexH);
    void Free(SObject& a_rsObject) const noexcept;
    /// The next draws use it, and find that beyond it.
    void Bind(SObject& a_rsObject, bool a_bRepeat) const noexcept;

private:
    const Platform::SOpenGL& _sGl;
    CCallLog& _iLog;
    std::int32_t _nMostPixels;
    bool _bAnySize;
    bool _bClampsToEdge; // OpenGL 1.1 mixes in the colour of a border instead
};

/// What lies around a cell.
enum class EMargin { Outermost, Wrapped };

/// Straight pixels of a premultiplied picture, whose cells get a margin: a_nMargin times their outermost
/// pixels, or those of the opposite edge. A draw between pixels then never meets the next cell. What is
/// wholly transparent gets the colour of what is next to it, which shows where a draw mixes the two.
Pixels::SBitmap StraightCells(const Pixels::SBitmap& a_sFrom, const Pixels::SImageGrid& a_sGrid,
    std::int32_t a_nMargin, EMargin a_nKind = EMargin::Outermost);

/// The same picture, straight or opaque, without gaps between its rows.
Pixels::SBitmap Straight(const Pixels::SBitmap& a_sFrom);

} // namespace KAV::GFX::OGL
