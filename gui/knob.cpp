#include "gui/knob.h"

#include "gui/edit_bracket.h"
#include "gui/gui.h"
#include "utils/clock.h"
#include "utils/number.h"
#include "utils/text.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

namespace KAV::GUI {

namespace {

constexpr float FineShare = 0.2f; // of a drag while Shift is held
constexpr float NotchPx = 10.0f;
constexpr float FineNotchPx = 2.0f;
constexpr std::size_t LongestNumber = 11;

constexpr std::int32_t SoakReachPx = 1000; // above and below the window
constexpr std::int32_t SoakSteps = 10;     // of each way
constexpr std::uint32_t SoakStepMs = 10;

/// Lets a value follow the hand at once while it lives.
class CAtOnce final {
public:
    explicit CAtOnce(SAnimValue& a_rsValue) noexcept
        : _rsValue(a_rsValue), _nRiseMs(std::exchange(a_rsValue.nRiseMs, 0)),
          _nFallMs(std::exchange(a_rsValue.nFallMs, 0)) {}
    ~CAtOnce() {
        _rsValue.nRiseMs = _nRiseMs;
        _rsValue.nFallMs = _nFallMs;
    }
    CAtOnce(const CAtOnce&) = delete;
    CAtOnce& operator=(const CAtOnce&) = delete;

private:
    SAnimValue& _rsValue;
    std::uint32_t _nRiseMs;
    std::uint32_t _nFallMs;
};

} // namespace

CKnob::CKnob(CGUI& a_piGUI, const SWidgetInfo& a_sInfo)
    : CMeter(a_piGUI, a_sInfo), nDragPx(a_sInfo.nDragPx), nWheelPx(a_sInfo.nWheelPx),
      fTextFor(Value() + NoTextYet), fDefault(a_sInfo.fDefault), fTravelFrom(a_sInfo.fTravelFrom),
      fTravelTo(a_sInfo.fTravelTo) {
    if (!a_sInfo.bPassive) bInteractive = true;
    sValue.pfnEase = OvershootHeld;
}

CKnob::~CKnob() {
    Root().Frame().Guard([this] { EndDrag(); });
}

void CKnob::SetDefault(float a_fNormal) {
    fDefault = Clamped(a_fNormal);
}

void CKnob::SetFromHost(float a_fNormal) {
    if (nId >= 0 && !bDragging) TakeFromHost(a_fNormal);
}

void CKnob::SetPlain(float a_fPlain, bool a_bHistory) {
    InEdit(Root(), nId, !bDragging, [&] { CMeter::SetPlain(a_fPlain, a_bHistory); });
}

// The drag

float CKnob::ValueFromPointer(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) const {
    const auto way = static_cast<float>(bHorizontal ? x - nDragX : nDragY - y);
    const float share = (a_nFlags & MouseShift) != 0 ? FineShare : 1.0f;
    return sValue.fTarget + way / static_cast<float>(std::max(nDragPx, 1u)) * share;
}

void CKnob::OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CMeter::OnMouseDown(x, y, a_nFlags);
    EndDrag(); // one whose release has not come
    if ((a_nFlags & MouseRight) != 0) {
        if (vsItems.empty()) Root().Edit().Open(this, false);
        return;
    }
    if ((a_nFlags & MouseLeft) == 0) return;
    if (nId >= 0) Root().BeginEdit(nId);
    bDragging = true;
    if ((a_nFlags & (MouseControl | MouseDouble)) != 0) SetValue(fDefault, true);
    const auto rect = PixelRect();
    nDragX = x;
    nDragY = y;
    nGrabX = x - rect.nL;
    nGrabY = y - rect.nT;
    Root().Hint().nWaitMs = CHint::DelayMs;
}

void CKnob::OnMouseMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CMeter::OnMouseMove(x, y, a_nFlags);
    if (!bDragging) return;
    const CAtOnce atOnce(sValue);
    SetValue(ValueFromPointer(x, y, a_nFlags), !bDragged);
    nDragX = x;
    nDragY = y;
    bDragged = true;
}

void CKnob::OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CMeter::OnMouseUp(x, y, a_nFlags);
    EndDrag(); // whichever button it is: no other release will come
}

void CKnob::OnCaptureLost() {
    EndDrag();
}

void CKnob::EndDrag() {
    bDragged = false;
    if (std::exchange(bDragging, false) && nId >= 0) Root().EndEdit(nId);
}

void CKnob::OnMouseWheel(float a_fNotches, std::uint32_t a_nFlags) {
    CMeter::OnMouseWheel(a_fNotches, a_nFlags);
    const CAtOnce atOnce(sValue);
    InEdit(Root(), nId, !bDragging, [&] {
        if (!vsItems.empty()) {
            SetItem(a_fNotches > 0.0f ? nItem + 1 : nItem - 1, true);
            return;
        }
        const float notch = (a_nFlags & MouseShift) != 0 ? FineNotchPx : NotchPx;
        SetValue(sValue.fTarget + a_fNotches * notch / static_cast<float>(std::max(nWheelPx, 1u)), true);
    });
}

// Its text

std::u16string CKnob::PlainText() const {
    const float plain = GetPlain();
    if (plain == std::numeric_limits<float>::infinity()) return u"\u221E";
    const bool hasBothSigns = std::min(fMin, fMax) < 0.0f && std::max(fMin, fMax) > 0.0f;
    std::string text = hasBothSigns && plain > 0.0f ? "+" : "";
    const int extra = Root().Window().IsShiftDown() ? 1 : 0;
    text += Utils::FormatFixed(static_cast<double>(plain), nDecimals + extra);
    return Utils::ToUtf16(text.substr(0, LongestNumber));
}

const std::u16string& CKnob::GetText(bool a_bValueOnly) {
    if (!sName.empty() && fTextFor != Value()) {
        fTextFor = Value();
        sValueText = vsItems.empty() ? PlainText() : ItemText();
        sHint = sTitle + u": " + sValueText + u" " + sUnit;
    }
    return CMeter::GetText(a_bValueOnly);
}

void CKnob::SoakTest() {
    const auto rect = PixelRect();
    const std::int32_t x = rect.nL + rect.nW / 2;
    const std::int32_t center = rect.nT + rect.nH / 2;
    Root().OnMouseDown(x, center, MouseLeft);
    std::int32_t from = center;
    for (const std::int32_t to : {-SoakReachPx, SoakReachPx, center}) {
        for (std::int32_t step = 1; step <= SoakSteps; ++step) {
            Root().OnMouseMove(x, from + (to - from) * step / SoakSteps, MouseLeft);
            Utils::WaitMs(SoakStepMs);
        }
        from = to;
    }
    Root().OnMouseUp(x, center, MouseLeft);
    Root().OnMouseDown(x, center, MouseLeft | MouseControl);
    Root().OnMouseUp(x, center, MouseLeft | MouseControl);
}

} // namespace KAV::GUI
