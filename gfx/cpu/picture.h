#pragma once

#include "gfx/cpu/canvas.h"
#include "pixels/bitmap.h"
#include "pixels/image_name.h"
#include "pixels/sheet.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace KAV::GFX::CPU {

/// What a texture of this renderer is: a picture in a grid of cells, at the sizes in which its cells are in
/// use. Scaling takes long, so that each size is made once and kept while frames draw with it. Threads: the
/// window's.
class CPicture final {
public:
    /// Of a stored picture, which is decoded at its first draw, and again for each new size.
    explicit CPicture(std::shared_ptr<const Pixels::ISheet> a_piSheet);
    /// Of premultiplied pixels.
    explicit CPicture(Pixels::SBitmap a_sPixels);

    std::int32_t Width() const noexcept { return _nW; } ///< as stored, in pixels
    std::int32_t Height() const noexcept { return _nH; }
    /// A stored picture's own, else that of the record.
    Pixels::SImageGrid Grid(const Pixels::SImageGrid& a_sOfRecord) const noexcept;

    /// The picture with cells of that size, or while it stretches of the size that is there and nearest to
    /// it. Valid until DropUnused(). Throws what decoding throws, and std::bad_alloc.
    const CSource& Cells(
        const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW, std::int32_t a_nCellH, bool a_bStretching);
    /// The picture as stored.
    const CSource& Stored(const Pixels::SImageGrid& a_sGrid);
    /// After a frame: gives up sizes that it didn't draw with, if it drew with others.
    void DropUnused() noexcept;

private:
    struct SSize {
        std::int32_t nCellW;
        std::int32_t nCellH;
        Pixels::SImageGrid sGrid;
        std::unique_ptr<const CSource> piSource;
        bool bUsed;
    };
    SSize* Find(const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW, std::int32_t a_nCellH,
        bool a_bNearest) noexcept;
    std::shared_ptr<const Pixels::SBitmap> Make(
        const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW, std::int32_t a_nCellH) const;

    std::shared_ptr<const Pixels::ISheet> _piSheet;   // either this
    std::shared_ptr<const Pixels::SBitmap> _piPixels; // or that
    std::int32_t _nW;
    std::int32_t _nH;
    std::vector<SSize> _vsSizes;
};

} // namespace KAV::GFX::CPU
