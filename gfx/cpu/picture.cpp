#include "gfx/cpu/picture.h"

#include "pixels/resample.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace KAV::GFX::CPU {

CPicture::CPicture(std::shared_ptr<const Pixels::ISheet> a_piSheet)
    : _piSheet(std::move(a_piSheet)), _nW(_piSheet->Width()), _nH(_piSheet->Height()) {}

CPicture::CPicture(Pixels::SBitmap a_sPixels)
    : _piPixels(std::make_shared<const Pixels::SBitmap>(std::move(a_sPixels))), _nW(_piPixels->width),
      _nH(_piPixels->height) {}

Pixels::SImageGrid CPicture::Grid(const Pixels::SImageGrid& a_sOfRecord) const noexcept {
    const auto& sGrid = _piSheet != nullptr ? _piSheet->Grid() : a_sOfRecord;
    const bool bFits = sGrid.columns > 0 && sGrid.rows > 0 && sGrid.columns <= _nW && sGrid.rows <= _nH;
    return bFits ? sGrid : Pixels::SImageGrid{};
}

CPicture::SSize* CPicture::Find(const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW,
    std::int32_t a_nCellH, bool a_bNearest) noexcept {
    SSize* piFound = nullptr;
    std::int64_t nDistance = 0;
    for (auto& sSize : _vsSizes) {
        if (sSize.sGrid != a_sGrid) continue;
        const std::int64_t nThis =
            std::abs(std::int64_t{sSize.nCellW} - a_nCellW) + std::abs(std::int64_t{sSize.nCellH} - a_nCellH);
        if (nThis != 0 && !a_bNearest) continue;
        if (piFound != nullptr && nThis >= nDistance) continue;
        piFound = &sSize;
        nDistance = nThis;
    }
    return piFound;
}

std::shared_ptr<const Pixels::SBitmap> CPicture::Make(
    const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW, std::int32_t a_nCellH) const {
    if (_piSheet != nullptr) return _piSheet->Cells(a_nCellW, a_nCellH);
    if (a_nCellW * a_sGrid.columns == _nW && a_nCellH * a_sGrid.rows == _nH) return _piPixels;
    return std::make_shared<const Pixels::SBitmap>(
        Pixels::Resampled(*_piPixels, a_sGrid, a_nCellW, a_nCellH));
}

const CSource& CPicture::Cells(
    const Pixels::SImageGrid& a_sGrid, std::int32_t a_nCellW, std::int32_t a_nCellH, bool a_bStretching) {
    SSize* piSize = Find(a_sGrid, a_nCellW, a_nCellH, a_bStretching);
    if (piSize == nullptr) {
        auto piSource = std::make_unique<const CSource>(Make(a_sGrid, a_nCellW, a_nCellH));
        piSize = &_vsSizes.emplace_back(SSize{a_nCellW, a_nCellH, a_sGrid, std::move(piSource), false});
    }
    piSize->bUsed = true;
    return *piSize->piSource;
}

const CSource& CPicture::Stored(const Pixels::SImageGrid& a_sGrid) {
    return Cells(a_sGrid, _nW / a_sGrid.columns, _nH / a_sGrid.rows, false);
}

void CPicture::DropUnused() noexcept {
    const auto used = [](const SSize& a_sSize) { return a_sSize.bUsed; };
    if (std::none_of(_vsSizes.begin(), _vsSizes.end(), used)) return;
    std::erase_if(_vsSizes, [](const SSize& a_sSize) { return !a_sSize.bUsed; });
    for (auto& sSize : _vsSizes) sSize.bUsed = false;
}

} // namespace KAV::GFX::CPU
