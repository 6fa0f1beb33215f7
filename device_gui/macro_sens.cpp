#include "device_gui/macro_sens.h"

#include "device/parameter_table.h"
#include "panel/sprites.h"
#include "patch/macro.h"
#include "utils/number.h"
#include "utils/text.h"

namespace KAV {

namespace {

constexpr float KnobShare = 0.8f;  // of a group's part of the panel
constexpr float StepShare = 0.85f; // from one knob to the next
constexpr float HeadRoom = 1.2f;   // as if a knob were so much higher when it is centred
constexpr float Percent = 100.0f;

constexpr std::uint32_t WithMacro = 0xFFA7CDDF;
constexpr std::uint32_t AgainstMacro = 0xFFFF8E7B;

GUI::SWidgetInfo SensInfo(const CPluginKnob& a_piControl, int a_nGroup, int a_nGroups,
    const SMacroRect& a_sPanel, std::uint32_t a_nColor) {
    const auto number = Utils::ToUtf16(std::to_string(a_nGroup + 1));
    const auto groups = static_cast<float>(a_nGroups);
    const float step = a_sPanel.fW / groups * StepShare;
    GUI::SWidgetInfo info;
    info.sName = a_piControl.Name() + u" FX" + number + u" Mod";
    info.sText = number;
    info.fFontSize = 0.37f;
    info.sImage = Utils::ToUtf16(Panel::SpriteOf("knob04").image);
    info.sUnit = u"%";
    info.fMin = -Percent;
    info.fMax = Percent;
    info.fValue = info.fDefault = CMacro::NoSensitivity;
    info.fW = info.fH = a_sPanel.fW / groups * KnobShare;
    info.fX = a_sPanel.fX + (a_sPanel.fW - groups * step) / 2.0f + static_cast<float>(a_nGroup) * step;
    info.fY = a_sPanel.fY + (a_sPanel.fH - HeadRoom * info.fH) / 2.0f;
    info.fHintAt = -0.1f;
    info.nColor = info.nColorHover = a_nColor;
    info.bVisible = false;
    info.nVisibleRiseMs = info.nVisibleFallMs = MacroFadeMs;
    return info;
}

} // namespace

CMacroSens::CMacroSens(CXXXGUI& a_piPlugin, std::size_t a_nMacro, int a_nGroup,
    const CPluginKnob& a_piControl, const SMacroRect& a_sPanel, std::uint32_t a_nColor)
    : CPluginKnob(a_piPlugin,
          SensInfo(a_piControl, a_nGroup, a_piPlugin.Device().GetGroupCount(), a_sPanel, a_nColor)),
      _nMacro(a_nMacro), _nTag(a_nGroup * GroupTagStep + a_piControl.Id()) {
    FreezeToFractions(true);
}

void CMacroSens::Sync() {
    TakeFromHost(Device().Sensitivity(_nMacro, _nTag));
}

void CMacroSens::ShowPanel(const SPanelState&) {
    Sync();
}

bool CMacroSens::SetValue(float a_fNormal, bool a_bHistory) {
    if (!CPluginKnob::SetValue(a_fNormal, a_bHistory)) return false;
    if (!bFromHost) Plugin().State().AssignMacro(_nMacro, _nTag, Value());
    return true;
}

const std::u16string& CMacroSens::GetText(bool a_bValueOnly) {
    if (fTextFor != Value()) {
        fTextFor = Value();
        const std::string sign = Value() > CMacro::NoSensitivity ? "+" : "";
        sValueText = Utils::ToUtf16(sign + Utils::FormatFixed(static_cast<double>(GetPlain()), 0));
        sHint = sName + u": " + (Value() == CMacro::NoSensitivity ? u"Off" : sValueText + sUnit);
    }
    return a_bValueOnly ? sValueText : sHint;
}

// One picture serves both directions: what follows is drawn turned by half, from the middle on.
void CMacroSens::DrawImage() {
    const bool isWith = Value() >= CMacro::NoSensitivity;
    nColor = nColorHover = isWith ? WithMacro : AgainstMacro;
    MirrorImage(isWith ? -1.0f : 1.0f);
    CPluginKnob::DrawImage();
    MirrorImage(1.0f); // the number stays upright
}

void CMacroSens::MirrorImage(float a_fScale) noexcept {
    constexpr std::size_t scaleX = 0;
    constexpr std::size_t scaleY = 1;
    for (const auto axis : {scaleX, scaleY}) {
        for (const auto state : {GUI::EState::Normal, GUI::EState::Hover})
            asLook[axis][static_cast<std::size_t>(state)] = a_fScale;
    }
}

} // namespace KAV
