#include "gui/gui.h"

#include "utils/session_log.h"

#include <utility>

namespace KAV::GUI {

CGUI::CGUI(const Utils::SMakerService& a_psService) : _iReport(a_psService) {
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
    const CLock lock(*this);
    CHistory::EnableHistory(a_bEnable);
}

bool CGUI::IsHistoryEnabled() const {
    const CLock lock(*this);
    return CHistory::IsHistoryEnabled();
}

void CGUI::AddRecord(std::unique_ptr<IHistory> a_piRecord) {
    const CLock lock(*this);
    CHistory::AddRecord(std::move(a_piRecord));
}

void CGUI::Undo() {
    const CLock lock(*this);
    CHistory::Undo();
}

void CGUI::Redo() {
    const CLock lock(*this);
    CHistory::Redo();
}

bool CGUI::CanUndo() const {
    const CLock lock(*this);
    return CHistory::CanUndo();
}

bool CGUI::CanRedo() const {
    const CLock lock(*this);
    return CHistory::CanRedo();
}

std::size_t CGUI::Records() const {
    const CLock lock(*this);
    return CHistory::Records();
}

std::int32_t CGUI::Width() const {
    const CLock lock(*this);
    return _nWidth;
}

std::int32_t CGUI::Height() const {
    const CLock lock(*this);
    return _nHeight;
}

void CGUI::Resize(std::int32_t a_nWidth, std::int32_t a_nHeight) {
    const CLock lock(*this);
    _nWidth = a_nWidth;
    _nHeight = a_nHeight;
}

void CGUI::CreateGUIWindow() {
    const CLock lock(*this);
    _bWindow = true;
}

void CGUI::DestroyGUIWindow() {
    const CLock lock(*this);
    _bWindow = false;
    _vnMessages.clear();
}

void CGUI::PostUserMessage(std::uint32_t a_nMessage) {
    const CLock lock(*this);
    if (_bWindow) _vnMessages.push_back(a_nMessage);
}

bool CGUI::OnUserMessage(std::uint32_t) {
    return false;
}

void CGUI::DeliverMessages() {
    std::vector<std::uint32_t> messages;
    {
        const CLock lock(*this);
        messages.swap(_vnMessages);
    }
    for (const auto message : messages) OnUserMessage(message);
}

void CGUI::SetParameter(std::int32_t, float) {}

void CGUI::BeginEdit(std::int32_t) {}

void CGUI::EndEdit(std::int32_t) {}

void CGUI::OnFrame(std::uint32_t) {}

} // namespace KAV::GUI
