#include "gui/button.h"

#include "gui/gui.h"

namespace KAV::GUI {

CButton::CButton(CGUI& a_piGUI, const SWidgetInfo& a_sInfo)
    : CLabel(a_piGUI, a_sInfo), CValueWidget(a_sInfo.fValue, a_sInfo.sList),
      _nRadioGroup(a_sInfo.nRadioGroup) {}

bool CButton::SetValue(float a_fNormal, bool a_bHistory) {
    if (a_bHistory) Root().AddRecord(MakeHistory());
    if (!ChangeTo(Clamped(a_fNormal))) return false;
    if (_nRadioGroup >= 0 && Value() == 1.0f) {
        for (auto* const button : Root().FindAll<CButton>()) {
            if (button != this && button->_nRadioGroup == _nRadioGroup) button->SetValue(0.0f, false);
        }
    }
    if (!_bFromHost) Root().SetParameter(Id(), Value());
    OnValueChanged(Value(), Item());
    return true;
}

void CButton::SetFromHost(float a_fNormal) {
    if (Id() < 0) return;
    _bFromHost = true;
    SetValue(a_fNormal, false);
    _bFromHost = false;
}

CValueWidget& CButton::HistoryTarget() {
    if (_nRadioGroup >= 0) {
        for (auto* const button : Root().FindAll<CButton>()) {
            if (button->_nRadioGroup == _nRadioGroup && button->Value() == 1.0f) return *button;
        }
    }
    return *this;
}

} // namespace KAV::GUI
