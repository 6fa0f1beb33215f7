#include "device_gui/macro_knob.h"

#include "device_gui/macro_button.h"
#include "device_gui/row_info.h"

namespace KAV {

CMacroKnob::CMacroKnob(CXXXGUI& a_piPlugin, int a_nMacro)
    : CPluginKnob(a_piPlugin, InfoOf(Panel::RowOf(Panel::EClass::MacroKnob, a_nMacro))),
      _nMacro(static_cast<std::size_t>(a_nMacro)) {}

const CMacroBtn& CMacroKnob::Button() {
    if (_piButton == nullptr) _piButton = Plugin().FindAll<CMacroBtn>().at(_nMacro);
    return *_piButton;
}

const std::u16string& CMacroKnob::GetText(bool a_bValueOnly) {
    const bool isNewValue = fTextFor != Value();
    CPluginKnob::GetText(a_bValueOnly);
    const auto& name = Button().Text();
    if (isNewValue || name != _sHintName) {
        _sHintName = name;
        sHint = name + u": " + sValueText + u" " + sUnit;
    }
    return a_bValueOnly ? sValueText : sHint;
}

} // namespace KAV
