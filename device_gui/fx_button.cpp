#include "device_gui/fx_button.h"

#include "utils/number.h"

namespace KAV {

namespace {

constexpr std::int32_t FirstFxTag = 17;
constexpr std::int32_t FxRadioGroup = 1;

GUI::SWidgetInfo FxInfo(int a_nGroup) {
    GUI::SWidgetInfo info;
    info.nId = FirstFxTag + a_nGroup;
    info.sText = Utils::FormatInt(a_nGroup + 1);
    info.sName = u"ToolBtnFx" + info.sText;
    info.fValue = a_nGroup == 0 ? 1.0f : 0.0f;
    info.nRadioGroup = FxRadioGroup;
    return info;
}

GUI::SWidgetInfo CopyInfo() {
    GUI::SWidgetInfo info;
    info.sName = u"ToolBtnFxCopy";
    return info;
}

} // namespace

CFxBtn::CFxBtn(CXXXGUI& a_piPlugin, int a_nGroup)
    : CPluginButton(a_piPlugin, FxInfo(a_nGroup)), _nGroup(a_nGroup) {}

void CFxBtn::OnValueChanged(float a_fNormal, std::int32_t) {
    if (a_fNormal == 0.0f) return;
    const int from = Device().GetCurrentGroup();
    Plugin().Controls().SetCurrentGroup(_nGroup);
    if (_bCopy) Plugin().CopyGroup(from, _nGroup);
    if (auto* const copy = Plugin().Find<CFxBtnCopy>()) copy->SetValue(0.0f, false);
    Plugin().ApplyRouting();
}

CFxBtnCopy::CFxBtnCopy(CXXXGUI& a_piPlugin) : CPluginButton(a_piPlugin, CopyInfo()) {}

void CFxBtnCopy::OnValueChanged(float a_fNormal, std::int32_t) {
    for (auto* const button : Plugin().FindAll<CFxBtn>()) button->SetCopyMode(a_fNormal != 0.0f);
}

} // namespace KAV
