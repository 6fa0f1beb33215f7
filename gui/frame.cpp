#include "gui/frame.h"

#include "gui/gui.h"
#include "utils/clock.h"
#include "utils/exceptions.h"
#include "utils/product.h"
#include "utils/session_log.h"
#include "utils/text.h"

#include <algorithm>
#include <exception>

namespace KAV::GUI {

namespace {

constexpr std::uint32_t LogPauseMs = 1000;

} // namespace

void CFrame::Tick(std::uint32_t a_nTimeMs) {
    const std::uint32_t elapsed = a_nTimeMs - _nLastTick;
    _nLastTick = a_nTimeMs;
    // The picture of an error that the user is reading would most likely be the same error again.
    if (!_piGUI.Window().IsBoxUp()) {
        Guard([&] { _piGUI.Screen().RenewIfDue(a_nTimeMs); });
        Guard([&] { RenewTexts(); });
        Guard([&] { _piGUI.Hint().Advance(elapsed); });
        if (_bFrameDue) {
            _bFrameDue = false;
            _piGUI.Render(elapsed);
        }
    }
    Guard([&] { _piGUI.OnFrame(elapsed); });
}

void CFrame::RenewTexts() {
    // While they stretch with the window no text would be made in place of those that go.
    if (_piGUI.IsResizing() || !_piGUI.Pictures().HasNewTexts()) return;
    for (auto* const label : _piGUI.FindAll<CLabel>()) label->ReleaseTexts();
    _piGUI.Hint().Fit();
    Invalidate();
}

void CFrame::Render(std::uint32_t a_nMs, bool a_bPresents) {
    auto& gpu = _piGUI.GPU();
    bool isReady = false;
    if (!Guard([&] { isReady = gpu.IsReady(); }) || !isReady) return;
    const bool redraws = _bRedraw;
    _bRedraw = false;
    const bool shows = redraws && _bShown;
    if (redraws && !Guard([&] {
            gpu.BeginFrame();
            if (_bShown) gpu.Clear();
        })) {
        return;
    }
    const auto& widgets = _piGUI.AllWidgets();
    // By place: a widget may leave the list in its own tick.
    for (std::size_t n = 0; n < widgets.size(); ++n) { // NOLINT(modernize-loop-convert)
        CWidget& widget = *widgets[n];
        const bool draws = shows && !_piGUI.IsHintOrEdit(widget);
        if (!Guard([&] {
                widget.Tick(a_nMs);
                if (draws && widget.sVisible.fValue != 0.0f) widget.Draw(a_nMs);
            })) {
            return;
        }
    }
    if (!redraws) return;
    if (shows && _piGUI.Hint().sVisible.fValue != 0.0f && !Guard([&] { _piGUI.Hint().DrawOnTop(a_nMs); }))
        return;
    Guard([&] {
        _piGUI.Edit().Draw(a_nMs);
        gpu.EndFrame();
        if (_bShown && a_bPresents) gpu.Present();
    });
}

void CFrame::ReportCaught() noexcept {
    try {
        try {
            throw;
        } catch (const Exceptions::Std& error) {
            Report(error.message);
        } catch (const std::exception& error) {
            LogError(Utils::ToUtf16(error.what()));
        }
    } catch (...) { // not even the memory for a line of the log
    }
}

void CFrame::Report(std::u16string_view a_sText) {
    LogError(a_sText);
    auto& window = _piGUI.Window();
    if (window.IsBoxUp()) return;
    if (std::find(_vsTold.begin(), _vsTold.end(), a_sText) != _vsTold.end()) return;
    _vsTold.emplace_back(a_sText);
    window.ShowBox(
        std::u16string(Utils::ProductName) + u" " + std::u16string(Utils::ProductVersion), a_sText);
}

void CFrame::LogError(std::u16string_view a_sText) {
    const std::uint32_t now = Utils::TickMs();
    if (a_sText == _sLogged && now - _nLoggedMs < LogPauseMs) return;
    _sLogged = a_sText;
    _nLoggedMs = now;
    Utils::LogLine(std::u16string(u"Error=").append(a_sText));
}

} // namespace KAV::GUI
