#include "gui/gui.h"

#include "gui/menu.h"
#include "gui/settings.h"
#include "gui/value_display.h"
#include "utils/exceptions.h"
#include "utils/session_log.h"

#include <algorithm>
#include <cmath>

namespace KAV::GUI {

namespace {

constexpr std::u16string_view StoredFPS = u"FPS";

/// For an editor that shows nothing.
IWindow& NoWindow() noexcept {
    static IWindow window;
    return window;
}

IPictures& NoPictures() noexcept {
    static IPictures pictures;
    return pictures;
}

bool IsOffered(std::uint32_t a_nFPS) noexcept {
    return a_nFPS == 30 || a_nFPS == 60 || a_nFPS == 100;
}

} // namespace

CGUI::CGUI(Utils::CTurns& a_piTurns, const Utils::SMakerService& a_psService, const SWidgetInfo& a_sHint,
    const SSurroundings& a_sSurroundings)
    : _piTurns(a_piTurns),
      _piWindow(a_sSurroundings.piWindow != nullptr ? *a_sSurroundings.piWindow : NoWindow()),
      _piPictures(a_sSurroundings.piPictures != nullptr ? *a_sSurroundings.piPictures : NoPictures()),
      _iTextures([this]() -> GFX::GPU& { return GPU(); }, _piPictures), _iHint(*this, a_sHint), _iEdit(*this),
      _iLight(*this), _iReport(a_psService) {
    Utils::LogSessionStart(); // also takes over the previous session's log
    const auto stored = StoredNumber(StoredFPS);
    if (stored && IsOffered(*stored)) _nFPS = *stored;
    _iReport.Start();
}

CGUI::~CGUI() {
    _iScreen.Release();
    CGUI::DestroyGUIWindow();
    DeleteWidgets();
    _vpiWidgets.clear();    // of the three that are left, none may be asked to forget another that has ended
    Utils::LogSessionEnd(); // before the wait, so that a host that doesn't wait for it doesn't look crashed
    _iReport.Stop();
}

// The widgets

void CGUI::Leave(const CWidget& a_piWidget) noexcept {
    if (_vpiWidgets.empty()) return;
    std::erase(_vpiWidgets, &a_piWidget);
    _iPointer.Forget(a_piWidget);
    if (_piMenuFor == &a_piWidget) {
        _piMenuFor = nullptr;
        _piWindow.CloseMenu();
    }
    if (&a_piWidget != &_iHint) _iHint.Forget(a_piWidget);
    if (&a_piWidget != &_iEdit) _iEdit.Forget(a_piWidget);
}

bool CGUI::Has(const CWidget* a_piWidget) const noexcept {
    return std::find(_vpiWidgets.begin(), _vpiWidgets.end(), a_piWidget) != _vpiWidgets.end();
}

bool CGUI::RemoveWidget(CWidget& a_piWidget, bool a_bKeep) {
    if (!Has(&a_piWidget)) return false;
    Leave(a_piWidget);
    if (!a_bKeep) delete &a_piWidget;
    return true;
}

void CGUI::DeleteWidgets() {
    const auto widgets = _vpiWidgets;
    for (auto* const widget : widgets) {
        if (!IsHintOrEdit(*widget) && widget != &_iLight) RemoveWidget(*widget, false);
    }
}

void CGUI::Restack(const CWidget& a_piWidget, bool a_bRaise, bool a_bToEnd) {
    const auto place = std::find(_vpiWidgets.begin(), _vpiWidgets.end(), &a_piWidget);
    if (place == _vpiWidgets.end()) return;
    if (a_bRaise) {
        const auto last = a_bToEnd ? _vpiWidgets.end() : std::min(place + 2, _vpiWidgets.end());
        std::rotate(place, place + 1, last);
    } else {
        const auto first = a_bToEnd || place == _vpiWidgets.begin() ? _vpiWidgets.begin() : place - 1;
        std::rotate(first, place, place + 1);
    }
    Invalidate();
}

GFX::STexture CGUI::GetTexture(
    const std::u16string& a_sName, std::int32_t a_nW, std::int32_t a_nH, std::int32_t a_nBlur) {
    return _iTextures.Get(a_sName, a_nW, a_nH, a_nBlur);
}

void CGUI::ReleaseTexture(GFX::STexture& a_rsTexture) {
    _iTextures.Release(a_rsTexture);
}

void CGUI::ShowMenu(const CWidget& a_piFor, const Menu& a_vsMenu) {
    _piWindow.CloseMenu();
    _piMenuFor = &a_piFor;
    if (!a_vsMenu.empty()) _piWindow.ShowMenu(a_vsMenu);
}

void CGUI::SetBackground(CWidget& a_piWidget) {
    const auto rect = a_piWidget.PixelRect();
    Resize(rect.nW, rect.nH);
    a_piWidget.sX.Jump(0.0f);
    a_piWidget.sY.Jump(0.0f);
    a_piWidget.sName = a_piWidget.sTitle = a_piWidget.sClass = a_piWidget.sHint = u"Background";
    Restack(a_piWidget, false, true);
}

// The window

void CGUI::Render(std::uint32_t a_nMs) {
    _iFrame.Render(a_nMs);
}

void CGUI::CreateGUIWindow() {
    _iMessages.Open();
    _iFrame.ForgetErrors();
    if (const auto error =
            _piWindow.Create(_iEvents, _piParent, std::max(_nWidth, 1), std::max(_nHeight, 1), _nFPS);
        error != 0) {
        _iFrame.Guard(
            [&] { throw Exceptions::StdFunc(u"CreateWindow", static_cast<std::uint32_t>(error), u"GUI"); });
    }
}

void CGUI::DestroyGUIWindow() {
    Show(false);
    EndWhatIsOpen();
    _iMessages.Close();
    _piWindow.Destroy();
    _bLost = false;
}

void CGUI::SetParent(void* a_piParent) {
    _piParent = a_piParent;
    if (_piWindow.Exists()) _piWindow.Reparent(a_piParent);
}

void CGUI::Show(bool a_bShow) {
    if (a_bShow == _iFrame.IsShown()) return;
    _iFrame.SetShown(a_bShow);
    if (!a_bShow) EndWhatIsOpen();
    if (!_piWindow.Exists()) return;
    if (a_bShow) {
        Invalidate();
        Render(0);
    }
    _piWindow.Show(a_bShow);
}

void CGUI::LoseWindow() {
    _bLost = true;
    _iFrame.SetShown(false);
    EndWhatIsOpen();
    _iScreen.Release();
    _iMessages.Close();
}

/// What a press began and what lies over the window: no event will end it any more.
void CGUI::EndWhatIsOpen() {
    _iFrame.Guard([this] { _iSizeDrag.End(); });
    _iFrame.Guard([this] { _iPointer.LoseCapture(); });
    _iEdit.Drop();
    _iFrame.Guard([this] { _iPointer.Leave(); });
    _piWindow.CloseMenu();
}

void CGUI::SetResizing(bool a_bResizing) {
    if (_bResizing == a_bResizing) return;
    _bResizing = a_bResizing;
    GPU().SetStretching(a_bResizing);
}

void CGUI::SetFPS(std::uint32_t a_nFPS) {
    constexpr std::uint32_t mostFPS = 1000; // a tick per millisecond
    if (a_nFPS == _nFPS || a_nFPS == 0 || a_nFPS > mostFPS) return;
    _nFPS = a_nFPS;
    if (_piWindow.Exists()) _piWindow.SetRate(a_nFPS);
    StoreNumber(StoredFPS, a_nFPS);
}

void CGUI::Resize(std::int32_t a_nWidth, std::int32_t a_nHeight) {
    if (a_nWidth == _nWidth && a_nHeight == _nHeight) return;
    _nWidth = a_nWidth;
    _nHeight = a_nHeight;
    _piWindow.Resize(a_nWidth, a_nHeight);
    _iFrame.Guard([&] { GPU().Resize(a_nWidth, a_nHeight); });
    Invalidate();
    OnResized(a_nWidth, a_nHeight);
    // With the time itself as the time that has passed: all that moves arrives, and the picture is whole.
    Render(_iFrame.LastTick());
}

void CGUI::OnResized(std::int32_t a_nWidth, std::int32_t a_nHeight) {
    for (auto* const widget : _vpiWidgets) {
        if (!IsHintOrEdit(*widget)) widget->OnGuiResize(a_nWidth, a_nHeight);
    }
    _iEdit.OnGuiResize(a_nWidth, a_nHeight);
    _iHint.OnGuiResize(a_nWidth, a_nHeight);
}

std::int32_t CGUI::ScaleByDPI(std::int32_t a_nPixels) const noexcept {
    constexpr float plainDots = 96.0f;
    const auto dots = static_cast<float>(_piWindow.DotsPerInch());
    if (!(dots > 0.0f)) return a_nPixels; // the display doesn't say
    return static_cast<std::int32_t>(std::round(static_cast<float>(a_nPixels) * dots / plainDots));
}

// Events

void CGUI::OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    if (!_iSizeDrag.Press(x, y, a_nFlags)) _iPointer.Press(x, y, a_nFlags);
}

