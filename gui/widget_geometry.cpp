// Where a widget is, in pixels of the root.

#include "gui/gui.h"
#include "gui/widget.h"

#include <cmath>

namespace KAV::GUI {

std::int32_t RoundedPixels(float a_fPixels) noexcept {
    constexpr float largest = 1e9f;
    if (!(std::abs(a_fPixels) <= largest)) return 0;
    return static_cast<std::int32_t>(std::round(a_fPixels));
}

namespace {

/// A place: a fraction of `a_nWhole` if `a_fTested` is one, else pixels.
std::int32_t Place(float a_fTested, float a_fValue, std::int32_t a_nWhole) noexcept {
    constexpr float largestFraction = 0.9999f;
    const bool isFraction = std::abs(a_fTested) <= largestFraction;
    return RoundedPixels(isFraction ? a_fValue * static_cast<float>(a_nWhole) : a_fValue);
}

/// A size: a fraction of `a_nWhole`, below 0 of `a_nOther`, if `a_fTested` is one, else pixels.
std::int32_t Size(float a_fTested, float a_fValue, std::int32_t a_nWhole, std::int32_t a_nOther) noexcept {
    if (!(std::abs(a_fTested) <= 1.0f)) return RoundedPixels(a_fValue);
    return RoundedPixels(std::abs(a_fValue) * static_cast<float>(a_fValue < 0.0f ? a_nOther : a_nWhole));
}

std::int32_t Inset(float a_fInset, std::int32_t a_nSize) noexcept {
    const bool isFraction = a_fInset > 0.0f && a_fInset < 1.0f;
    return RoundedPixels(isFraction ? a_fInset * static_cast<float>(a_nSize) : a_fInset);
}

/// How much of the size lies before the point that the anchor names.
std::int32_t Before(std::uint32_t a_nThird, std::int32_t a_nSize) noexcept {
    if (a_nThird == 0) return 0;
    return a_nThird == 2 ? a_nSize : RoundedPixels(static_cast<float>(a_nSize) * 0.5f);
}

void JumpTo(SAnimValue& a_rsValue, std::int32_t a_nPixels, std::int32_t a_nWhole) noexcept {
    if (a_nWhole > 0) a_rsValue.Jump(static_cast<float>(a_nPixels) / static_cast<float>(a_nWhole));
}

constexpr std::uint32_t LastAnchor = 8;

} // namespace

SPixelRect CWidget::PixelRect() const noexcept {
    const std::int32_t width = Root().Width();
    const std::int32_t height = Root().Height();
    SPixelRect rect;
    rect.nW = Size(sW.fValue, sW.fValue, width, height);
    rect.nH = Size(sH.fTarget, sH.fValue, height, width); // the target decides, unlike for the width
    if (nAnchor > LastAnchor) return rect;
    rect.nL = Place(sX.fValue, sX.fValue, width) - Before(nAnchor % 3, rect.nW);
    rect.nT = Place(sY.fTarget, sY.fValue, height) - Before(nAnchor / 3, rect.nH); // the target again
    return rect;
}

std::int32_t CWidget::ShadowOffset(float a_fOffset, std::int32_t a_nWhole) noexcept {
    return Place(a_fOffset, a_fOffset, a_nWhole);
}

std::int32_t CWidget::HotL() const noexcept {
    return Inset(fHotL, PixelRect().nW);
}

std::int32_t CWidget::HotT() const noexcept {
    return Inset(fHotT, PixelRect().nH);
}

std::int32_t CWidget::HotR() const noexcept {
    return Inset(fHotR, PixelRect().nW);
}

std::int32_t CWidget::HotB() const noexcept {
    return Inset(fHotB, PixelRect().nH);
}

bool CWidget::IsOnScreen() const noexcept {
    const auto rect = PixelRect();
    return rect.nL <= Root().Width() && rect.nL + rect.nW >= 0 && rect.nT <= Root().Height() &&
           rect.nT + rect.nH >= 0;
}

bool CWidget::HitTest(std::int32_t x, std::int32_t y, bool a_bAny) const {
    if (sVisible.fValue == 0.0f) return false;
    if (!bInteractive && !a_bAny && !Root().IsLayoutEditing()) return false;
    const auto rect = PixelRect();
    return x >= rect.nL + HotL() && x <= rect.nL + rect.nW - HotR() && y >= rect.nT + HotT() &&
           y <= rect.nT + rect.nH - HotB();
}

void CWidget::FreezeToFractions(bool a_bSize) noexcept {
    const std::int32_t width = Root().Width();
    const std::int32_t height = Root().Height();
    const auto rect = PixelRect();
    JumpTo(sX, Place(sX.fValue, sX.fValue, width), width);
    JumpTo(sY, Place(sY.fTarget, sY.fValue, height), height);
    if (!a_bSize) return;
    JumpTo(sW, rect.nW, width);
    JumpTo(sH, rect.nH, height);
}

} // namespace KAV::GUI
