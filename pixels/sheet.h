#pragma once

#include "pixels/bitmap.h"
#include "pixels/image_name.h"

#include <cstdint>
#include <memory>

namespace KAV::Pixels {

/// A stored picture of one or more frames ("cells") in a grid, which is decoded only when its pixels are
/// needed and isn't kept decoded. What is kept, once per process, are its cells at the sizes in use.
/// Threads: any. Both operations that make pixels may take long; they throw KAV::Exceptions::GDIPImage with
/// the picture's name if it can't be decoded, and std::bad_alloc.
class ISheet {
public:
    ISheet() = default;
    virtual ~ISheet() = default;
    ISheet(const ISheet&) = delete;
    ISheet& operator=(const ISheet&) = delete;

    virtual std::int32_t Width() const noexcept = 0; ///< of the whole picture as stored, in pixels
    virtual std::int32_t Height() const noexcept = 0;
    virtual const SImageGrid& Grid() const noexcept = 0;

    /// The picture with each cell scaled by itself to that size: columns x cellWidth by rows x cellHeight
    /// pixels, premultiplied. At the stored size the pixels are the stored ones, only premultiplied. All
    /// callers that ask for one size share one picture as long as any of them holds it. Both sizes are 1 or
    /// more.
    virtual std::shared_ptr<const SBitmap> Cells(std::int32_t cellWidth, std::int32_t cellHeight) const = 0;
    /// The whole picture at its stored size, straight alpha.
    virtual SBitmap Decoded() const = 0;
};

} // namespace KAV::Pixels
