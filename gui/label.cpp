#include "gui/label.h"

namespace KAV::GUI {

CLabel::CLabel(CGUI& a_piGUI, const SWidgetInfo& a_sInfo)
    : CWidget(a_piGUI, a_sInfo), _sText(a_sInfo.sText) {}

void CLabel::SetText(std::u16string_view a_sText) {
    _sText = a_sText;
}

} // namespace KAV::GUI
