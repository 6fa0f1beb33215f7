#include "gui/edit.h"

#include "gui/gui.h"
#include "gui/label.h"
#include "gui/value_widget.h"
#include "utils/number.h"

#include <string>
#include <utility>

namespace KAV::GUI {

namespace {

SWidgetInfo EditInfo(const CGUI& a_piGUI) {
    constexpr std::int32_t width = 50;
    constexpr std::int32_t height = 15;
    SWidgetInfo info;
    info.fW = static_cast<float>(a_piGUI.ScaleByDPI(width));
    info.fH = static_cast<float>(a_piGUI.ScaleByDPI(height));
    return info;
}

std::u16string TextOf(CWidget& a_piWidget, bool a_bText) {
    if (!a_bText) return a_piWidget.GetText(true);
    const auto* const label = dynamic_cast<const CLabel*>(&a_piWidget);
    return label == nullptr ? std::u16string() : label->Text();
}

} // namespace

CEdit::CEdit(CGUI& a_piGUI) : CWidget(a_piGUI, EditInfo(a_piGUI)) {}

void CEdit::Open(CWidget* a_piWidget, bool a_bText) {
    if (a_piWidget == nullptr) {
        Drop();
        return;
    }
    const auto text = TextOf(*a_piWidget, a_bText);
    bText = a_bText;
    piTarget = a_piWidget;
    auto box = BoxFor(*a_piWidget);
    if (!Root().Window().OpenTextBox(box, text, !a_bText)) {
        bText = false;
        piTarget = nullptr;
    }
}

SPixelRect CEdit::BoxFor(const CWidget& a_piWidget) const noexcept {
    const auto target = a_piWidget.PixelRect();
    auto box = PixelRect();
    box.nT = target.nT + (target.nH - box.nH) / 2;
    if (bText) {
        box.nL = target.nL;
        box.nW = target.nW;
    } else {
        box.nL = target.nL + (target.nW - box.nW) / 2;
    }
    return box;
}

void CEdit::Commit() {
    if (piTarget == nullptr) return;
    const auto typed = Root().Window().BoxText();
    const bool isText = bText;
    CWidget* const target = piTarget;
    Drop(); // first, so that nothing that the new value leads to finds the box open
    if (isText) {
        if (auto* const label = dynamic_cast<CLabel*>(target)) label->SetText(typed);
    } else if (auto* const value = dynamic_cast<CValueWidget*>(target)) {
        value->SetPlain(Utils::ToFloat(typed, 0.0f), true);
    }
}

void CEdit::Drop() noexcept {
    bText = false;
    // Without its target before it closes: it may report the loss of the focus.
    if (std::exchange(piTarget, nullptr) != nullptr) Root().Window().CloseTextBox();
}

void CEdit::Forget(const CWidget& a_piWidget) noexcept {
    if (piTarget == &a_piWidget) Drop();
}

void CEdit::Draw(std::uint32_t) {}

} // namespace KAV::GUI
