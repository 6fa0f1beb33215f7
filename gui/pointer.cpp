#include "gui/pointer.h"

#include "gui/gui.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace KAV::GUI {

void CPointer::Press(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    _nPressX = x;
    _nPressY = y;
    const bool isSecond = (a_nFlags & MouseDouble) != 0; // a third one is not a second again
    if ((a_nFlags & MouseLeft) != 0) _nLastPress = isSecond ? 0 : std::max(_nTimeMs, std::uint32_t{1});
    _bLeftDown = (a_nFlags & MouseLeft) != 0;
    _bRightDown = (a_nFlags & MouseRight) != 0;
    _piGUI.Edit().Drop();
    LoseCapture(); // of the press before, whose release has not come
    _piGUI.Window().Capture(true);
    CWidget* const hit = HitAt(x, y, false);
    if (hit == nullptr) {
        _piFocus = nullptr;
        _piGUI.OnFocus(nullptr);
        return;
    }
    if (hit != _piHover) HoverOver(hit);
    _piFocus = hit;
    _piGUI.OnFocus(hit);
    if (!_piGUI.Has(hit)) return; // it was for that that it went
    _piCapture = hit;
    hit->OnMouseDown(x, y, a_nFlags);
}

void CPointer::Release(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    if ((a_nFlags & MouseLeft) != 0) _bLeftDown = false;
    if ((a_nFlags & MouseRight) != 0) _bRightDown = false;
    _piGUI.Window().Capture(false);
    // Cleared first: a release may open a menu or a box, during which other events come.
    CWidget* const captured = std::exchange(_piCapture, nullptr);
    if (captured == nullptr) return;
    captured->OnMouseUp(x, y, a_nFlags);
    // Any button that goes up ends the drag, and the widget may have waited for another one.
    if (!_piGUI.Has(captured) || _piCapture == captured) return;
    if (auto* const begun = dynamic_cast<ICaptured*>(captured)) begun->OnCaptureLost();
}

void CPointer::Move(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    _nMouseX = x;
    _nMouseY = y;
    if (_piCapture != nullptr) {
        _piCapture->OnMouseMove(x, y, a_nFlags);
        return;
    }
    _piGUI.Hint().nAnchorX = x + _piGUI.Window().HotX();
    _piGUI.Hint().nAnchorY = y + _piGUI.Window().HotY();
    CWidget* const hit = HitAt(x, y, true);
    if (hit == nullptr) {
        Leave();
        return;
    }
    if (hit != _piHover) HoverOver(hit);
    hit->OnMouseMove(x, y, a_nFlags);
}

void CPointer::Leave() {
    HoverOver(nullptr);
}

void CPointer::Wheel(float a_fNotches, std::uint32_t a_nFlags) {
    if (_piFocus != _piHover) {
        _piFocus = _piHover;
        _piGUI.OnFocus(_piFocus);
    }
    if (_piHover != nullptr) _piHover->OnMouseWheel(a_fNotches, a_nFlags);
}

bool CPointer::IsDoubleClick(std::int32_t x, std::int32_t y, std::uint32_t a_nTimeMs) const {
    const auto& window = _piGUI.Window();
    return _nLastPress != 0 && a_nTimeMs - _nLastPress <= window.DoubleClickMs() &&
           std::abs(x - _nPressX) <= window.DoubleClickWidth() &&
           std::abs(y - _nPressY) <= window.DoubleClickHeight();
}

void CPointer::CancelDrag() {
    if (auto* const begun = dynamic_cast<ICaptured*>(_piCapture)) begun->OnCaptureLost();
}

void CPointer::LoseCapture() {
    CWidget* const captured = std::exchange(_piCapture, nullptr);
    if (auto* const begun = dynamic_cast<ICaptured*>(captured)) begun->OnCaptureLost();
}

void CPointer::Forget(const CWidget& a_piWidget) noexcept {
    for (auto* const pointer : {&_piHover, &_piFocus, &_piCapture}) {
        if (*pointer == &a_piWidget) *pointer = nullptr;
    }
}

std::uint32_t CPointer::Held() const noexcept {
    return (_bLeftDown ? MouseLeft : 0u) | (_bRightDown ? MouseRight : 0u);
}

CWidget* CPointer::HitAt(std::int32_t x, std::int32_t y, bool a_bBelowHint) const {
    const auto& widgets = _piGUI.AllWidgets();
    // NOLINTNEXTLINE(modernize-loop-convert): not by all compilers
    for (auto widget = widgets.rbegin(); widget != widgets.rend(); ++widget) {
        if (a_bBelowHint && _piGUI.IsHintOrEdit(**widget)) continue;
        if ((*widget)->HitTest(x, y, false)) return *widget;
    }
    return nullptr;
}

void CPointer::HoverOver(CWidget* a_piWidget) {
    if (CWidget* const old = std::exchange(_piHover, a_piWidget)) old->OnMouseLeave();
    if (a_piWidget != nullptr) a_piWidget->OnMouseEnter();
    _piGUI.Hint().HoverChanged(a_piWidget);
}

} // namespace KAV::GUI