void CGUI::OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    if (!_iSizeDrag.Release(a_nFlags)) _iPointer.Release(x, y, a_nFlags);
}

void CGUI::OnMouseMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) {
    if (!_iSizeDrag.Move(x, y)) _iPointer.Move(x, y, a_nFlags);
}

void CGUI::OnMouseLeave() {
    _iPointer.Leave();
}

void CGUI::OnMouseWheel(float a_fNotches, std::uint32_t a_nFlags) {
    _iPointer.Wheel(a_fNotches, a_nFlags);
}

void CGUI::OnFocus(CWidget*) {}

bool CGUI::OnUserMessage(std::uint32_t) {
    return false;
}

void CGUI::OnCommand(std::uint32_t a_nCommand, std::intptr_t a_nSource) {
    constexpr std::uint32_t largestCommand = 0xFFFF;
    if (a_nSource != 0 || a_nCommand > largestCommand) return;
    const auto choice = ChoiceOf(static_cast<std::uint16_t>(a_nCommand));
    for (auto* const display : FindAll<CValueDisplay>()) {
        if (display->nId != choice.nId) continue;
        display->SelectItem(choice.nItem);
        return;
    }
}

void CGUI::OnKeyDown(std::uint32_t) {}

void CGUI::OnKeyUp(std::uint32_t) {}

void CGUI::OnFrame(std::uint32_t) {}

void CGUI::SetParameter(std::int32_t, float) {}

void CGUI::BeginEdit(std::int32_t) {}

void CGUI::EndEdit(std::int32_t) {}

void CGUI::PostUserMessage(std::uint32_t a_nMessage) {
    _iMessages.Post(a_nMessage);
}

void CGUI::DeliverMessages() {
    for (const auto message : _iMessages.Take()) OnUserMessage(message);
}

} // namespace KAV::GUI
