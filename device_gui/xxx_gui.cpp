#include "device_gui/xxx_gui.h"

#include "device/value_flags.h"
#include "device_gui/about_view.h"
#include "device_gui/channel_button.h"
#include "device_gui/gain_reduction.h"
#include "device_gui/history_buttons.h"
#include "device_gui/history_patch.h"
#include "device_gui/new_version_led.h"
#include "device_gui/panel_view.h"
#include "device_gui/routing_edit.h"
#include "device_gui/row_info.h"
#include "device_gui/user_guide.h"
#include "utils/path.h"
#include "utils/shell_open.h"

#include <algorithm>
#include <memory>

namespace KAV {

CXXXGUI::CXXXGUI(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, CDeviceState& a_piState,
    const Utils::SMakerService& a_psService, const GUI::SSurroundings& a_sSurroundings)
    : CGUI(a_piState.Turns(), a_psService, InfoOf(Panel::HintRow()), a_sSurroundings), _piDSP(a_piDSP),
      _piControls(a_piControls), _piState(a_piState), _iVersion(*this, a_psService),
      _iMaker(_iVersion, a_psService) {
    SizeDrag().Offer(CDeviceState::LeastWidth, CDeviceState::Aspect,
        [this](std::int32_t a_nWidth, std::int32_t a_nHeight) { ResizeTo(a_nWidth, a_nHeight); });
    Utils::CTurn turn(_piState.Turns());
    _piState.SetWitness(turn, this);
    _iVersion.Start();
}

CXXXGUI::~CXXXGUI() {
    _iVersion.Stop();
    Utils::CTurn turn(_piState.Turns());
    _piState.SetWitness(turn, nullptr);
    _piState.Turns().SetEnd(turn, nullptr);
}

// The widgets and the state

void CXXXGUI::ShowAtTurnEnds(const Utils::CTurn& a_piTurn) noexcept {
    _piState.Turns().SetEnd(a_piTurn, this);
}

void CXXXGUI::HoldWidgets(bool a_bHold) {
    const Utils::CTurn turn(_piState.Turns());
    _bHeld = a_bHold;
}

void CXXXGUI::OnTurnEnd(Utils::CTurn& a_piTurn) {
    if (!_bWindow && !_bHeld && CopyPanel(a_piTurn)) Resize(_nPanelWidth, _nPanelHeight);
}

void CXXXGUI::BeforePatch(Utils::CTurn&) {
    if (IsHistoryEnabled()) AddRecord(std::make_unique<CHistoryPatch>(_piState));
}

bool CXXXGUI::CopyPanel(const Utils::CTurn& a_piTurn) {
    const auto& panel = _piState.Panel(a_piTurn);
    const std::uint32_t generation = panel.generation;
    if (generation == _nShown) return false;
    for (auto* const view : FindAll<IPanelView>()) view->ShowPanel(panel);
    _bRoutingEdit = panel.isRoutingEdited;
    _nPanelWidth = panel.width;
    _nPanelHeight = panel.height;
    _nShown = generation;
    return true;
}

void CXXXGUI::ShowPanel() {
    if (_piState.Generation() == _nShown) return;
    {
        const Utils::CTurn turn(_piState.Turns());
        CopyPanel(turn);
    }
    // A label that the user is typing would be of no routing.
    if (!_bRoutingEdit && dynamic_cast<CChannelBtn*>(Edit().piTarget) != nullptr) Edit().Drop();
    if (_nPanelWidth == Width() && _nPanelHeight == Height()) return;
    Resize(_nPanelWidth, _nPanelHeight); // outside the turn, for it draws
    if (_bWindow) RequestHostResize(_nPanelWidth, _nPanelHeight);
}

void CXXXGUI::ShowHistory() {
    const auto changes = HistoryChanges();
    if (changes == _nShownSteps) return;
    _nShownSteps = changes;
    for (auto* const button : FindAll<CBtnUndoRedo>()) button->ShowHistory();
}

// The window

void CXXXGUI::CreateGUIWindow() {
    {
        const Utils::CTurn turn(_piState.Turns());
        _bWindow = true; // the widgets are this thread's from now on
        CopyPanel(turn);
    }
    Resize(_nPanelWidth, _nPanelHeight);
    CGUI::CreateGUIWindow();
    ShowLamp();
    _piState.Errors().ShowHeld();
}

void CXXXGUI::DestroyGUIWindow() {
    _piAbout.reset();
    EndRoutingEdit();
    CGUI::DestroyGUIWindow();
    const Utils::CTurn turn(_piState.Turns());
    _bWindow = false;
}

void CXXXGUI::OnFocus(GUI::CWidget* a_piWidget) {
    if (!_bRoutingEdit || a_piWidget == &Edit() || dynamic_cast<CRoutingEdit*>(a_piWidget) != nullptr ||
        dynamic_cast<CChannelBtn*>(a_piWidget) != nullptr)
        return;
    _piState.CancelRoutingEdit();
    ShowPanel();
}

void CXXXGUI::EndRoutingEdit() {
    if (!_bRoutingEdit) return;
    _piState.EndRoutingEdit();
    ShowPanel();
}

bool CXXXGUI::OnUserMessage(std::uint32_t a_nMessage) {
    if (a_nMessage != NewVersionMessage) return CGUI::OnUserMessage(a_nMessage);
    ShowLamp();
    return true;
}

void CXXXGUI::ShowLamp() {
    if (!_iVersion.TakeLamp()) return;
    if (auto* const lamp = Find<CNewVersionLED>()) lamp->SetVisible(true, 0);
}

void CXXXGUI::OpenAbout() {
    if (IsAboutOpen() || !Window().Exists()) return;
    // The panel is out of reach from now on.
    Pointer().LoseCapture();
    Edit().Drop();
    OnMouseLeave();
    _piAbout.reset(); // closed a moment ago
    _piAbout = std::make_unique<CAboutView>(*this);
}

bool CXXXGUI::IsAboutOpen() const noexcept {
    return _piAbout != nullptr && !_piAbout->IsClosed();
}

void CXXXGUI::StepAbout() {
    if (_piAbout == nullptr) return;
    if (_piAbout->IsClosed()) {
        _piAbout.reset();
    } else {
        _piAbout->Step();
    }
}

void CXXXGUI::OpenUserGuide() const {
    const auto file = FindUserGuide(Utils::GetModulePath());
    if (file.empty())
        _iMaker.OpenUserManual();
    else
        Utils::OpenUrlOrFile(file);
}

void CXXXGUI::OnKeyDown(std::uint32_t a_nKey) {
    if (a_nKey == GUI::KeyF1) {
        OpenUserGuide();
        return;
    }
    if (!Window().IsLeftControlDown() || IsAboutOpen()) return;
    const bool undoes = a_nKey == GUI::KeyZ && CanUndo();
    const bool redoes = a_nKey == GUI::KeyY && CanRedo();
    if (undoes || redoes) EndRoutingEdit(); // first: the step may be about a channel button
    if (undoes) Undo();
    if (redoes) Redo();
}

void CXXXGUI::OnFrame(std::uint32_t a_nElapsedMs) {
    DeliverMessages();
    if (auto* const lamp = Find<CNewVersionLED>()) lamp->Pulse(a_nElapsedMs);
    if (auto* const curve = Find<CGR>()) curve->Poll();
    StepAbout();
    _piDSP.OnValueChanged();
    for (auto* const widget : Widgets())
        widget->SetFromHost(_piDSP.GetParam(widget->Id(), Normalized | GroupRelative));
    ShowPanel();
    ShowHistory();
    const std::int32_t latency = _piDSP.GetLatency();
    if (latency == _nLastLatency) return;
    _nLastLatency = latency;
    OnLatencyChanged(latency);
}

// What others do

void CXXXGUI::SetParameter(std::int32_t a_nId, float a_fNormal) {
    _piState.SetParameter(a_nId, a_fNormal);
}

void CXXXGUI::BeginEdit(std::int32_t a_nId) {
    _piDSP.BeginEdit(a_nId);
}

void CXXXGUI::EndEdit(std::int32_t a_nId) {
    _piDSP.EndEdit(a_nId);
}

void CXXXGUI::BeforeGroupChange() {
    Pointer().CancelDrag();
}

void CXXXGUI::OnLatencyChanged(std::int32_t) {}

void CXXXGUI::RequestHostResize(std::int32_t, std::int32_t) {}

std::string CXXXGUI::GetRouting(int a_nGroup) {
    return _piState.GetRouting(a_nGroup);
}

void CXXXGUI::SetRouting(std::string_view a_sText, int a_nGroup) {
    _piState.SetRouting(a_sText, a_nGroup);
}

void CXXXGUI::ResizeTo(std::int32_t a_nWidth, std::int32_t a_nHeight) {
    if (a_nWidth <= 0 || a_nHeight <= 0) return;
    std::int32_t width = std::max(CDeviceState::LeastWidth, a_nWidth);
    std::int32_t height = a_nHeight;
    const std::int32_t mostWidth = GPU().MaxTextureW();
    const std::int32_t mostHeight = GPU().MaxTextureH();
    if (mostWidth != 0 && mostHeight != 0 && (width > mostWidth || height > mostHeight)) {
        width = mostWidth;
        // The height of the present width, deliberately.
        height = static_cast<std::int32_t>(static_cast<float>(Width()) / CDeviceState::Aspect);
        if (height > mostHeight) {
            height = mostHeight;
            width = static_cast<std::int32_t>(static_cast<float>(height) * CDeviceState::Aspect);
        }
    }
    _piState.ResizeTo(width, height);
    if (_bWindow) ShowPanel();
}

bool CXXXGUI::ApplyPatchData(const void* a_pData, std::size_t a_nSize, std::uint32_t a_nFlags) {
    return _piState.ApplyPatchData(a_pData, a_nSize, a_nFlags);
}

bool CXXXGUI::ReadPatch(std::string_view a_sText, std::uint32_t a_nFlags) {
    return _piState.ReadPatch(a_sText, a_nFlags);
}

std::size_t CXXXGUI::WritePatch(const char** a_psData, std::uint32_t a_nFlags) {
    return _piState.WritePatch(a_psData, a_nFlags);
}

void CXXXGUI::SelectPatch(std::int32_t a_nIndex, bool a_bForce) {
    _piState.SelectPatch(a_nIndex, a_bForce);
}

void CXXXGUI::SaveRouting(std::u16string_view a_sPath) {
    _piState.SaveRouting(a_sPath, ChannelsThatAreOn(*this));
}

} // namespace KAV
