// What the device draws, and the textures that it draws from.

#include "gfx/d3d/data.h"

#include "gfx/picture_part.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

namespace KAV::GFX::D3D {

namespace {

constexpr float PixelCentre = 0.5f; // of what the device takes for a whole number

std::uint32_t Byte(float a_fComponent) noexcept {
    if (!(a_fComponent > 0.0f)) return 0;
    return static_cast<std::uint32_t>(std::min(a_fComponent, 1.0f) * 255.0f);
}

SPicture* PictureOf(const STexture& a_rsTexture) noexcept {
    return std::bit_cast<SPicture*>(static_cast<std::uintptr_t>(a_rsTexture.piGDIP));
}

/// For vertices that have been moved by half a pixel: moves them back, transforms them, and moves them again.
/// The depth is flattened, so that nothing that is turned leaves the device's range.
D3DMATRIX WorldOf(const SFlatMatrix& a_sFlat) noexcept {
    const auto& [m11, m12, m21, m22, dx, dy] = a_sFlat;
    D3DMATRIX mWorld{};
    mWorld._11 = m11;
    mWorld._12 = m12;
    mWorld._21 = m21;
    mWorld._22 = m22;
    mWorld._41 = dx + PixelCentre * (m11 + m21) - PixelCentre;
    mWorld._42 = dy + PixelCentre * (m12 + m22) - PixelCentre;
    mWorld._44 = 1.0f;
    return mWorld;
}

constexpr D3DMATRIX Identity() noexcept {
    D3DMATRIX mIdentity{};
    mIdentity._11 = mIdentity._22 = mIdentity._33 = mIdentity._44 = 1.0f;
    return mIdentity;
}

} // namespace

// Textures

bool DATA::MakeImage(
    SImage& a_rsImage, const SPicturePixels& a_sPixels, std::int32_t a_nTexW, std::int32_t a_nTexH) {
    const std::int32_t nSquare = std::max(a_nTexW, a_nTexH);
    a_rsImage.nTexW = _bSquareOnly ? nSquare : a_nTexW;
    a_rsImage.nTexH = _bSquareOnly ? nSquare : a_nTexH;
    a_rsImage.nW = a_sPixels.nW;
    a_rsImage.nH = a_sPixels.nH;
    // The system keeps a copy of a managed texture, from which the device gets it whenever it has to.
    Check(_pCalls->CreateTexture(_piD3D09Device.Get(), static_cast<UINT>(a_rsImage.nTexW),
              static_cast<UINT>(a_rsImage.nTexH), 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED,
              a_rsImage.iTexture.Fill(*_pCalls), nullptr),
        u"CreateTexture(a_nTexW, a_nTexH, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &piTexture, nullptr)");
    if (a_rsImage.iTexture.Get() == nullptr) return false;
    if (FillImage(a_rsImage, a_sPixels)) return true;
    a_rsImage.iTexture.Reset();
    return false;
}

bool DATA::FillImage(const SImage& a_sImage, const SPicturePixels& a_sPixels) {
    IDirect3DTexture9* const piTexture = a_sImage.iTexture.Get();
    D3DLOCKED_RECT sLockedRect{};
    if (!Check(_pCalls->LockTexture(piTexture, 0, &sLockedRect, nullptr, 0),
            u"piTexture->LockRect(0, &sLockedRect, nullptr, 0)"))
        return false;
    const auto nW = static_cast<std::size_t>(std::min(a_sPixels.nW, a_sImage.nTexW));
    for (std::int32_t y = 0; y < a_sImage.nTexH; ++y) {
        auto* const pRow =
            static_cast<std::uint8_t*>(sLockedRect.pBits) + std::ptrdiff_t{sLockedRect.Pitch} * y;
        // What pads a picture continues its border, for draws between pixels.
        const auto nFrom = static_cast<std::size_t>(std::min(y, a_sPixels.nH - 1));
        const auto* const pFrom = a_sPixels.vnPixels.data() + nFrom * static_cast<std::size_t>(a_sPixels.nW);
        std::memcpy(pRow, pFrom, nW * sizeof(std::uint32_t));
        for (std::size_t x = nW; x < static_cast<std::size_t>(a_sImage.nTexW); ++x)
            std::memcpy(pRow + x * sizeof(std::uint32_t), pFrom + nW - 1, sizeof(std::uint32_t));
    }
    return Check(_pCalls->UnlockTexture(piTexture, 0), u"piTexture->UnlockRect(0)");
}

void DATA::Adopt(STexture& a_rsTexture, std::unique_ptr<SPicture> a_piPicture) {
    _vpiPictures.push_back(std::move(a_piPicture));
    a_rsTexture.piGDIP = std::bit_cast<std::uintptr_t>(_vpiPictures.back().get());
}

void DATA::CreateTextureBits(const void* a_pBits, std::int32_t a_nPitch, std::int32_t a_nPixelFormat,
    STexture& a_rsTexture, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nTexW, std::int32_t a_nTexH) {
    if (_piD3D09Device.Get() == nullptr) return;
    const auto sPixels = PixelsOf(a_pBits, a_nPitch, a_nPixelFormat, a_nW, a_nH, ETextureAlpha::Straight);
    if (sPixels.IsEmpty() || a_nTexW < a_nW || a_nTexH < a_nH) {
        _iLog.Failed(u"CreateTextureBits(a_pBits, a_nPitch, a_nPixelFormat)", InvalidParameter);
        return;
    }
    auto piPicture = std::make_unique<SPicture>();
    if (MakeImage(piPicture->sWhole, sPixels, a_nTexW, a_nTexH)) Adopt(a_rsTexture, std::move(piPicture));
}

void DATA::CreateTexture(
    const Pixels::SBitmap& a_piBitmap, STexture& a_rsTexture, std::int32_t a_nTexW, std::int32_t a_nTexH) {
    if (_piD3D09Device.Get() == nullptr) return;
    auto piPicture = std::make_unique<SPicture>();
    if (a_piBitmap.sheet != nullptr) {
        piPicture->piSheet = a_piBitmap.sheet;
        Adopt(a_rsTexture, std::move(piPicture));
        return;
    }
    const auto sPixels = PixelsOf(a_piBitmap, ETextureAlpha::Straight);
    if (sPixels.IsEmpty() || a_nTexW < a_piBitmap.width || a_nTexH < a_piBitmap.height) {
        _iLog.Failed(u"CreateTexture(a_piBitmap, a_rsTexture, a_nTexW, a_nTexH)", InvalidParameter);
        return;
    }
    if (MakeImage(piPicture->sWhole, sPixels, a_nTexW, a_nTexH)) Adopt(a_rsTexture, std::move(piPicture));
}

void DATA::FreeTexture(STexture& a_rsTexture) {
    const auto* const piPicture = PictureOf(a_rsTexture);
    a_rsTexture = FreedTexture();
    std::erase_if(_vpiPictures, [piPicture](const auto& a_piOther) { return a_piOther.get() == piPicture; });
}

void DATA::UnbindTexture() {
    if (!IsReady()) return;
    Check(_pCalls->SetTexture(_piD3D09Device.Get(), 0, nullptr), u"SetTexture(0, nullptr)");
}

bool DATA::MakeWhole(SPicture& a_rsPicture) {
    if (a_rsPicture.sWhole.iTexture.Get() != nullptr) return true;
    if (a_rsPicture.piSheet == nullptr) return false;
    const auto sPixels = PixelsOf(a_rsPicture.piSheet->Decoded(), ETextureAlpha::Straight);
    if (sPixels.IsEmpty()) return false;
    const bool bAnySize = AnySizeTextures();
    return MakeImage(
        a_rsPicture.sWhole, sPixels, TextureSide(sPixels.nW, bAnySize), TextureSide(sPixels.nH, bAnySize));
}

bool DATA::MakeCells(SPicture& a_rsPicture, const SCellWish& a_sWish) {
    const bool bThere = a_rsPicture.sCells.iTexture.Get() != nullptr;
    const bool bFits = bThere && a_rsPicture.nCellW == a_sWish.nW && a_rsPicture.nCellH == a_sWish.nH;
    if (bFits || (bThere && _bStretching)) return true;
    const auto sPixels =
        PixelsOf(*a_rsPicture.piSheet->Cells(a_sWish.nW, a_sWish.nH), ETextureAlpha::Straight);
    a_rsPicture.nCellW = a_sWish.nW;
    a_rsPicture.nCellH = a_sWish.nH;
    const bool bAnySize = AnySizeTextures();
    return !sPixels.IsEmpty() && sPixels.nW < _nMaxTextureW && sPixels.nH < _nMaxTextureH &&
           MakeImage(a_rsPicture.sCells, sPixels, TextureSide(sPixels.nW, bAnySize),
               TextureSide(sPixels.nH, bAnySize));
}

// Draws

void DATA::BeginDraw(const SRect& a_sTo, const STransform& a_sTransform) {
    if (a_sTransform.IsNeutral()) return;
    const D3DMATRIX mWorld = WorldOf(FlatPart(MatrixOf(a_sTo, a_sTransform)));
    Check(_pCalls->SetTransform(_piD3D09Device.Get(), D3DTS_WORLD, &mWorld),
        u"SetTransform(D3DTS_WORLD, &mWorld)");
}

void DATA::ResetTransform() {
    constexpr D3DMATRIX mWorld = Identity();
    Check(_pCalls->SetTransform(_piD3D09Device.Get(), D3DTS_WORLD, &mWorld),
        u"SetTransform(D3DTS_WORLD, &mWorld)");
}

void DATA::EndDraw(const STransform& a_sTransform) {
    if (!a_sTransform.IsNeutral()) ResetTransform();
}

void DATA::DrawQuad(const SImage& a_sImage, const SPiece& a_sPiece, std::uint32_t a_nColor) {
    const auto fW = static_cast<float>(a_sImage.nTexW);
    const auto fH = static_cast<float>(a_sImage.nTexH);
    const auto vertex = [&](float a_fAlong, float a_fDown) -> SVertex {
        const auto& [sTo, sFrom] = a_sPiece;
        return {sTo.fL + a_fAlong * sTo.fW - PixelCentre, sTo.fT + a_fDown * sTo.fH - PixelCentre, 0.0f,
            a_nColor, (sFrom.fL + a_fAlong * sFrom.fW) / fW, (sFrom.fT + a_fDown * sFrom.fH) / fH};
    };
    const std::array sVertices{
        vertex(0.0f, 0.0f), vertex(1.0f, 0.0f), vertex(0.0f, 1.0f), vertex(1.0f, 1.0f)};
    IDirect3DDevice9* const piDevice = _piD3D09Device.Get();
    if (!Check(_pCalls->SetTexture(piDevice, 0, a_sImage.iTexture.Get()), u"SetTexture(0, piTexture)"))
        return;
    Check(_pCalls->DrawPrimitiveUP(piDevice, D3DPT_TRIANGLESTRIP, 2, sVertices.data(), sizeof(SVertex)),
        u"DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, sVertices, sizeof(SVertex))");
}

void DATA::DrawPiece(SPicture& a_rsPicture, const SPiece& a_sPiece, std::uint32_t a_nColor) {
    if (const auto* const piSheet = a_rsPicture.piSheet.get()) {
        const auto sWish = CellOf(a_sPiece, piSheet->Grid(), piSheet->Width(), piSheet->Height());
        if (sWish.IsCell() && MakeCells(a_rsPicture, sWish)) {
            const auto fW = static_cast<float>(a_rsPicture.nCellW);
            const auto fH = static_cast<float>(a_rsPicture.nCellH);
            const SRect sCell{
                static_cast<float>(sWish.nColumn) * fW, static_cast<float>(sWish.nRow) * fH, fW, fH};
            DrawQuad(a_rsPicture.sCells, {a_sPiece.sTo, sCell}, a_nColor);
            return;
        }
    }
    if (!MakeWhole(a_rsPicture)) return;
    const auto& sWhole = a_rsPicture.sWhole;
    ForEachTile(
        a_sPiece, sWhole.nW, sWhole.nH, [&](const SPiece& a_sTile) { DrawQuad(sWhole, a_sTile, a_nColor); });
}

void DATA::DrawTexture(const STexture& a_rsTexture, const SDraw& a_sDraw) {
    if (IsTransparent(a_sDraw.nColor) || !IsReady() || a_rsTexture.piGDIP == 0) return;
    if (!IsUsable(a_sDraw.sTo) || !IsUsable(a_sDraw.sTransform)) return;
    const auto sPiece = PieceOf(a_rsTexture, a_sDraw);
    if (!IsUsable(sPiece.sFrom)) return;
    BeginDraw(a_sDraw.sTo, a_sDraw.sTransform);
    try {
        DrawPiece(*PictureOf(a_rsTexture), sPiece, a_sDraw.nColor);
    } catch (...) {
        EndDraw(a_sDraw.sTransform);
        throw;
    }
    EndDraw(a_sDraw.sTransform);
}

void DATA::DrawTexture9(const STexture& a_rsTexture, const SDraw9& a_sDraw) {
    if (IsTransparent(a_sDraw.nColor) || !IsReady() || a_rsTexture.piGDIP == 0) return;
    if (!IsUsable(a_sDraw.sTo) || !IsUsable(a_sDraw.sTransform)) return;
    auto& sPicture = *PictureOf(a_rsTexture);
    if (!MakeWhole(sPicture)) return;
    BeginDraw(a_sDraw.sTo, a_sDraw.sTransform);
    for (const auto& sSlice : SlicesOf(a_rsTexture, a_sDraw)) {
        if (sSlice.sTo.fW > 0.0f && sSlice.sTo.fH > 0.0f && sSlice.sFrom.fW > 0.0f && sSlice.sFrom.fH > 0.0f)
            DrawQuad(sPicture.sWhole, sSlice, a_sDraw.nColor);
    }
    EndDraw(a_sDraw.sTransform);
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
    if (!IsReady()) return;
    Check(
        _pCalls->SetRenderState(_piD3D09Device.Get(), D3DRS_ANTIALIASEDLINEENABLE, a_bSmooth ? TRUE : FALSE),
        u"SetRenderState(D3DRS_ANTIALIASEDLINEENABLE, _bLineSmooth = a_bSmooth)");
}

void DATA::DrawLines(std::int32_t a_nPoints, const SPoint* a_psPoints, bool a_bPerVertex, bool a_bStrip) {
    if (a_nPoints <= 0 || a_psPoints == nullptr || !IsReady()) return;
    _vsPath.assign(a_psPoints, a_psPoints + a_nPoints);
    if (!a_bPerVertex) {
        for (auto& sPoint : _vsPath) sPoint.nColor = _nLineColor;
    }
    // The device's whole numbers are the centres of pixels.
    for (auto& sPoint : _vsPath) {
        sPoint.fX -= PixelCentre;
        sPoint.fY -= PixelCentre;
    }
    _iStrokes.Begin(_fLineWidth, _bLineSmooth);
    const std::span<const SPoint> sPath(_vsPath);
    if (a_bStrip) {
        _iStrokes.AddPath(sPath);
    } else {
        for (std::size_t n = 0; n + 1 < sPath.size(); n += 2) _iStrokes.AddPath(sPath.subspan(n, 2));
    }
    const auto& vsTriangles = _iStrokes.Triangles();
    if (vsTriangles.empty()) return;
    UnbindTexture();
    Check(_pCalls->DrawPrimitiveUP(_piD3D09Device.Get(), D3DPT_TRIANGLELIST,
              static_cast<UINT>(vsTriangles.size() / 3), vsTriangles.data(), sizeof(SVertex)),
        u"DrawPrimitiveUP(D3DPT_TRIANGLELIST, nTriangles, sVertices, sizeof(SVertex))");
}

} // namespace KAV::GFX::D3D
