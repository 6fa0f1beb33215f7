#include "gfx/ogl/picture.h"

#include "gfx/texture.h"
#include "pixels/resample.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace KAV::GFX::OGL {

namespace {

constexpr std::int32_t Margin = 1; // around each cell

} // namespace

CPicture::CPicture(
    std::shared_ptr<const Pixels::ISheet> a_piSheet, std::int32_t a_nTexW, std::int32_t a_nTexH)
    : _piSheet(std::move(a_piSheet)), _nW(_piSheet->Width()), _nH(_piSheet->Height()), _nTexW(a_nTexW),
      _nTexH(a_nTexH) {}

CPicture::CPicture(Pixels::SBitmap a_sPixels, std::int32_t a_nTexW, std::int32_t a_nTexH)
    : _sPixels(std::move(a_sPixels)), _nW(_sPixels.width), _nH(_sPixels.height), _nTexW(a_nTexW),
      _nTexH(a_nTexH) {}

Pixels::SImageGrid CPicture::Grid(const Pixels::SImageGrid& a_sOfRecord) const noexcept {
    const auto& sGrid = _piSheet != nullptr ? _piSheet->Grid() : a_sOfRecord;
    const bool bFits = sGrid.columns > 0 && sGrid.rows > 0 && sGrid.columns <= _nW && sGrid.rows <= _nH;
    return bFits ? sGrid : Pixels::SImageGrid{};
}

SObject* CPicture::Stored(CTextures& a_piTextures) {
    if (_sStored.nName == 0)
        _sStored = a_piTextures.Make(_piSheet != nullptr ? _piSheet->Decoded() : _sPixels, _nTexW, _nTexH);
    return _sStored.nName != 0 ? &_sStored : nullptr;
}

SObject* CPicture::Tile(CTextures& a_piTextures) {
    if (_sTile.nName == 0) {
        const auto sPixels = Pixels::Premultiplied(_piSheet != nullptr ? _piSheet->Decoded() : _sPixels);
        const bool bAny = a_piTextures.AnySize();
        _sTile = a_piTextures.Make(StraightCells(sPixels, {}, Margin, EMargin::Wrapped),
            TextureSide(_nW + 2 * Margin, bAny), TextureSide(_nH + 2 * Margin, bAny));
    }
    return _sTile.nName != 0 ? &_sTile : nullptr;
}

SPart CPicture::SCells::Cell(std::int32_t a_nColumn, std::int32_t a_nRow) const noexcept {
    const auto start = [](std::int32_t a_nCell, std::int32_t a_nSide) {
        return static_cast<double>(a_nCell * (a_nSide + 2 * Margin) + Margin);
    };
    return {start(a_nColumn, nCellW), start(a_nRow, nCellH), static_cast<double>(nCellW),
        static_cast<double>(nCellH)};
}

CPicture::SSize* CPicture::Find(const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW,
    std::int32_t a_nCellH, bool a_bNearest) noexcept {
    SSize* psFound = nullptr;
    std::int64_t nDistance = 0;
    for (auto& sSize : _vsSizes) {
        if (sSize.sGrid != a_sGrid) continue;
        const std::int64_t nThis =
            std::abs(std::int64_t{sSize.nCellW} - a_nCellW) + std::abs(std::int64_t{sSize.nCellH} - a_nCellH);
        if (nThis != 0 && !a_bNearest) continue;
        if (psFound != nullptr && nThis >= nDistance) continue;
        psFound = &sSize;
        nDistance = nThis;
    }
    return psFound;
}

Pixels::SBitmap CPicture::Scaled(
    const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW, std::int32_t a_nCellH) const {
    if (_piSheet != nullptr) return StraightCells(*_piSheet->Cells(a_nCellW, a_nCellH), a_sGrid, Margin);
    return StraightCells(Pixels::Resampled(_sPixels, a_sGrid, a_nCellW, a_nCellH), a_sGrid, Margin);
}

CPicture::SCells CPicture::Cells(CTextures& a_piTextures, const Pixels::SImageGrid& a_sGrid,
    std::int32_t a_nCellW, std::int32_t a_nCellH, bool a_bStretching) {
    SSize* psSize = Find(a_sGrid, a_nCellW, a_nCellH, a_bStretching);
    if (psSize == nullptr) {
        const bool bAny = a_piTextures.AnySize();
        const std::int32_t nTexW = TextureSide(a_sGrid.columns * (a_nCellW + 2 * Margin), bAny);
        const std::int32_t nTexH = TextureSide(a_sGrid.rows * (a_nCellH + 2 * Margin), bAny);
        if (!a_piTextures.CanHold(nTexW, nTexH)) return {};
        _vsSizes.reserve(_vsSizes.size() + 1); // nothing may fail once the texture is made
        auto psObject = std::make_unique<SObject>();
        *psObject = a_piTextures.Make(Scaled(a_sGrid, a_nCellW, a_nCellH), nTexW, nTexH);
        if (psObject->nName == 0) return {};
        psSize = &_vsSizes.emplace_back(SSize{a_nCellW, a_nCellH, a_sGrid, std::move(psObject), false});
    }
    psSize->bUsed = true;
    return {psSize->psObject.get(), psSize->nCellW, psSize->nCellH};
}

void CPicture::DropUnused(CTextures& a_piTextures) noexcept {
    const auto isUsed = [](const SSize& a_sSize) { return a_sSize.bUsed; };
    if (std::none_of(_vsSizes.begin(), _vsSizes.end(), isUsed)) return;
    for (auto& sSize : _vsSizes) {
        if (!sSize.bUsed) a_piTextures.Free(*sSize.psObject);
    }
    std::erase_if(_vsSizes, [](const SSize& a_sSize) { return !a_sSize.bUsed; });
    for (auto& sSize : _vsSizes) sSize.bUsed = false;
}

void CPicture::Free(CTextures& a_piTextures) noexcept {
    a_piTextures.Free(_sStored);
    a_piTextures.Free(_sTile);
    for (auto& sSize : _vsSizes) a_piTextures.Free(*sSize.psObject);
    _vsSizes.clear();
}

} // namespace KAV::GFX::OGL
