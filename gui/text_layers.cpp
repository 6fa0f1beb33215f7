#include "gui/text_layers.h"

#include "utils/exceptions.h"

#include <algorithm>
#include <cstddef>
#include <new>

namespace KAV::GUI {

namespace {

constexpr std::size_t PixelBytes = 4;
constexpr std::uint32_t Opaque = 255;
constexpr std::int32_t OutOfMemory = 3; // as GDI+ numbers its errors
constexpr std::int32_t WrongState = 8;

std::size_t Bytes(const Pixels::SBitmap& a_sBitmap) noexcept {
    return static_cast<std::size_t>(a_sBitmap.stride) * static_cast<std::size_t>(a_sBitmap.height);
}

std::uint8_t* Row(Pixels::SBitmap& a_rsBitmap, std::int32_t y) noexcept {
    return a_rsBitmap.bytes.data() +
           static_cast<std::size_t>(a_rsBitmap.stride) * static_cast<std::size_t>(y);
}

const std::uint8_t* Row(const Pixels::SBitmap& a_sBitmap, std::int32_t y) noexcept {
    return a_sBitmap.bytes.data() + static_cast<std::size_t>(a_sBitmap.stride) * static_cast<std::size_t>(y);
}

} // namespace

Pixels::SBitmap EmptyLayer(std::int32_t a_nWidth, std::int32_t a_nHeight, std::u16string_view a_sName) try {
    const std::int32_t stride = a_nWidth * static_cast<std::int32_t>(PixelBytes);
    Pixels::SBitmap layer{a_nWidth, a_nHeight, stride, Pixels::EAlpha::Premultiplied, {}};
    layer.bytes.resize(Bytes(layer));
    return layer;
} catch (const std::bad_alloc&) {
    throw Exceptions::GDIPImage(a_sName, a_nWidth, a_nHeight, OutOfMemory);
}

Pixels::SBitmap TextLayer(IPictures& a_piPictures, const SLettering& a_sLettering, std::int32_t a_nWidth,
    std::int32_t a_nHeight, std::u16string_view a_sName) try {
    auto layer = a_piPictures.Letter(a_sLettering, a_nWidth, a_nHeight);
    if (layer.bytes.empty()) return layer;
    if (layer.width != a_nWidth || layer.height != a_nHeight || layer.bytes.size() < Bytes(layer))
        throw Exceptions::GDIPImage(a_sName, a_nWidth, a_nHeight, WrongState);
    return layer;
} catch (const std::bad_alloc&) {
    throw Exceptions::GDIPImage(a_sName, a_nWidth, a_nHeight, OutOfMemory);
}

void CopyLayer(
    const Pixels::SBitmap& a_sLayer, std::int32_t a_nX, std::int32_t a_nY, Pixels::SBitmap& a_rsTo) noexcept {
    const std::int32_t left = std::max(a_nX, 0);
    const std::int32_t right = std::min(a_sLayer.width + a_nX, a_rsTo.width);
    if (left >= right) return;
    const auto count = static_cast<std::size_t>(right - left) * PixelBytes;
    for (std::int32_t y = std::max(a_nY, 0); y < std::min(a_sLayer.height + a_nY, a_rsTo.height); ++y) {
        const auto* const from = Row(a_sLayer, y - a_nY) + static_cast<std::size_t>(left - a_nX) * PixelBytes;
        std::copy_n(from, count, Row(a_rsTo, y) + static_cast<std::size_t>(left) * PixelBytes);
    }
}

void CoverLayer(const Pixels::SBitmap& a_sLayer, Pixels::SBitmap& a_rsTo) noexcept {
    for (std::int32_t y = 0; y < std::min(a_sLayer.height, a_rsTo.height); ++y) {
        const auto* from = Row(a_sLayer, y);
        auto* to = Row(a_rsTo, y);
        for (std::int32_t x = 0; x < std::min(a_sLayer.width, a_rsTo.width);
             ++x, from += PixelBytes, to += PixelBytes) {
            const std::uint32_t rest = Opaque - from[3];
            for (std::size_t n = 0; n < PixelBytes; ++n)
                to[n] = static_cast<std::uint8_t>(std::min(from[n] + to[n] * rest / Opaque, Opaque));
        }
    }
}

} // namespace KAV::GUI
