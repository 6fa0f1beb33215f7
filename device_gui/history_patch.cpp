#include "device_gui/history_patch.h"

#include "state/device_state.h"

#include <utility>

namespace KAV {

CHistoryPatch::CHistoryPatch(CDeviceState& a_piState) : _piState(a_piState), _sText(a_piState.PatchText(0)) {}

void CHistoryPatch::Swap() {
    auto present = _piState.PatchText(0);
    _piState.ApplyPatchData(_sText.data(), _sText.size(), 0);
    _sText = std::move(present);
}

bool CHistoryPatch::Differs(const IHistory& a_piOther) const {
    const auto* const other = dynamic_cast<const CHistoryPatch*>(&a_piOther);
    return other == nullptr || other->_sText != _sText;
}

} // namespace KAV
