#include "device_gui/xxx_gui.h"

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "device_gui/new_version_led.h"
#include "device_gui/patch_display.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace KAV {

namespace {

constexpr std::int32_t LeastWidth = 500;
constexpr float Aspect = 1.363472f; // the panel's 754 by 553 pixels
constexpr std::int32_t LargestWidth =
    std::numeric_limits<std::int16_t>::max(); // the host's record has 16 bits

} // namespace

CXXXGUI::CChange::CChange(CXXXGUI& a_piGUI) : _piGUI(a_piGUI), _iLock(std::in_place, a_piGUI) {
    ++_piGUI._nChanges;
}

CXXXGUI::CChange::~CChange() {
    if (--_piGUI._nChanges > 0) return;
    const auto notices = std::exchange(_piGUI._vsNotices, {});
    _iLock.reset();
    for (const auto& notice : notices) _piGUI._piDSP.SetParameterAutomated(notice.nTag, notice.fNormal);
}

CXXXGUI::CXXXGUI(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, const Utils::SMakerService& a_psService)
    : CGUI(a_psService), _piDSP(a_piDSP), _piControls(a_piControls), _sService(a_psService),
      _iVersion(*this, a_psService) {
    _iVersion.Start();
}

CXXXGUI::~CXXXGUI() {
    _iVersion.Stop();
}

void CXXXGUI::SetParam(std::int32_t a_nTag, float a_fValue, std::uint32_t a_nFlags) {
    _piDSP.SetParam(a_nTag, a_fValue, a_nFlags);
    const std::int32_t tag = _piControls.ResolveTag(a_nTag, a_nFlags);
    if (HostIndexOf(tag) != NoHostIndex)
        _vsNotices.push_back({tag, _piDSP.GetParam(tag, Normalized | BaseValue)});
}

void CXXXGUI::Undo() {
    const CChange change(*this);
    CGUI::Undo();
}

void CXXXGUI::Redo() {
    const CChange change(*this);
    CGUI::Redo();
}

void CXXXGUI::SetParameter(std::int32_t a_nId, float a_fNormal) {
    const CChange change(*this);
    SetParam(a_nId, a_fNormal, Normalized | GroupRelative);
}

void CXXXGUI::BeginEdit(std::int32_t a_nId) {
    _piDSP.BeginEdit(a_nId);
}

void CXXXGUI::EndEdit(std::int32_t a_nId) {
    _piDSP.EndEdit(a_nId);
}

void CXXXGUI::OnFrame(std::uint32_t a_nElapsedMs) {
    DeliverMessages();
    if (auto* const lamp = Find<CNewVersionLED>()) lamp->Tick(a_nElapsedMs);
    _piDSP.OnValueChanged();
    for (auto* const widget : Widgets())
        widget->SetFromHost(_piDSP.GetParam(widget->Id(), Normalized | GroupRelative));
    const std::int32_t latency = _piDSP.GetLatency();
    if (latency == _nLastLatency) return;
    _nLastLatency = latency;
    OnLatencyChanged(latency);
}

void CXXXGUI::OnLatencyChanged(std::int32_t) {}

void CXXXGUI::ResizeTo(std::int32_t a_nWidth, std::int32_t a_nHeight) {
    if (a_nWidth <= 0 || a_nHeight <= 0) return;
    Resize(std::clamp(a_nWidth, LeastWidth, LargestWidth), std::min(a_nHeight, LargestWidth));
}

void CXXXGUI::ResizeToWidth(std::int32_t a_nWidth) {
    // In single precision, which rounds: 754 has to give 553, though the aspect is a little above 754 / 553.
    ResizeTo(a_nWidth, static_cast<std::int32_t>(static_cast<float>(a_nWidth) / Aspect));
}

std::size_t CXXXGUI::WritePatch(const char** a_psData, std::uint32_t a_nFlags) {
    if (a_psData == nullptr) return 0;
    const CChange change(*this);
    _sPatch = PatchText(a_nFlags);
    *a_psData = _sPatch.c_str();
    return _sPatch.size() + 1;
}

std::size_t CXXXGUI::WriteChunk(void** a_psData, std::uint32_t a_nFlags) {
    if (a_psData == nullptr) return 0;
    const CChange change(*this);
    _sChunk = PatchText(a_nFlags);
    *a_psData = _sChunk.data();
    return _sChunk.size() + 1;
}

void CXXXGUI::SetPatchName(std::u16string_view a_sName) {
    const CChange change(*this);
    if (auto* const display = Find<CPatch>()) {
        display->SetText(a_sName);
        _nPatch = display->Item();
    }
}

std::u16string CXXXGUI::PatchName() const {
    const auto* const display = Find<CPatch>();
    return display != nullptr ? display->Text() : std::u16string();
}

std::u16string CXXXGUI::PatchNameAt(std::int32_t a_nIndex) const {
    const GUI::CLock lock(*this);
    const auto* const display = Find<CPatch>();
    if (display == nullptr || a_nIndex < 0 || a_nIndex >= display->ItemCount()) return {};
    return display->Items()[static_cast<std::size_t>(a_nIndex)];
}

std::int32_t CXXXGUI::CurrentPatch() const {
    const GUI::CLock lock(*this);
    return _nPatch;
}

} // namespace KAV
