// How a frame is painted: from its list of draws to pixels, and into the window.

#include "gfx/cpu/data.h"

#include <algorithm>
#include <new>
#include <utility>

namespace KAV::GFX::CPU {

namespace {

bool Covers(const SArea& a_sArea, const SArea& a_sOther) noexcept {
    return Common(a_sArea, a_sOther) == a_sOther;
}

/// Nothing of what is below it shows.
bool Hides(const CDrawList::SDraw& a_sDraw, const SArea& a_sArea) noexcept {
    return a_sDraw.nKind == CDrawList::SDraw::EKind::Copy && IsTransparent(~a_sDraw.nColor) &&
           a_sDraw.piSource->IsOpaque() && Covers(a_sDraw.sBox, a_sArea);
}

} // namespace

void DATA::Clear() {
    _iNoted.Clear();
}

void DATA::BeginFrame() {
    _iNoted.Reset();
    _vpiFreed.clear();
}

void DATA::EndFrame() {
    _nPainted = 0;
    if (!IsReady() || (!_iNoted.IsOnBlack() && _iNoted.Draws().empty())) return;
    _iChanged.Clear();
    if (_bPaintedKnown && _iNoted.IsOnBlack()) {
        _iPainted.AddDifferences(_iNoted, _iCells, _iChanged);
    } else {
        _iChanged.Add(_iCanvas.Bounds());
    }
    _bPaintedKnown = _iNoted.IsOnBlack(); // else the frame is also made of what was there
    Paint();
    std::swap(_iPainted, _iNoted);
    _iNoted.Reset();
    _vpiFreed.clear();
    for (const auto& piPicture : _vpiPictures) piPicture->DropUnused();
}

void DATA::Paint() {
    for (const auto& sArea : _iChanged.All()) {
        PaintArea(sArea);
        _iDue.Add(sArea);
    }
}

void DATA::PaintArea(const SArea& a_sArea) {
    const auto& vsDraws = _iNoted.Draws();
    auto iFirst = vsDraws.begin();
    const auto iHiding = std::find_if(vsDraws.rbegin(), vsDraws.rend(),
        [&](const CDrawList::SDraw& a_sDraw) { return Hides(a_sDraw, a_sArea); });
    if (iHiding != vsDraws.rend()) {
        iFirst = std::prev(iHiding.base());
    } else if (_iNoted.IsOnBlack()) {
        _iCanvas.Blacken(a_sArea);
    }
    for (auto i = iFirst; i != vsDraws.end(); ++i) {
        const SArea sArea = Common(a_sArea, i->sBox);
        if (IsEmpty(sArea)) continue;
        try {
            PaintDraw(*i, sArea);
            ++_nPainted;
        } catch (const std::bad_alloc&) { // this draw is missing now; the next frame tries again
            _bPaintedKnown = false;
            _iLog.Failed(u"PaintDraw(*i, sArea)", OutOfMemory);
        }
    }
}

void DATA::PaintDraw(const CDrawList::SDraw& a_sDraw, const SArea& a_sArea) {
    switch (a_sDraw.nKind) {
    case CDrawList::SDraw::EKind::Copy:
        _iCanvas.Lay(*a_sDraw.piSource, a_sArea, a_sDraw.sStep.nDX, a_sDraw.sStep.nDY, a_sDraw.nColor,
            a_sDraw.bRepeat);
        return;
    case CDrawList::SDraw::EKind::Map:
        LayMapped(_iCanvas, *a_sDraw.piSource, a_sDraw.sMapping, a_sDraw.nColor, a_sArea);
        return;
    case CDrawList::SDraw::EKind::Lines: {
        const auto asPoints = _iNoted.PointsOf(a_sDraw);
        if (a_sDraw.bStrip) {
            _iStrokes.Draw(_iCanvas, asPoints, a_sDraw.sPen, a_sArea);
            return;
        }
        for (std::size_t n = 0; n + 1 < asPoints.size(); n += 2)
            _iStrokes.Draw(_iCanvas, asPoints.subspan(n, 2), a_sDraw.sPen, a_sArea);
        return;
    }
    }
}

void DATA::Present() {
    if (_piTarget == nullptr || !IsReady() || _iDue.IsEmpty()) return;
    const SArea sFrame = _iCanvas.Bounds();
    if (_piTarget->Put(_iCanvas.Pixels(), 4 * sFrame.width, sFrame.width, sFrame.height, _iDue.All()))
        _iDue.Clear();
}

} // namespace KAV::GFX::CPU
