#include "gui/gui.h"

#include "utils/session_log.h"

#include <utility>

namespace KAV::GUI {

CGUI::CGUI(Utils::CTurns& a_piTurns, const Utils::SMakerService& a_psService)
    : _piTurns(a_piTurns), _iReport(a_psService) {
    Utils::LogSessionStart(); // also takes over the previous session's log
    _iReport.Start();
}

CGUI::~CGUI() {
    Utils::LogSessionEnd(); // first, so that a host that doesn't wait for the rest doesn't look crashed
    _iReport.Stop();
}

void CGUI::Leave(const CWidget& a_piWidget) noexcept {
    std::erase(_vpiWidgets, &a_piWidget);
}

void CGUI::EnableHistory(bool a_bEnable) {
    const Utils::CTurn turn(_piTurns);
    CHistory::EnableHistory(a_bEnable);
}

bool CGUI::IsHistoryEnabled() const {
    const Utils::CTurn turn(_piTurns);
    return CHistory::IsHistoryEnabled();
}

void CGUI::AddRecord(std::unique_ptr<IHistory> a_piRecord) {
    const Utils::CTurn turn(_piTurns);
    CHistory::AddRecord(std::move(a_piRecord));
}

void CGUI::Undo() {
    const Utils::CTurn turn(_piTurns);
    CHistory::Undo();
}

void CGUI::Redo() {
    const Utils::CTurn turn(_piTurns);
    CHistory::Redo();
}

bool CGUI::CanUndo() const {
    const Utils::CTurn turn(_piTurns);
    return CHistory::CanUndo();
}

bool CGUI::CanRedo() const {
    const Utils::CTurn turn(_piTurns);
    return CHistory::CanRedo();
}

std::size_t CGUI::Records() const {
    const Utils::CTurn turn(_piTurns);
    return CHistory::Records();
}

void CGUI::Resize(std::int32_t a_nWidth, std::int32_t a_nHeight) {
    _nWidth = a_nWidth;
    _nHeight = a_nHeight;
}

void CGUI::CreateGUIWindow() {
    _iMessages.Open();
}

void CGUI::DestroyGUIWindow() {
    _iMessages.Close();
}

void CGUI::PostUserMessage(std::uint32_t a_nMessage) {
    _iMessages.Post(a_nMessage);
}

bool CGUI::OnUserMessage(std::uint32_t) {
    return false;
}

void CGUI::DeliverMessages() {
    for (const auto message : _iMessages.Take()) OnUserMessage(message);
}

void CGUI::SetParameter(std::int32_t, float) {}

void CGUI::BeginEdit(std::int32_t) {}

void CGUI::EndEdit(std::int32_t) {}

void CGUI::OnFrame(std::uint32_t) {}

} // namespace KAV::GUI
