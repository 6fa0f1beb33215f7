#include "gui/size_drag.h"

#include "gui/gui.h"
#include "gui/settings.h"

#include <algorithm>
#include <utility>

namespace KAV::GUI {

namespace {

/// Where the edge begins, as a part of the width, and the corner of the height.
constexpr float Edge = 0.98f;

} // namespace

void CSizeDrag::Offer(std::int32_t a_nLeastWidth, float a_fAspect, Sized a_iSized) {
    _nLeastWidth = a_nLeastWidth;
    _fAspect = a_fAspect;
    _iSized = std::move(a_iSized);
}

bool CSizeDrag::IsAtEdge(std::int32_t x) const noexcept {
    return static_cast<float>(x) > Edge * static_cast<float>(_piGUI.Width());
}

bool CSizeDrag::Press(std::int32_t x, std::int32_t, std::uint32_t a_nFlags) {
    if (_nLeastWidth == 0 || (a_nFlags & MouseLeft) == 0 || !IsAtEdge(x)) return false;
    _piGUI.Pointer().LoseCapture();
    _piGUI.Edit().Drop();
    _bActive = true;
    _nOffsetX = _piGUI.Width() - x;
    _piGUI.Window().Capture(true);
    return true;
}

bool CSizeDrag::Move(std::int32_t x, std::int32_t y) {
    if (_nLeastWidth == 0) return false;
    const bool isLow = static_cast<float>(y) > Edge * static_cast<float>(_piGUI.Height());
    const auto atEdge = isLow ? ECursor::SizeBoth : ECursor::SizeWidth;
    _piGUI.Window().SetCursor(IsAtEdge(x) ? atEdge : ECursor::Arrow);
    if (!_bActive) return false;
    _piGUI.SetResizing(true);
    const std::int32_t width = std::max(_nLeastWidth, x + _nOffsetX);
    _iSized(width, static_cast<std::int32_t>(static_cast<float>(width) / _fAspect));
    return true;
}

bool CSizeDrag::Release(std::uint32_t a_nFlags) {
    if (!_bActive || (a_nFlags & MouseLeft) == 0) return false;
    End();
    return true;
}

void CSizeDrag::End() {
    if (!std::exchange(_bActive, false)) return;
    _piGUI.SetResizing(false);
    _piGUI.Window().Capture(false);
    _piGUI.Invalidate();
    StoreNumber(u"Width", static_cast<std::uint32_t>(_piGUI.Width()));
}

} // namespace KAV::GUI
