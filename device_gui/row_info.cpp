#include "device_gui/row_info.h"

#include "utils/text.h"

namespace KAV {

GUI::SWidgetInfo InfoOf(const Panel::SPanelRow& a_sRow) {
    GUI::SWidgetInfo info;
    info.nId = a_sRow.id;
    info.sName = Utils::ToUtf16(a_sRow.name);
    info.sText = Utils::ToUtf16(a_sRow.text);
    info.sList = Utils::ToUtf16(a_sRow.list);
    info.fValue = static_cast<float>(a_sRow.value);
    info.nRadioGroup = a_sRow.radioGroup;
    info.bVisible = a_sRow.visible;
    return info;
}

} // namespace KAV
