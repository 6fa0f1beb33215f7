// What Direct2D draws, and the bitmaps that it draws from.

#include "gfx/d2d/data.h"

#include "gfx/picture_part.h"
#include "gfx/pixel_format.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <utility>

namespace KAV::GFX::D2D {

namespace {

constexpr SFlatMatrix Unmoved{};
constexpr std::uint32_t Colors = 0xFFFFFFU;
constexpr std::int32_t BlendLength = 256; // pixels from one colour of a line to the other
// Of pixels whose centres lie exactly on the edge of a line, the ones to the right and below count, as GDI+
// has it.
constexpr float Nudge = 1.0f / 128.0f;

std::uint32_t Byte(float a_fComponent) noexcept {
    if (!(a_fComponent > 0.0f)) return 0;
    return static_cast<std::uint32_t>(std::min(a_fComponent, 1.0f) * 255.0f);
}

float Share(std::uint32_t a_nColor, unsigned a_nShift) noexcept {
    return static_cast<float>(a_nColor >> a_nShift & 0xFFU) / 255.0f;
}

D2D1_COLOR_F ColorOf(std::uint32_t a_nColor) noexcept {
    return {Share(a_nColor, 16), Share(a_nColor, 8), Share(a_nColor, 0), Share(a_nColor, 24)};
}

D2D1_RECT_F RectOf(const SRect& a_sRect) noexcept {
    return {a_sRect.fL, a_sRect.fT, a_sRect.fL + a_sRect.fW, a_sRect.fT + a_sRect.fH};
}

SPicture* PictureOf(const STexture& a_rsTexture) noexcept {
    return std::bit_cast<SPicture*>(static_cast<std::uintptr_t>(a_rsTexture.piGDIP));
}

SFlatMatrix FlatOf(const SRect& a_sTo, const STransform& a_sTransform) noexcept {
    return a_sTransform.IsNeutral() ? Unmoved : FlatPart(MatrixOf(a_sTo, a_sTransform));
}

} // namespace

// Textures

bool DATA::MakeBitmap(CObject<ID2D1Bitmap1>& a_rsBitmap, const SPicturePixels& a_sPixels) {
    const D2D1_BITMAP_PROPERTIES1 sProperties{{DXGI_FORMAT_B8G8R8A8_UNORM, D2D1_ALPHA_MODE_PREMULTIPLIED},
        Dpi, Dpi, D2D1_BITMAP_OPTIONS_NONE, nullptr};
    const D2D1_SIZE_U sSize{static_cast<UINT32>(a_sPixels.nW), static_cast<UINT32>(a_sPixels.nH)};
    Check(_pCalls->CreateBitmap(_piContext.Get(), sSize, a_sPixels.vnPixels.data(),
              static_cast<UINT32>(a_sPixels.nW) * 4, &sProperties, a_rsBitmap.Fill(*_pCalls)),
        u"_piContext->CreateBitmap(sSize, a_pBits, a_nPitch, sProperties, &piBitmap)");
    return static_cast<bool>(a_rsBitmap);
}

bool DATA::MakeImage(SImage& a_rsImage, SPicturePixels a_sPixels) {
    for (auto& iChannel : a_rsImage.viChannels) iChannel.Reset();
    a_rsImage.sPixels = {};
    a_rsImage.nW = a_sPixels.nW;
    a_rsImage.nH = a_sPixels.nH;
    if (!MakeBitmap(a_rsImage.iBitmap, a_sPixels)) return false;
    if (!_piTint) a_rsImage.sPixels = std::move(a_sPixels);
    return true;
}

bool DATA::MakeChannels(SImage& a_rsImage) {
    constexpr std::array<std::uint32_t, 4> vnMasks{0xFF000000U, 0xFF0000U, 0xFF00U, 0xFFU};
    for (std::size_t n = 0; n < vnMasks.size(); ++n) {
        if (a_rsImage.viChannels[n]) continue;
        SPicturePixels sChannel = a_rsImage.sPixels;
        for (auto& nPixel : sChannel.vnPixels) nPixel &= vnMasks[n];
        if (!MakeBitmap(a_rsImage.viChannels[n], sChannel)) return false;
    }
    return true;
}

void DATA::Adopt(STexture& a_rsTexture, std::unique_ptr<SPicture> a_piPicture) {
    _vpiPictures.push_back(std::move(a_piPicture));
    a_rsTexture.piGDIP = std::bit_cast<std::uintptr_t>(_vpiPictures.back().get());
}

void DATA::CreateTextureBits(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
    STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH, std::int32_t, std::int32_t) {
    if (!IsReady()) return;
    auto sPixels = PixelsOf(a_pBits, a_nPitch, a_nPixelFormat, a_nW, a_nH, ETextureAlpha::Premultiplied);
    if (sPixels.IsEmpty()) {
        _iLog.Failed(u"CreateTextureBits(a_pBits, a_nPitch, a_nPixelFormat)", InvalidParameter);
        return;
    }
    auto piPicture = std::make_unique<SPicture>();
    if (MakeImage(piPicture->sWhole, std::move(sPixels))) Adopt(a_rsTexture, std::move(piPicture));
}

void DATA::CreateTexture(
    const Pixels::SBitmap& a_piBitmap, STexture& a_rsTexture, std::int32_t, std::int32_t) {
    if (!IsReady()) return;
    auto piPicture = std::make_unique<SPicture>();
    if (a_piBitmap.sheet != nullptr) {
        piPicture->piSheet = a_piBitmap.sheet;
        Adopt(a_rsTexture, std::move(piPicture));
        return;
    }
    auto sPixels = PixelsOf(a_piBitmap, ETextureAlpha::Premultiplied);
    if (sPixels.IsEmpty()) {
        _iLog.Failed(u"CreateTexture(a_piBitmap, a_rsTexture, a_nTexW, a_nTexH)", InvalidParameter);
        return;
    }
    if (MakeImage(piPicture->sWhole, std::move(sPixels))) Adopt(a_rsTexture, std::move(piPicture));
}

void DATA::FreeTexture(STexture& a_rsTexture) {
    const auto* const piPicture = PictureOf(a_rsTexture);
    a_rsTexture = FreedTexture();
    std::erase_if(_vpiPictures, [piPicture](const auto& a_piOther) { return a_piOther.get() == piPicture; });
}

bool DATA::MakeWhole(SPicture& a_rsPicture) {
    if (a_rsPicture.sWhole.iBitmap) return true;
    if (a_rsPicture.piSheet == nullptr) return false;
    auto sPixels = PixelsOf(a_rsPicture.piSheet->Decoded(), ETextureAlpha::Premultiplied);
    return !sPixels.IsEmpty() && MakeImage(a_rsPicture.sWhole, std::move(sPixels));
}

bool DATA::MakeCells(SPicture& a_rsPicture, const SCellWish& a_sWish) {
    const bool bThere = static_cast<bool>(a_rsPicture.sCells.iBitmap);
    const bool bFits = bThere && a_rsPicture.nCellW == a_sWish.nW && a_rsPicture.nCellH == a_sWish.nH;
    if (bFits || (bThere && _bStretching)) return true;
    auto sPixels =
        PixelsOf(*a_rsPicture.piSheet->Cells(a_sWish.nW, a_sWish.nH), ETextureAlpha::Premultiplied);
    a_rsPicture.nCellW = a_sWish.nW;
    a_rsPicture.nCellH = a_sWish.nH;
    return !sPixels.IsEmpty() && sPixels.nW < _nMaxBitmap && sPixels.nH < _nMaxBitmap &&
           MakeImage(a_rsPicture.sCells, std::move(sPixels));
}

// Draws

void DATA::SetTransform(const SFlatMatrix& a_sFlat) {
    const auto& [m11, m12, m21, m22, dx, dy] = a_sFlat;
    D2D1_MATRIX_3X2_F sMatrix{};
    sMatrix._11 = m11;
    sMatrix._12 = m12;
    sMatrix._21 = m21;
    sMatrix._22 = m22;
    sMatrix._31 = dx;
    sMatrix._32 = dy;
    _pCalls->SetTransform(_piContext.Get(), &sMatrix);
}

/// By the effect, which has no rectangle to draw into: the matrix stretches the part and moves it there.
void DATA::DrawTinted(
    const SImage& a_sImage, const SPiece& a_sPiece, std::uint32_t a_nColor, const SFlatMatrix& a_sFlat) {
    const auto& [sTo, sFrom] = a_sPiece;
    if (sFrom.fW == 0.0f || sFrom.fH == 0.0f) return;
    D2D1_MATRIX_5X4_F sColors{};
    sColors._11 = Share(a_nColor, 16);
    sColors._22 = Share(a_nColor, 8);
    sColors._33 = Share(a_nColor, 0);
    sColors._44 = Share(a_nColor, 24);
    _pCalls->SetInput(_piTint.Get(), a_sImage.iBitmap.Get());
    if (!Check(_pCalls->SetColorMatrix(_piTint.Get(), &sColors),
            u"_piTint->SetValue(D2D1_COLORMATRIX_PROP_COLOR_MATRIX, sColors)"))
        return;
    CObject<ID2D1Image> piOutput;
    _pCalls->GetOutput(_piTint.Get(), piOutput.Fill(*_pCalls));
    if (!piOutput) return;
    const float fX = sTo.fW / sFrom.fW;
    const float fY = sTo.fH / sFrom.fH;
    const auto& [m11, m12, m21, m22, dx, dy] = a_sFlat;
    SetTransform({fX * m11, fX * m12, fY * m21, fY * m22, sTo.fL * m11 + sTo.fT * m21 + dx,
        sTo.fL * m12 + sTo.fT * m22 + dy});
    const D2D1_RECT_F sPart = RectOf(sFrom);
    _pCalls->DrawImage(_piContext.Get(), piOutput.Get(), &sPart);
    SetTransform(a_sFlat);
}

void DATA::DrawByChannels(SImage& a_rsImage, const SPiece& a_sPiece, std::uint32_t a_nColor) {
    if (!MakeChannels(a_rsImage)) return;
    const D2D1_RECT_F sTo = RectOf(a_sPiece.sTo);
    const D2D1_RECT_F sFrom = RectOf(a_sPiece.sFrom);
    const float fAlpha = Share(a_nColor, 24);
    const std::array<float, 4> vfShares{
        fAlpha, fAlpha * Share(a_nColor, 16), fAlpha * Share(a_nColor, 8), fAlpha * Share(a_nColor, 0)};
    for (std::size_t n = 0; n < vfShares.size(); ++n) {
        if (vfShares[n] == 0.0f) continue;
        _pCalls->DrawBitmap(_piContext.Get(), a_rsImage.viChannels[n].Get(), &sTo, vfShares[n], &sFrom);
    }
}

void DATA::DrawQuad(
    SImage& a_rsImage, const SPiece& a_sPiece, std::uint32_t a_nColor, const SFlatMatrix& a_sFlat) {
    if ((a_nColor & Colors) != Colors && _piTint) {
        DrawTinted(a_rsImage, a_sPiece, a_nColor, a_sFlat);
    } else if ((a_nColor & Colors) != Colors) {
        DrawByChannels(a_rsImage, a_sPiece, a_nColor);
    } else {
        const D2D1_RECT_F sTo = RectOf(a_sPiece.sTo);
        const D2D1_RECT_F sFrom = RectOf(a_sPiece.sFrom);
        _pCalls->DrawBitmap(_piContext.Get(), a_rsImage.iBitmap.Get(), &sTo, Share(a_nColor, 24), &sFrom);
    }
}

void DATA::DrawPiece(
    SPicture& a_rsPicture, const SPiece& a_sPiece, std::uint32_t a_nColor, const SFlatMatrix& a_sFlat) {
    if (const auto* const piSheet = a_rsPicture.piSheet.get()) {
        const auto sWish = CellOf(a_sPiece, piSheet->Grid(), piSheet->Width(), piSheet->Height());
        if (sWish.IsCell() && MakeCells(a_rsPicture, sWish)) {
            const auto fW = static_cast<float>(a_rsPicture.nCellW);
            const auto fH = static_cast<float>(a_rsPicture.nCellH);
            const SRect sCell{
                static_cast<float>(sWish.nColumn) * fW, static_cast<float>(sWish.nRow) * fH, fW, fH};
            DrawQuad(a_rsPicture.sCells, {a_sPiece.sTo, sCell}, a_nColor, a_sFlat);
            return;
        }
    }
    if (!MakeWhole(a_rsPicture)) return;
    auto& sWhole = a_rsPicture.sWhole;
    ForEachTile(a_sPiece, sWhole.nW, sWhole.nH,
        [&](const SPiece& a_sTile) { DrawQuad(sWhole, a_sTile, a_nColor, a_sFlat); });
}

void DATA::DrawTexture(const STexture& a_rsTexture, const SDraw& a_sDraw) {
    if (IsTransparent(a_sDraw.nColor) || !_bInFrame || a_rsTexture.piGDIP == 0) return;
    if (!IsUsable(a_sDraw.sTo) || !IsUsable(a_sDraw.sTransform)) return;
    const auto sFlat = FlatOf(a_sDraw.sTo, a_sDraw.sTransform);
    const auto sPiece = PieceOf(a_rsTexture, a_sDraw);
    if (!IsUsable(sPiece.sFrom)) return;
    SetTransform(sFlat);
    try {
        DrawPiece(*PictureOf(a_rsTexture), sPiece, a_sDraw.nColor, sFlat);
    } catch (...) {
        SetTransform(Unmoved);
        throw;
    }
    SetTransform(Unmoved);
}

void DATA::DrawTexture9(const STexture& a_rsTexture, const SDraw9& a_sDraw) {
    if (IsTransparent(a_sDraw.nColor) || !_bInFrame || a_rsTexture.piGDIP == 0) return;
    if (!IsUsable(a_sDraw.sTo) || !IsUsable(a_sDraw.sTransform)) return;
    auto& sPicture = *PictureOf(a_rsTexture);
    if (!MakeWhole(sPicture)) return;
    const auto sFlat = FlatOf(a_sDraw.sTo, a_sDraw.sTransform);
    SetTransform(sFlat);
    for (const auto& sSlice : SlicesOf(a_rsTexture, a_sDraw)) {
        if (sSlice.sTo.fW > 0.0f && sSlice.sTo.fH > 0.0f && sSlice.sFrom.fW > 0.0f && sSlice.sFrom.fH > 0.0f)
            DrawQuad(sPicture.sWhole, sSlice, a_sDraw.nColor, sFlat);
    }
    SetTransform(Unmoved);
}

// Lines

void DATA::SetLineWidth(float a_fWidth) {
    _fLineWidth = a_fWidth;
}

void DATA::SetLineColor(float a_fR, float a_fG, float a_fB, float a_fA) {
    _nLineColor = Byte(a_fA) << 24U | Byte(a_fR) << 16U | Byte(a_fG) << 8U | Byte(a_fB);
}

void DATA::SetLineSmooth(bool a_bSmooth) {
    _bLineSmooth = a_bSmooth;
}

ID2D1Brush* DATA::BrushOf(std::uint32_t a_nColor) {
    if (!_piBrush) return nullptr;
    const D2D1_COLOR_F sColor = ColorOf(a_nColor);
    _pCalls->SetColor(_piBrush.Get(), &sColor);
    return _piBrush.Get();
}

/// In one colour, with pointed corners.
void DATA::DrawPath(std::span<const SPoint> a_sPath, float a_fWidth) {
    ID2D1Brush* const piBrush = BrushOf(_nLineColor);
    if (piBrush == nullptr || a_sPath.size() < 2) return;
    CObject<ID2D1PathGeometry> piPath;
    Check(_pCalls->CreatePathGeometry(_piFactory.Get(), piPath.Fill(*_pCalls)),
        u"_piFactory->CreatePathGeometry(&piPath)");
    if (!piPath) return;
    CObject<ID2D1GeometrySink> piSink;
    Check(_pCalls->OpenPath(piPath.Get(), piSink.Fill(*_pCalls)), u"piPath->Open(&piSink)");
    if (!piSink) return;
    _vsLinePoints.clear();
    for (const auto& sPoint : a_sPath) _vsLinePoints.push_back({sPoint.fX, sPoint.fY});
    _pCalls->AddLines(piSink.Get(), _vsLinePoints.data(), static_cast<UINT32>(_vsLinePoints.size()));
    if (Check(_pCalls->ClosePath(piSink.Get()), u"piSink->Close()"))
        _pCalls->DrawGeometry(_piContext.Get(), piPath.Get(), piBrush, a_fWidth, _piCorners.Get());
}

/// A row of pixels from one colour to the other. A gradient of the system's would do, but not every system
/// multiplies its colours by their alpha.
bool DATA::MakeBlend(const std::array<std::uint32_t, 2>& a_nColors) {
    if (_piBlend && _nBlendColors == a_nColors) return true;
    std::array<std::uint32_t, BlendLength> sRow{};
    for (std::size_t n = 0; n < sRow.size(); ++n) {
        const float fPlace = static_cast<float>(n) / static_cast<float>(sRow.size() - 1);
        for (unsigned nShift = 0; nShift < 32; nShift += 8) {
            const float fFrom = Share(a_nColors[0], nShift);
            const float fColor = fFrom + (Share(a_nColors[1], nShift) - fFrom) * fPlace;
            sRow[n] |= static_cast<std::uint32_t>(std::lround(fColor * 255.0f)) << nShift;
        }
    }
    constexpr std::int32_t nPitch = BlendLength * 4;
    _nBlendColors = a_nColors;
    return MakeBitmap(
        _piBlend, PixelsOf(sRow.data(), nPitch, Argb32, BlendLength, 1, ETextureAlpha::Premultiplied));
}

/// One line from one colour to the other.
void DATA::DrawBlended(const SPoint& a_sFrom, const SPoint& a_sTo, float a_fWidth) {
    const SPoint sAlong{a_sTo.fX - a_sFrom.fX, a_sTo.fY - a_sFrom.fY};
    const float fLength = std::hypot(sAlong.fX, sAlong.fY);
    if (!(fLength > 0.0f) || !MakeBlend({a_sFrom.nColor, a_sTo.nColor})) return;
    const float fX = sAlong.fX / fLength;
    const float fY = sAlong.fY / fLength;
    const float fNudge = _bLineSmooth ? 0.0f : Nudge;
    SetTransform({fX, fY, -fY, fX, a_sFrom.fX + fNudge, a_sFrom.fY + fNudge});
    const D2D1_RECT_F sTo{0.0f, -a_fWidth / 2.0f, fLength, a_fWidth / 2.0f};
    // From the middle of the first pixel to that of the last one.
    const D2D1_RECT_F sFrom{0.5f, 0.0f, static_cast<float>(BlendLength) - 0.5f, 1.0f};
    _pCalls->DrawBitmap(_piContext.Get(), _piBlend.Get(), &sTo, 1.0f, &sFrom);
}

void DATA::DrawLines(std::int32_t a_nPoints, const SPoint* a_psPoints, bool a_bPerVertex, bool a_bStrip) {
    if (a_nPoints <= 0 || a_psPoints == nullptr || !_bInFrame) return;
    const std::span<const SPoint> sPoints(a_psPoints, static_cast<std::size_t>(a_nPoints));
    const bool bUsable = std::all_of(sPoints.begin(), sPoints.end(), [](const SPoint& a_sPoint) {
        return AreUsable({a_sPoint.fX, a_sPoint.fY});
    });
    if (!bUsable) return;
    _pCalls->SetAntialiasMode(
        _piContext.Get(), _bLineSmooth ? D2D1_ANTIALIAS_MODE_PER_PRIMITIVE : D2D1_ANTIALIAS_MODE_ALIASED);
    if (!_bLineSmooth) SetTransform({1.0f, 0.0f, 0.0f, 1.0f, Nudge, Nudge});
    const float fWidth = _bLineSmooth ? _fLineWidth : std::max(_fLineWidth, 1.0f);
    if (a_bPerVertex) {
        for (std::size_t n = 0; n + 1 < sPoints.size(); n += a_bStrip ? 1 : 2)
            DrawBlended(sPoints[n], sPoints[n + 1], fWidth);
    } else if (a_bStrip) {
        DrawPath(sPoints, fWidth);
    } else {
        for (std::size_t n = 0; n + 1 < sPoints.size(); n += 2) DrawPath(sPoints.subspan(n, 2), fWidth);
    }
    SetTransform(Unmoved);
    _pCalls->SetAntialiasMode(_piContext.Get(), D2D1_ANTIALIAS_MODE_PER_PRIMITIVE);
}

} // namespace KAV::GFX::D2D
