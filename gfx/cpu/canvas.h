#pragma once

#include "gfx/call_log.h"
#include "gfx/cpu/areas.h"
#include "pixels/bitmap.h"
#include "pixels/pixel_memory.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace KAV::GFX::CPU {

/// A premultiplied picture in memory from which draws take their pixels. Throws std::bad_alloc.
class CSource final {
public:
    /// The bitmap has bytes, and a stride that is a multiple of 4.
    explicit CSource(std::shared_ptr<const Pixels::SBitmap> a_piBitmap);
    ~CSource();
    CSource(const CSource&) = delete;
    CSource& operator=(const CSource&) = delete;

    std::int32_t Width() const noexcept { return _piBitmap->width; }
    std::int32_t Height() const noexcept { return _piBitmap->height; }
    /// 0xAARRGGBB from the left.
    const std::uint32_t* Row(std::int32_t y) const noexcept {
        return reinterpret_cast<const std::uint32_t*>(
            _piBitmap->bytes.data() +
            static_cast<std::size_t>(y) * static_cast<std::size_t>(_piBitmap->stride));
    }
    /// Not one pixel lets something through.
    bool IsOpaque() const noexcept { return _bOpaque; }
    /// No other source of the process ever has the same.
    std::uint64_t Serial() const noexcept { return _nSerial; }

private:
    friend class CCanvas;
    std::shared_ptr<const Pixels::SBitmap> _piBitmap;
    std::uint64_t _nSerial;
    bool _bOpaque;
    void* _piImage; // of this system's library; never null
};

/// The pixels of the frame, and what this system's library does with them. Threads: the window's.
class CCanvas final {
public:
    CCanvas() = default;
    ~CCanvas();
    CCanvas(const CCanvas&) = delete;
    CCanvas& operator=(const CCanvas&) = delete;

    /// Loads the library and writes its version to the session log. False, with a line there, if it can't.
    bool Start(CCallLog& a_rsLog);
    /// A black frame of that size, both sides 1 or more. False, with a line in the log and without a frame,
    /// if there is no memory.
    bool Resize(std::int32_t a_nW, std::int32_t a_nH, CCallLog& a_rsLog);
    /// Without a frame; true if there was one.
    bool Release() noexcept;
    bool IsReady() const noexcept { return _piImage != nullptr; }

    SArea Bounds() const noexcept { return {0, 0, _nW, _nH}; }
    /// 0xAARRGGBB from the left; alpha is always 0xFF.
    std::uint32_t* Row(std::int32_t y) noexcept {
        return _vnPixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(_nW);
    }
    const std::uint32_t* Pixels() const noexcept { return _vnPixels.data(); }

    // All areas lie within the frame.
    void Blacken(const SArea& a_sArea) noexcept;
    /// Lays a picture over the area: the pixel at x, y is laid over with that at x + a_nDX, y + a_nDY, which
    /// is inside of it unless it repeats. The colour multiplies each channel of the picture, rounded to a
    /// whole number, before it is laid over. Throws std::bad_alloc.
    void Lay(const CSource& a_piSource, const SArea& a_sArea, std::int32_t a_nDX, std::int32_t a_nDY,
        std::uint32_t a_nColor, bool a_bRepeat);

private:
    void* Tint(std::uint32_t a_nColor);
    void* Scratch(std::int32_t a_nW, std::int32_t a_nH);

    std::vector<std::uint32_t, Pixels::CPixelMemory<std::uint32_t>> _vnPixels;
    std::int32_t _nW = 0;
    std::int32_t _nH = 0;
    // Of the library; null until there is one.
    void* _piImage = nullptr;
    void* _piTint = nullptr; // a picture of one colour, the last one that was asked for
    std::uint32_t _nTint = 0;
    void* _piScratch = nullptr; // for a tinted picture before it is laid over
    std::vector<std::uint32_t> _vnScratch;
    std::int32_t _nScratchW = 0;
    std::int32_t _nScratchH = 0;
};

} // namespace KAV::GFX::CPU
