#include "gui/value_display.h"

#include "gui/gui.h"

#include <algorithm>
#include <utility>

namespace KAV::GUI {

CValueDisplay::CValueDisplay(CGUI& a_piGUI, const SWidgetInfo& a_sInfo)
    : CLabel(a_piGUI, a_sInfo), CValueWidget(a_sInfo.fValue, a_sInfo.sList) {}

bool CValueDisplay::SetValue(float a_fNormal, bool a_bHistory) {
    if (a_bHistory) Root().AddRecord(MakeHistory());
    if (!ChangeTo(Clamped(a_fNormal))) return false;
    if (ItemCount() > 0) CLabel::SetText(Items()[static_cast<std::size_t>(Item())]);
    if (!_bFromHost) Root().SetParameter(Id(), Value());
    OnValueChanged(Value(), Item());
    return true;
}

void CValueDisplay::SetItems(std::vector<std::u16string> a_vsItems) {
    CValueWidget::SetItems(std::move(a_vsItems));
    if (ItemCount() > 0) CLabel::SetText(Items()[static_cast<std::size_t>(Item())]);
}

void CValueDisplay::SetFromHost(float a_fNormal) {
    if (Id() < 0) return;
    _bFromHost = true;
    SetValue(a_fNormal, false);
    _bFromHost = false;
}

void CValueDisplay::SetText(std::u16string_view a_sText) {
    if (a_sText == Text()) return; // several entries have this name: keep the chosen one
    CLabel::SetText(a_sText);
    const auto found = std::find(Items().begin(), Items().end(), a_sText);
    if (found != Items().end()) ShowItemSilently(static_cast<std::int32_t>(found - Items().begin()));
}

bool CValueDisplay::IsItemEnabled(std::int32_t) {
    return true;
}

void CValueDisplay::ShowItem(std::int32_t a_nItem) {
    if (a_nItem < 0 || a_nItem >= ItemCount() || a_nItem == Item()) return;
    ShowItemSilently(a_nItem);
    CLabel::SetText(Items()[static_cast<std::size_t>(a_nItem)]);
}

void CValueDisplay::Copy(
    const std::vector<std::u16string>& a_vsItems, std::int32_t a_nItem, std::u16string_view a_sText) {
    if (a_vsItems != Items()) CValueWidget::SetItems(a_vsItems);
    if (a_nItem != Item()) ShowItemSilently(a_nItem);
    CLabel::SetText(a_sText);
}

void CValueDisplay::Step(int a_nDirection) {
    std::int32_t item = Item() + a_nDirection;
    while (item >= 0 && item < ItemCount() && !IsItemEnabled(item)) item += a_nDirection;
    if (item < 0 || item >= ItemCount()) return;
    Root().BeginEdit(Id());
    SetItem(item, true);
    Root().EndEdit(Id());
}

} // namespace KAV::GUI
