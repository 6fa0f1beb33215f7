#include "gfx/cpu/gdiplus/picture.h"

#include <cmath>

namespace KAV::GFX::CPU {

namespace {

constexpr float LongestCell = 8192.0f; // pixels; longer ones are left to the draw

Gdiplus::PixelFormat FormatOf(Pixels::EAlpha a_nAlpha) noexcept {
    switch (a_nAlpha) {
    case Pixels::EAlpha::None:
        return PixelFormat32bppRGB;
    case Pixels::EAlpha::Straight:
        return PixelFormat32bppARGB;
    case Pixels::EAlpha::Premultiplied:
        break;
    }
    return PixelFormat32bppPARGB;
}

/// A whole number of pixels above 0; 0 if it is none.
std::int32_t WholePixels(float a_fSide) noexcept {
    constexpr float tolerance = 0.001f;
    if (!(a_fSide > 0.5f) || a_fSide > LongestCell) return 0;
    const float fRound = std::round(a_fSide);
    return std::abs(a_fSide - fRound) < tolerance ? static_cast<std::int32_t>(fRound) : 0;
}

/// Which of `a_nCells` cells begins and ends there; -1: none.
std::int32_t CellOf(float a_fFrom, float a_fTo, std::int32_t a_nCells) noexcept {
    constexpr float tolerance = 0.01f;
    const float fBegin = a_fFrom * static_cast<float>(a_nCells);
    const float fEnd = a_fTo * static_cast<float>(a_nCells);
    const float fCell = std::round(fBegin);
    const bool bWhole = std::abs(fBegin - fCell) < tolerance && std::abs(fEnd - fCell - 1.0f) < tolerance;
    return bWhole && fCell >= 0.0f && fCell < static_cast<float>(a_nCells) ? static_cast<std::int32_t>(fCell)
                                                                           : -1;
}

} // namespace

void CGdipBitmap::Reset() noexcept {
    const auto* const gdi = Platform::Gdiplus();
    if (_piBitmap != nullptr && gdi != nullptr) gdi->GdipDisposeImage(_piBitmap);
    _piBitmap = nullptr;
    _piPixels.reset();
}

CGdipBitmap Sharing(std::shared_ptr<const Pixels::SBitmap> a_piPixels) noexcept {
    const auto* const gdi = Platform::Gdiplus();
    if (gdi == nullptr || a_piPixels->bytes.empty()) return {};
    Gdiplus::GpBitmap* piBitmap = nullptr;
    // It is only read from.
    const BYTE* const pBytes = a_piPixels->bytes.data();
    if (gdi->GdipCreateBitmapFromScan0(a_piPixels->width, a_piPixels->height, a_piPixels->stride,
            FormatOf(a_piPixels->alpha), const_cast<BYTE*>(pBytes), // NOLINT(*-const-cast)
            &piBitmap) != Gdiplus::Ok)
        return {};
    return {piBitmap, std::move(a_piPixels)};
}

Gdiplus::GpBitmap* CPicture::Whole() {
    if (!_iWhole && _piSheet != nullptr)
        _iWhole = Sharing(std::make_shared<const Pixels::SBitmap>(_piSheet->Decoded()));
    return _iWhole.Get();
}

CPicture::SCell CPicture::CellAt(
    float a_fU1, float a_fU2, float a_fV1, float a_fV2, float a_fW, float a_fH, bool a_bStretching) {
    if (_piSheet == nullptr) return {};
    const auto& grid = _piSheet->Grid();
    const std::int32_t nColumn = CellOf(a_fU1, a_fU2, grid.columns);
    const std::int32_t nRow = CellOf(a_fV1, a_fV2, grid.rows);
    const std::int32_t nW = WholePixels(a_fW);
    const std::int32_t nH = WholePixels(a_fH);
    if (nColumn < 0 || nRow < 0 || nW == 0 || nH == 0) return {};
    const bool bOther = nW != _nCellW || nH != _nCellH || !_iCells;
    if (bOther && !(a_bStretching && _iCells)) {
        _iCells = Sharing(_piSheet->Cells(nW, nH));
        _nCellW = nW;
        _nCellH = nH;
    }
    const auto fW = static_cast<float>(_nCellW);
    const auto fH = static_cast<float>(_nCellH);
    return {_iCells.Get(), static_cast<float>(nColumn) * fW, static_cast<float>(nRow) * fH, fW, fH};
}

} // namespace KAV::GFX::CPU
