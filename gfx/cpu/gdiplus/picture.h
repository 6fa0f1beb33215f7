#pragma once

#include "pixels/bitmap.h"
#include "pixels/sheet.h"
#include "platform/winapi/gdiplus_library.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace KAV::GFX::CPU {

/// A bitmap of GDI+ with the pixels that it shares. Threads: that of the window.
class CGdipBitmap final {
public:
    CGdipBitmap() = default;
    /// Takes the bitmap over; `a_piPixels`, if there are any, live as long as it.
    CGdipBitmap(Gdiplus::GpBitmap* a_piBitmap, std::shared_ptr<const Pixels::SBitmap> a_piPixels) noexcept
        : _piBitmap(a_piBitmap), _piPixels(std::move(a_piPixels)) {}
    ~CGdipBitmap() { Reset(); }
    CGdipBitmap(CGdipBitmap&& a_rOther) noexcept
        : _piBitmap(std::exchange(a_rOther._piBitmap, nullptr)), _piPixels(std::move(a_rOther._piPixels)) {}
    CGdipBitmap& operator=(CGdipBitmap&& a_rOther) noexcept {
        if (this == &a_rOther) return *this;
        Reset();
        _piBitmap = std::exchange(a_rOther._piBitmap, nullptr);
        _piPixels = std::move(a_rOther._piPixels);
        return *this;
    }
    CGdipBitmap(const CGdipBitmap&) = delete;
    CGdipBitmap& operator=(const CGdipBitmap&) = delete;

    Gdiplus::GpBitmap* Get() const noexcept { return _piBitmap; }
    explicit operator bool() const noexcept { return _piBitmap != nullptr; }

private:
    void Reset() noexcept;

    Gdiplus::GpBitmap* _piBitmap = nullptr;
    std::shared_ptr<const Pixels::SBitmap> _piPixels;
};

/// A bitmap of GDI+ over these pixels. Empty without memory.
CGdipBitmap Sharing(std::shared_ptr<const Pixels::SBitmap> a_piPixels) noexcept;

/// The picture of a texture: pixels as they were handed over, or a stored sheet of sprites. What is drawn
/// most are cells of a sheet at their size in the window; these are scaled once, by the same code as on every
/// other system, instead of by each draw.
class CPicture final {
public:
    explicit CPicture(CGdipBitmap a_iWhole) noexcept : _iWhole(std::move(a_iWhole)) {}
    explicit CPicture(std::shared_ptr<const Pixels::ISheet> a_piSheet) noexcept
        : _piSheet(std::move(a_piSheet)) {}

    /// Null without memory. Throws KAV::Exceptions::GDIPImage if a stored picture can't be decoded.
    Gdiplus::GpBitmap* Whole();

    /// Where a draw finds its pixels at the size in which it needs them.
    struct SCell {
        Gdiplus::GpBitmap* piBitmap = nullptr; ///< null: take the part of the whole picture
        float fL = 0.0f, fT = 0.0f, fW = 0.0f, fH = 0.0f;
    };
    /// The part of the picture, in fractions of it, if that is one cell of its grid, at a size in pixels.
    /// While `a_bStretching`, no further size is made.
    SCell CellAt(
        float a_fU1, float a_fU2, float a_fV1, float a_fV2, float a_fW, float a_fH, bool a_bStretching);

private:
    std::shared_ptr<const Pixels::ISheet> _piSheet;
    CGdipBitmap _iWhole;
    CGdipBitmap _iCells; // at the size that was asked for last
    std::int32_t _nCellW = 0, _nCellH = 0;
};

} // namespace KAV::GFX::CPU
