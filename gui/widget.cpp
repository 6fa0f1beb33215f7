#include "gui/widget.h"

#include "gui/gui.h"

namespace KAV::GUI {

CWidget::CWidget(CGUI& a_piGUI, const SWidgetInfo& a_sInfo)
    : _piGUI(a_piGUI), _nId(a_sInfo.nId), _sName(a_sInfo.sName), _bVisible(a_sInfo.bVisible) {
    _piGUI.Enter(*this);
}

CWidget::~CWidget() {
    _piGUI.Leave(*this);
}

bool CWidget::IsVisible() const noexcept {
    return _bVisible;
}

void CWidget::SetVisible(bool a_bShow) {
    _bVisible = a_bShow;
}

void CWidget::SetFromHost(float) {}

} // namespace KAV::GUI
