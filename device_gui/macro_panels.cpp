#include "device_gui/macro_panels.h"

#include "panel/layout.h"
#include "panel/sprites.h"
#include "utils/text.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace KAV {

namespace {

constexpr float SizeToPattern = 1.2f;

/// The row of the panel that only says how large the knobs are.
const GUI::CWidget& Pattern(const CXXXGUI& a_piPlugin) {
    for (const auto* const widget : a_piPlugin.AllWidgets()) {
        if (Utils::ToUtf8(widget->Name()) == Panel::MacroPattern) return *widget;
    }
    throw std::out_of_range("no pattern of the macros' knobs");
}

/// A control of a group with a range that has no steps.
bool IsAssignable(const CPluginKnob& a_piKnob) {
    const auto name = Utils::ToUtf8(a_piKnob.Name());
    return a_piKnob.Id() >= 0 && a_piKnob.Items().empty() &&
           std::none_of(Panel::WithoutMacros.begin(), Panel::WithoutMacros.end(),
               [&name](std::string_view a_sOther) { return name.find(a_sOther) != std::string::npos; });
}

/// The controls that may follow a macro, line by line from the left.
std::vector<CPluginKnob*> Controls(const CXXXGUI& a_piPlugin) {
    auto knobs = a_piPlugin.FindAll<CPluginKnob>();
    std::erase_if(knobs, [](const auto* a_piKnob) { return !IsAssignable(*a_piKnob); });
    std::stable_sort(knobs.begin(), knobs.end(), [](const auto* a_piLeft, const auto* a_piRight) {
        const auto left = a_piLeft->PixelRect();
        const auto right = a_piRight->PixelRect();
        return std::pair(left.nT, left.nL) < std::pair(right.nT, right.nL);
    });
    return knobs;
}

SMacroRect RectOver(const GUI::CWidget& a_piControl, const GUI::CWidget& a_piPattern, int a_nGroups) {
    const auto knob = a_piPattern.PixelRect();
    const auto control = a_piControl.PixelRect();
    SMacroRect rect;
    rect.fW = SizeToPattern * static_cast<float>(knob.nW) * static_cast<float>(a_nGroups);
    rect.fH = SizeToPattern * static_cast<float>(knob.nH);
    rect.fX = static_cast<float>(control.nL) + (static_cast<float>(control.nW) - rect.fW) / 2.0f;
    rect.fY = static_cast<float>(control.nT) + (static_cast<float>(control.nH) - rect.fH) / 2.0f;
    return rect;
}

/// Below the panel before, if the two would cover each other.
SMacroRect Beside(SMacroRect a_sRect, const SMacroRect* a_psBefore) {
    if (a_psBefore == nullptr) return a_sRect;
    const float right = std::min(a_sRect.fX + a_sRect.fW, a_psBefore->fX + a_psBefore->fW);
    const float overlap = right - std::max(a_sRect.fX, a_psBefore->fX);
    if (overlap > a_sRect.fH / 2.0f) a_sRect.fY += a_psBefore->fH;
    return a_sRect;
}

GUI::SWidgetInfo PanelInfo(const SMacroRect& a_sRect) {
    GUI::SWidgetInfo info;
    info.sImage = Utils::ToUtf16(Panel::SpriteOf("toolbtnmacro").image);
    info.fX = a_sRect.fX;
    info.fY = a_sRect.fY;
    info.fW = a_sRect.fW;
    info.fH = a_sRect.fH;
    info.bPassive = true;
    info.bVisible = false;
    info.nVisibleRiseMs = info.nVisibleFallMs = MacroFadeMs;
    return info;
}

} // namespace

CMacroPanels::CMacroPanel::CMacroPanel(CXXXGUI& a_piPlugin, std::size_t a_nMacro,
    const CPluginKnob& a_piControl, const CMacroPanel* a_piBefore, std::uint32_t a_nColor)
    : CMacroPanel(a_piPlugin, a_nMacro, a_piControl,
          Beside(RectOver(a_piControl, Pattern(a_piPlugin), a_piPlugin.Device().GetGroupCount()),
              a_piBefore != nullptr ? &a_piBefore->_sRect : nullptr),
          a_nColor) {}

CMacroPanels::CMacroPanel::CMacroPanel(CXXXGUI& a_piPlugin, std::size_t a_nMacro,
    const CPluginKnob& a_piControl, const SMacroRect& a_sRect, std::uint32_t a_nColor)
    : CButton(a_piPlugin, PanelInfo(a_sRect)), _sRect(a_sRect) {
    FreezeToFractions(true);
    for (int group = 0; group < a_piPlugin.Device().GetGroupCount(); ++group)
        _vpiKnobs.push_back(
            std::make_unique<CMacroSens>(a_piPlugin, a_nMacro, group, a_piControl, a_sRect, a_nColor));
}

void CMacroPanels::CMacroPanel::Show(bool a_bShow) {
    SetVisible(a_bShow, 0);
    for (const auto& knob : _vpiKnobs) {
        knob->Sync();
        knob->SetVisible(a_bShow, 0);
    }
}

CMacroPanels::CMacroPanels(CXXXGUI& a_piPlugin, std::size_t a_nMacro, std::uint32_t a_nColor) {
    for (const auto* const control : Controls(a_piPlugin)) {
        const auto* const before = _vpiPanels.empty() ? nullptr : _vpiPanels.back().get();
        _vpiPanels.push_back(std::make_unique<CMacroPanel>(a_piPlugin, a_nMacro, *control, before, a_nColor));
    }
}

void CMacroPanels::Show(bool a_bShow) {
    for (const auto& panel : _vpiPanels) panel->Show(a_bShow);
}

} // namespace KAV
