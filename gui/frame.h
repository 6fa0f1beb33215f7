#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace KAV::GUI {

class CGUI;

/// The course of pictures in time: what a tick does, what a picture is made of, and what becomes of errors in
/// it. Threads: the window's.
class CFrame final {
public:
    explicit CFrame(CGUI& a_piGUI) noexcept : _piGUI(a_piGUI) {}
    CFrame(const CFrame&) = delete;
    CFrame& operator=(const CFrame&) = delete;

    /// A picture is to be made at the next tick.
    void Invalidate() noexcept { _bRedraw = _bFrameDue = true; }
    /// From now on ticks count from `a_nTimeMs`.
    void Begin(std::uint32_t a_nTimeMs) noexcept { _nLastTick = a_nTimeMs; }
    void Tick(std::uint32_t a_nTimeMs);
    /// Animations go on by `a_nMs`; a picture is drawn if one is asked for. An error drops it.
    void Render(std::uint32_t a_nMs) { Render(a_nMs, true); }
    /// Draws the present picture to be read back from the renderer. The window keeps the last one.
    void RenderUnseen() { Render(0, false); }
    /// An error of an event: the log has it, and the user sees a box, each text once until ForgetErrors().
    void Report(std::u16string_view a_sText);
    /// The editor has been opened anew.
    void ForgetErrors() noexcept { _vsTold.clear(); }

    /// Runs a step that may throw anything. False when it did; the error has been told or logged.
    template<typename TStep>
    bool Guard(TStep a_iStep) noexcept;

    void SetShown(bool a_bShown) noexcept { _bShown = a_bShown; }
    bool IsShown() const noexcept { return _bShown; }
    bool IsRedrawDue() const noexcept { return _bRedraw; }
    std::uint32_t LastTick() const noexcept { return _nLastTick; }

private:
    void Render(std::uint32_t a_nMs, bool a_bPresents);
    /// Texts look different from now on, because a font has been found that they need.
    void RenewTexts();
    void ReportCaught() noexcept;
    void LogError(std::u16string_view a_sText);

    CGUI& _piGUI;
    bool _bFrameDue = true;
    bool _bRedraw = true;
    bool _bShown = false;
    std::uint32_t _nLoggedMs = 0; // when the last error went to the log
    std::u16string _sLogged;
    std::uint32_t _nLastTick = 0;
    std::vector<std::u16string> _vsTold; // by a box since the editor was opened
};

template<typename TStep>
bool CFrame::Guard(TStep a_iStep) noexcept {
    try {
        a_iStep();
        return true;
    } catch (...) {
        ReportCaught();
        return false;
    }
}

} // namespace KAV::GUI
