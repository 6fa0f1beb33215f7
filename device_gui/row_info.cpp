#include "device_gui/row_info.h"

#include "utils/text.h"

namespace KAV {

GUI::SWidgetInfo InfoOf(const Panel::SPanelRow& a_sRow) {
    GUI::SWidgetInfo info;
    info.nId = a_sRow.id;
    info.sName = Utils::ToUtf16(a_sRow.name);
    info.sTitle = Utils::ToUtf16(a_sRow.title);
    info.fX = static_cast<float>(a_sRow.rect.x);
    info.fY = static_cast<float>(a_sRow.rect.y);
    info.fW = static_cast<float>(a_sRow.rect.w);
    info.fH = static_cast<float>(a_sRow.rect.h);
    if (a_sRow.sprite != nullptr) info.sImage = Utils::ToUtf16(a_sRow.sprite->image);
    info.sText = Utils::ToUtf16(a_sRow.text);
    info.fFontSize = static_cast<float>(a_sRow.textSize);
    info.nTextColor = a_sRow.textColour;
    info.sList = Utils::ToUtf16(a_sRow.list);
    info.fValue = info.fDefault = static_cast<float>(a_sRow.value);
    info.fMin = static_cast<float>(a_sRow.minimum);
    info.fMax = static_cast<float>(a_sRow.maximum);
    info.sUnit = Utils::ToUtf16(a_sRow.unit);
    info.fHintAt = static_cast<float>(a_sRow.hintAt);
    info.nMrgL = info.nMrgT = info.nMrgR = info.nMrgB = a_sRow.margin;
    info.fHotL = info.fHotT = info.fHotR = info.fHotB = static_cast<float>(a_sRow.inset);
    info.fValueRiseMs = static_cast<float>(a_sRow.riseMs);
    info.fValueFallMs = static_cast<float>(a_sRow.fallMs);
    info.nVisibleRiseMs = info.nVisibleFallMs = static_cast<std::uint32_t>(a_sRow.fadeMs);
    info.nRadioGroup = a_sRow.radioGroup;
    info.bVisible = a_sRow.visible;
    return info;
}

} // namespace KAV
