#include "device_gui/history_patch.h"

#include "device_gui/xxx_gui.h"

#include <utility>

namespace KAV {

CHistoryPatch::CHistoryPatch(CXXXGUI& a_piGUI) : _piGUI(a_piGUI), _sText(a_piGUI.PatchText(0)) {}

void CHistoryPatch::Swap() {
    auto present = _piGUI.PatchText(0);
    _piGUI.ApplyPatchData(_sText.data(), _sText.size(), 0);
    _sText = std::move(present);
}

bool CHistoryPatch::Differs(const IHistory& a_piOther) const {
    const auto* const other = dynamic_cast<const CHistoryPatch*>(&a_piOther);
    return other == nullptr || other->_sText != _sText;
}

} // namespace KAV
