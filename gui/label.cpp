#include "gui/label.h"

#include "gui/gui.h"

namespace KAV::GUI {

CLabel::CLabel(CGUI& a_piGUI, const SWidgetInfo& a_sInfo)
    : CWidget(a_piGUI, a_sInfo), _sText(a_sInfo.sText) {}

std::u16string CLabel::Text() const {
    const CLock lock(Root());
    return _sText;
}

void CLabel::SetText(std::u16string_view a_sText) {
    const CLock lock(Root());
    _sText = a_sText;
}

} // namespace KAV::GUI
