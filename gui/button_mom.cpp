#include "gui/button_mom.h"

#include "gui/edit_bracket.h"
#include "gui/gui.h"

namespace KAV::GUI {

void CButtonMom::Tick(std::uint32_t a_nMs) {
    CButton::Tick(a_nMs);
    sPress.nRiseMs = sValue.nRiseMs;
    sPress.nFallMs = sValue.nFallMs;
    if (sPress.Step(a_nMs)) Root().Invalidate();
}

void CButtonMom::OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CLED::OnMouseDown(x, y, a_nFlags); // NOLINT(bugprone-parent-virtual-call): it presses in its own way
    OnCaptureLost();                   // a press whose release has not come
    if (!TakePress(a_nFlags)) return;
    sPress.Retarget(1.0f);
    Root().AddRecord(MakeHistory());
    InEdit(Root(), nId, true, [this] { SetItem(nItem + 1 < ItemCount() ? nItem + 1 : 0, false); });
    Root().Hint().nWaitMs = CHint::DelayMs;
    Root().Invalidate();
}

void CButtonMom::OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    sPress.Retarget(0.0f);
    Root().Invalidate();
    CButton::OnMouseUp(x, y, a_nFlags); // last: a click may end this button
}

void CButtonMom::OnCaptureLost() {
    TakePress(0);
    if (sPress.fTarget == 0.0f) return;
    sPress.Retarget(0.0f);
    Root().Invalidate();
}

const std::u16string& CButtonMom::GetText(bool a_bValueOnly) {
    if (!vsItems.empty()) MakeText({});
    return CLED::GetText(a_bValueOnly); // NOLINT(bugprone-parent-virtual-call): neither on nor off
}

} // namespace KAV::GUI
