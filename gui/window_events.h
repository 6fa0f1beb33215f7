#pragma once

#include "gui/window.h"

namespace KAV::GUI {

class CGUI;

/// What the system tells the root: each event is one step, and nothing that it throws reaches the system.
/// Threads: the window's.
class CWindowEvents final : public IWindowClient {
public:
    explicit CWindowEvents(CGUI& a_piGUI) noexcept : _piGUI(a_piGUI) {}
    CWindowEvents(const CWindowEvents&) = delete;
    CWindowEvents& operator=(const CWindowEvents&) = delete;

    void OnTick(std::uint32_t a_nTimeMs) override;
    void OnPress(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags, std::uint32_t a_nTimeMs) override;
    void OnRelease(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnLeave() override;
    void OnWheel(float a_fNotches, std::uint32_t a_nFlags) override;
    void OnKey(std::uint32_t a_nKey, bool a_bDown) override;
    void OnPaint() override;
    void OnCancel() override;
    void OnCommand(std::uint32_t a_nCommand) override;
    void OnTyped() override;
    void OnGone() override;
    void OnUserMessage(std::uint32_t a_nMessage) override;

private:
    CGUI& _piGUI;
};

} // namespace KAV::GUI
