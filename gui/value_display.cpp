#include "gui/value_display.h"

#include "gui/edit_bracket.h"
#include "gui/gui.h"
#include "gui/menu.h"
#include "utils/clock.h"

#include <algorithm>
#include <utility>

namespace KAV::GUI {

namespace {

// A text of an entry further down comes from below, as it were: the old one leaves on the other side.
constexpr std::int32_t FromAfter = -2;
constexpr std::int32_t FromBefore = 2;

// Parameters with a lower id are changed from a menu without an edit of the host's.
constexpr std::int32_t FirstEditedByMenu = 2;

std::int32_t SlideBetween(std::int32_t a_nBefore, std::int32_t a_nItem) noexcept {
    return a_nItem > a_nBefore ? FromAfter : FromBefore;
}

} // namespace

CValueDisplay::CValueDisplay(CGUI& a_piGUI, const SWidgetInfo& a_sInfo)
    : CLabel(a_piGUI, a_sInfo), CValueWidget(a_piGUI, *this, a_sInfo) {
    if (!a_sInfo.bPassive) bInteractive = true;
}

// The value and the text

bool CValueDisplay::SetValue(float a_fNormal, bool a_bHistory) {
    const std::int32_t before = nItem;
    if (!TakeValue(a_fNormal, a_bHistory)) return false;
    ShowItemText(before);
    TellDevice();
    OnValueChanged(Value(), Item());
    return true;
}

void CValueDisplay::ShowItemText(std::int32_t a_nBefore) {
    if (nItem >= 0 && nItem < ItemCount()) ChangeText(ItemText(), SlideBetween(a_nBefore, nItem));
}

void CValueDisplay::SetItems(std::vector<std::u16string> a_vsItems) {
    const std::int32_t before = nItem;
    CValueWidget::SetItems(std::move(a_vsItems));
    ShowItemText(before);
}

void CValueDisplay::SetFromHost(float a_fNormal) {
    if (nId >= 0) TakeFromHost(a_fNormal);
}

std::int32_t CValueDisplay::ItemOf(std::u16string_view a_sText) const {
    const auto text = WithoutMarks(a_sText);
    const auto found = std::find_if(
        vsItems.begin(), vsItems.end(), [&](const auto& a_sItem) { return WithoutMarks(a_sItem) == text; });
    return found == vsItems.end() ? NoItem : static_cast<std::int32_t>(found - vsItems.begin());
}

void CValueDisplay::SetText(std::u16string_view a_sText) {
    if (a_sText == sText) return; // several entries may have this name: keep the chosen one
    const std::int32_t item = ItemOf(a_sText);
    ChangeText(a_sText, SlideBetween(ItemOf(sText), item));
    if (item != NoItem) ShowItemSilently(item);
}

void CValueDisplay::ShowItem(std::int32_t a_nItem) {
    if (a_nItem < 0 || a_nItem >= ItemCount() || a_nItem == nItem) return;
    const std::int32_t before = nItem;
    ShowItemSilently(a_nItem);
    ShowItemText(before);
}

void CValueDisplay::Copy(
    const std::vector<std::u16string>& a_vsItems, std::int32_t a_nItem, std::u16string_view a_sText) {
    const std::int32_t before = nItem;
    if (a_vsItems != vsItems) CValueWidget::SetItems(a_vsItems);
    if (a_nItem != nItem) ShowItemSilently(a_nItem);
    ChangeText(a_sText, SlideBetween(before, nItem));
}

// What the user does

std::int32_t CValueDisplay::NextItem(std::int32_t a_nDirection) {
    for (std::int32_t item = nItem + a_nDirection; item >= 0 && item < ItemCount(); item += a_nDirection) {
        const auto text = WithoutMarks(vsItems[static_cast<std::size_t>(item)]);
        if (IsItemEnabled(item, text) && IsItemShown(item, text)) return item;
    }
    return NoItem;
}

void CValueDisplay::Step(int a_nDirection) {
    const std::int32_t item = NextItem(a_nDirection);
    if (item == NoItem) return;
    InEdit(Root(), nId, true, [&] { SetItem(item, true); });
}

void CValueDisplay::OnMouseWheel(float a_fNotches, std::uint32_t a_nFlags) {
    CLabel::OnMouseWheel(a_fNotches, a_nFlags);
    const std::int32_t item = NextItem(a_fNotches > 0.0f ? -1 : 1);
    if (item == NoItem) return;
    BeforeSelect();
    InEdit(Root(), nId, true, [&] { SetItem(item, false); });
    AfterSelect();
}

void CValueDisplay::OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CLabel::OnMouseDown(x, y, a_nFlags);
    OnCaptureLost(); // a press whose release has not come
    if ((a_nFlags & MouseLeft) == 0) return;
    _bPressed = true;
    sPress.Retarget(1.0f);
    Root().Invalidate();
}

void CValueDisplay::OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    CLabel::OnMouseUp(x, y, a_nFlags);
    const bool wasPressed = _bPressed;
    OnCaptureLost();
    if (wasPressed && (a_nFlags & MouseLeft) != 0) ShowMenu();
}

void CValueDisplay::OnCaptureLost() {
    _bPressed = false;
    if (sPress.fTarget == 0.0f) return;
    sPress.Retarget(0.0f);
    Root().Invalidate();
}

void CValueDisplay::Tick(std::uint32_t a_nMs) {
    CLabel::Tick(a_nMs);
    sPress.nRiseMs = sValue.nRiseMs;
    sPress.nFallMs = sValue.nFallMs;
    const bool hasMoved = sValue.Step(a_nMs);
    if (sPress.Step(a_nMs) || hasMoved) Root().Invalidate();
}

// The menu

bool CValueDisplay::IsItemEnabled(std::int32_t, const std::u16string&) {
    return true;
}

bool CValueDisplay::IsItemChecked(std::int32_t, const std::u16string& a_sText) {
    return a_sText == sText;
}

bool CValueDisplay::IsItemShown(std::int32_t, const std::u16string&) {
    return true;
}

void CValueDisplay::ShowMenu() {
    std::vector<SListEntry> entries;
    entries.reserve(vsItems.size());
    for (std::int32_t item = 0; item < ItemCount(); ++item) {
        const auto& name = vsItems[static_cast<std::size_t>(item)];
        const auto text = WithoutMarks(name);
        SListEntry entry{name, CommandOf({nId, item}).has_value() && IsItemShown(item, text), false, false};
        if (entry.bShown) { // to ask about an entry may take a look into a file
            entry.bChecked = IsItemChecked(item, text);
            entry.bEnabled = IsItemEnabled(item, text);
        }
        entries.push_back(entry);
    }
    const auto menu = MenuOf(entries, nId);
    Root().ShowMenu(*this, menu);
}

void CValueDisplay::SelectItem(std::int32_t a_nItem) {
    if (a_nItem < 0 || a_nItem >= ItemCount() || a_nItem == nItem) return;
    BeforeSelect();
    InEdit(Root(), nId, nId >= FirstEditedByMenu, [&] { SetItem(a_nItem, true); });
    AfterSelect();
}

void CValueDisplay::BeforeSelect() {}

void CValueDisplay::AfterSelect() {}

void CValueDisplay::SoakTest() {
    const std::int32_t steps = ItemCount() + 10; // over the end as well
    for (const float notch : {1.0f, -1.0f}) {
        for (std::int32_t n = 0; n < steps; ++n) {
            OnMouseWheel(notch, 0);
            Utils::WaitMs(SoakPauseMs);
        }
    }
}

} // namespace KAV::GUI
