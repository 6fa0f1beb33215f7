#pragma once

#include "gfx/ogl/textures.h"
#include "gfx/picture_part.h"
#include "pixels/sheet.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace KAV::GFX::OGL {

/// What a texture of this renderer is: a picture in a grid of cells, as stored and at the sizes in which its
/// cells are in use. The hardware shrinks pictures badly, so that cells are scaled by software, once for each
/// size, and kept while frames draw with them. Threads: the window's.
class CPicture final {
public:
    /// Of a stored picture, which is decoded at its first draw, and again for each new size.
    CPicture(std::shared_ptr<const Pixels::ISheet> a_piSheet, std::int32_t a_nTexW, std::int32_t a_nTexH);
    /// Of pixels without gaps between their rows, in the upper left corner of a texture of that size.
    CPicture(Pixels::SBitmap a_sPixels, std::int32_t a_nTexW, std::int32_t a_nTexH);
    CPicture(const CPicture&) = delete;
    CPicture& operator=(const CPicture&) = delete;
    ~CPicture() = default; ///< Free() has been called, or the context has ended

    std::int32_t Width() const noexcept { return _nW; } ///< as stored, in pixels
    std::int32_t Height() const noexcept { return _nH; }
    std::int32_t TextureW() const noexcept { return _nTexW; }
    std::int32_t TextureH() const noexcept { return _nTexH; }
    /// A stored picture's own, else that of the record.
    Pixels::SImageGrid Grid(const Pixels::SImageGrid& a_sOfRecord) const noexcept;

    /// The picture as stored; null if it can't be had. Throws what decoding throws, and std::bad_alloc.
    SObject* Stored(CTextures& a_piTextures);
    /// For a picture that takes only a part of its texture, which can't repeat it: the picture with a margin
    /// of its opposite edges, one pixel wide. Null if it can't be had.
    SObject* Tile(CTextures& a_piTextures);
    /// A texture with the cells at a size; while it stretches at the size that is there and nearest to it.
    struct SCells {
        SObject* psObject = nullptr; ///< null: it can't be had
        std::int32_t nCellW = 0;
        std::int32_t nCellH = 0;
        /// A cell in the texture, in its pixels.
        SPart Cell(std::int32_t a_nColumn, std::int32_t a_nRow) const noexcept;
    };
    SCells Cells(CTextures& a_piTextures, const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW,
        std::int32_t a_nCellH, bool a_bStretching);
    /// After a frame: gives up sizes that it didn't draw with, if it drew with others.
    void DropUnused(CTextures& a_piTextures) noexcept;
    void Free(CTextures& a_piTextures) noexcept;

private:
    struct SSize {
        std::int32_t nCellW;
        std::int32_t nCellH;
        Pixels::SImageGrid sGrid;
        std::unique_ptr<SObject> psObject;
        bool bUsed;
    };
    SSize* Find(const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW, std::int32_t a_nCellH,
        bool a_bNearest) noexcept;
    Pixels::SBitmap Scaled(
        const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW, std::int32_t a_nCellH) const;

    std::shared_ptr<const Pixels::ISheet> _piSheet; // null: there are pixels
    Pixels::SBitmap _sPixels;
    std::int32_t _nW;
    std::int32_t _nH;
    std::int32_t _nTexW;
    std::int32_t _nTexH;
    SObject _sStored;
    SObject _sTile;
    std::vector<SSize> _vsSizes;
};

} // namespace KAV::GFX::OGL
