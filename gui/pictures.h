#pragma once

#include "pixels/bitmap.h"

#include <cstdint>
#include <memory>
#include <string>

namespace KAV::GUI {

/// A line of text as it is to be drawn into a picture.
struct SLettering {
    std::u16string sText;
    std::u16string sFont;      ///< family
    float fPixels = 0.0f;      ///< size
    std::int32_t nAlign = 4;   ///< 3 x row + column, see SWidgetInfo::nTextAlign
    std::int32_t nQuality = 3; ///< see SWidgetInfo::nTextQuality
    std::uint32_t nColor = 0;  ///< 0xAARRGGBB
    bool bBold = false, bItalic = false;
    bool bEllipsis = false;      ///< a text that is too long ends in one
    std::int32_t nL = 0, nT = 0; ///< the box of the text, in pixels of the picture
    std::int32_t nW = 0, nH = 0;

    bool operator==(const SLettering&) const = default;
};

struct SPixelSize {
    float fW = 0.0f, fH = 0.0f;

    bool operator==(const SPixelSize&) const = default;
};

/// Where pictures come from: those that are stored, and those of texts. The base has none and measures
/// nothing. Threads: the window's. May take long. Throws what KAV::Exceptions has, and when memory is short.
class IPictures {
public:
    IPictures() = default;
    virtual ~IPictures() = default;
    IPictures(const IPictures&) = delete;
    IPictures& operator=(const IPictures&) = delete;

    /// By its name, which may have a grid; each frame of `a_nW` by `a_nH` pixels, -1: as stored. With
    /// `a_nBlur` a white silhouette, blurred, with room for the blur around it. Null: there is none.
    virtual std::unique_ptr<Pixels::SBitmap> LoadImage(const std::u16string& /*name*/, std::int32_t /*a_nW*/,
        std::int32_t /*a_nH*/, std::int32_t /*a_nBlur*/) {
        return nullptr;
    }
    /// A picture of that size with the text in it, transparent around it.
    virtual Pixels::SBitmap Letter(const SLettering&, std::int32_t a_nW, std::int32_t a_nH) {
        return Pixels::TransparentBitmap(a_nW, a_nH);
    }
    /// The size of a text in one line.
    virtual SPixelSize Measure(const SLettering&) { return {}; }
    /// Whether texts look different from now on, because a font has been found that they need.
    virtual bool HasNewTexts() { return false; }
};

} // namespace KAV::GUI
